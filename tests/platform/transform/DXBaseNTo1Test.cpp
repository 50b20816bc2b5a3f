#include "platform/transform/DXBaseNTo1.h"

#include <gtest/gtest.h>

namespace qx::transform {
namespace {

// Records what the base asks of a transform.
class Recorder final : public CDXBaseNTo1<IDXEffect> {
public:
    Recorder() : CDXBaseNTo1(1, 1, DXTET_MORPH) {}

    int setups = 0;
    int works = 0;
    HRESULT setupResult = S_OK;
    CDXTWorkInfoNTo1 lastWork{};

private:
    HRESULT OnSetup(DWORD) override
    {
        ++setups;
        return setupResult;
    }
    HRESULT WorkProc(const CDXTWorkInfoNTo1& info, bool*) override
    {
        ++works;
        lastWork = info;
        return S_OK;
    }
};

class Base : public ::testing::Test {
protected:
    com::ComPtr<Recorder> recorder{new Recorder()};
    std::shared_ptr<DXSurface> input = DXSurface::create(8, 6);
    std::shared_ptr<DXSurface> output = DXSurface::create(10, 10);

    HRESULT setup()
    {
        const std::shared_ptr<DXSurface> inputs[] = {input};
        return recorder->Setup(inputs, output, 0);
    }
};

TEST_F(Base, ExecuteNeedsSetupAndThenWorksOnceForTheWholeFrame)
{
    EXPECT_EQ(recorder->Execute(nullptr, nullptr, nullptr), DXTERR_UNINITIALIZED);
    EXPECT_EQ(recorder->works, 0);
    ASSERT_EQ(setup(), S_OK);
    EXPECT_EQ(recorder->setups, 1);
    EXPECT_EQ(recorder->Execute(nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(recorder->works, 1);
    EXPECT_EQ(recorder->lastWork.DoBnds, (Bounds{0, 0, 8, 6}));
    EXPECT_EQ(recorder->lastWork.OutputBnds, (Bounds{0, 0, 8, 6}));
}

TEST_F(Base, ClipAndPlacementMoveTheOutputBounds)
{
    ASSERT_EQ(setup(), S_OK);
    const Bounds clip{2, 1, 6, 5};
    const Point at{3, 4};
    EXPECT_EQ(recorder->Execute(nullptr, &clip, &at), S_OK);
    EXPECT_EQ(recorder->lastWork.DoBnds, clip);
    EXPECT_EQ(recorder->lastWork.OutputBnds, (Bounds{5, 5, 9, 9}));
    const Point tooFar{5, 5};
    EXPECT_EQ(recorder->Execute(nullptr, &clip, &tooFar), E_INVALIDARG);
}

TEST_F(Base, SetupChecksItsSurfacesAndCanBeUndone)
{
    EXPECT_EQ(recorder->Setup({}, output, 0), E_INVALIDARG);
    const std::shared_ptr<DXSurface> two[] = {input, input};
    EXPECT_EQ(recorder->Setup(two, output, 0), E_INVALIDARG);
    EXPECT_EQ(recorder->setups, 0);
    ASSERT_EQ(setup(), S_OK);
    EXPECT_EQ(recorder->Setup({}, nullptr, 0), S_OK);
    EXPECT_EQ(recorder->Execute(nullptr, nullptr, nullptr), DXTERR_UNINITIALIZED);
}

// A host's surface over its own memory, as a host hands it through the component interface.
class HostSurface final : public com::ComObject<IDXRawSurface> {
public:
    HostSurface(LONG width, LONG height) : samples(size_t(width * height)), width_(width), height_(height) {}
    HRESULT GetSurfaceInfo(DXRAWSURFACEINFO* info) override
    {
        *info = {samples.empty() ? nullptr : samples.data(), width_, height_};
        return S_OK;
    }
    ULONG references()
    {
        AddRef();
        return Release();
    }
    std::vector<uint32_t> samples;

private:
    LONG width_;
    LONG height_;
};

TEST_F(Base, HostSurfacesAreHeldFromSetupToTheNextSetup)
{
    com::ComPtr<HostSurface> in(new HostSurface(8, 6));
    com::ComPtr<HostSurface> out(new HostSurface(8, 6));
    IUnknown* inputs[] = {in.get()};
    IUnknown* outputs[] = {out.get()};
    ASSERT_EQ(recorder->Setup(inputs, 1, outputs, 1, 0), S_OK);
    EXPECT_EQ(in->references(), 2u);
    EXPECT_EQ(out->references(), 2u);
    ASSERT_EQ(recorder->Execute(nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(recorder->lastWork.DoBnds, (Bounds{0, 0, 8, 6}));

    // A set-up over surfaces of the library's own lets the host's go.
    ASSERT_EQ(setup(), S_OK);
    EXPECT_EQ(in->references(), 1u);
    EXPECT_EQ(out->references(), 1u);
    ASSERT_EQ(recorder->Setup(inputs, 1, outputs, 1, 0), S_OK);
    ASSERT_EQ(recorder->Setup(nullptr, 0, nullptr, 0, 0), S_OK);
    EXPECT_EQ(in->references(), 1u);
}

TEST_F(Base, HostSurfacesThatDescribeNoMemoryAreRefused)
{
    com::ComPtr<HostSurface> in(new HostSurface(8, 6));
    com::ComPtr<HostSurface> empty(new HostSurface(0, 0));
    com::ComPtr<Recorder> notASurface(new Recorder());
    IUnknown* inputs[] = {in.get()};
    IUnknown* twoOutputs[] = {in.get(), in.get()};
    IUnknown* emptyOutput[] = {empty.get()};
    IUnknown* wrongOutput[] = {static_cast<IDXTransform*>(notASurface.get())};
    IUnknown* missing[] = {nullptr};
    EXPECT_EQ(recorder->Setup(nullptr, 1, twoOutputs, 1, 0), E_POINTER);
    EXPECT_EQ(recorder->Setup(inputs, 1, nullptr, 1, 0), E_POINTER);
    EXPECT_EQ(recorder->Setup(inputs, 1, twoOutputs, 2, 0), E_INVALIDARG);
    EXPECT_EQ(recorder->Setup(inputs, 1, emptyOutput, 1, 0), E_INVALIDARG);
    EXPECT_EQ(recorder->Setup(inputs, 1, wrongOutput, 1, 0), E_INVALIDARG);
    EXPECT_EQ(recorder->Setup(inputs, 1, missing, 1, 0), E_POINTER);
    EXPECT_EQ(recorder->Setup(missing, 1, inputs, 1, 0), E_INVALIDARG);  // the required input left out
    EXPECT_EQ(recorder->setups, 0);
    EXPECT_EQ(in->references(), 1u);
}

TEST_F(Base, AFailedOnSetupLeavesTheTransformUnset)
{
    recorder->setupResult = E_FAIL;
    EXPECT_EQ(setup(), E_FAIL);
    EXPECT_EQ(recorder->Execute(nullptr, nullptr, nullptr), DXTERR_UNINITIALIZED);
}

TEST_F(Base, EffectMembersKeepTheirRanges)
{
    float value = -1.0f;
    recorder->get_StepResolution(&value);
    EXPECT_EQ(value, 0.0f);
    recorder->get_Duration(&value);
    EXPECT_EQ(value, 1.0f);
    EXPECT_EQ(recorder->put_Progress(std::numeric_limits<float>::quiet_NaN()), E_INVALIDARG);
    EXPECT_EQ(recorder->put_Duration(-1.0f), E_INVALIDARG);
    EXPECT_EQ(recorder->get_Progress(nullptr), E_POINTER);
}

}  // namespace
}  // namespace qx::transform
