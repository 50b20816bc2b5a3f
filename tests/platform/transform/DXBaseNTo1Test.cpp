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
