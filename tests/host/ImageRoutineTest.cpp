#include "host/ExternalFilter.h"
#include "platform/com/ClassRegistry.h"
#include "platform/imaging/BitmapHandle.h"
#include "tests/host/EffectHarness.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using test::EffectHarness;
using test::gradientFrame;

// An external filter object as a host or plug-in would provide it: it records what it
// is given and paints row 0 of the picture it receives white.
class FakeFilter final : public com::ComObject<IExternalFilter> {
public:
    LONG openedId = -1;
    DWORD appliedHandle = 0;
    std::vector<uint32_t> firstRowSeen;
    std::vector<LONG> paramsSeen;

    HRESULT OpenFilter(LONG filterId, DWORD* filterHandle) override
    {
        openedId = filterId;
        *filterHandle = 77;
        return S_OK;
    }
    HRESULT ApplyFilter(DWORD filterHandle, imaging::BitmapHandle* bitmap, const LONG* params, LONG paramCount) override
    {
        appliedHandle = filterHandle;
        const auto row = bitmap->row(0);
        firstRowSeen.assign(row.begin(), row.end());
        std::ranges::fill(row, 0xFFFFFFFFu);
        paramsSeen.assign(params, params + paramCount);
        return S_OK;
    }
};

class FakeFilterClass final : public com::ComObject<IClassFactory> {
public:
    explicit FakeFilterClass(FakeFilter* filter) : filter_(filter) {}
    HRESULT CreateInstance(IUnknown*, const IID& riid, void** ppv) override
    {
        return filter_->QueryInterface(riid, ppv);
    }
    HRESULT LockServer(bool) override { return S_OK; }

private:
    FakeFilter* filter_;
};

class ExternalFilterRoutine : public ::testing::Test {
protected:
    com::ComPtr<FakeFilter> filter{new FakeFilter()};

    void SetUp() override
    {
        CoRegisterClassObject(CLSID_ExternalFilterObject,
                              com::ComPtr<IClassFactory>(new FakeFilterClass(filter.get())).get());
    }
    void TearDown() override { CoRevokeClassObject(CLSID_ExternalFilterObject); }
};

TEST_F(ExternalFilterRoutine, SeesTheFrameUpsideDownAndGivesItBackTheRightWayUp)
{
    constexpr LONG W = 6;
    constexpr LONG H = 4;
    EffectHarness harness(W, H);
    const auto input = gradientFrame(W, H);
    harness.setInput(input);
    ASSERT_EQ(harness.select(10000, u"3;4;"), S_OK);
    harness.effect().put_FilterID(42);
    ASSERT_EQ(harness.setup(), S_OK);
    EXPECT_EQ(filter->openedId, 42);
    ASSERT_EQ(harness.execute(0.5f), S_OK);

    EXPECT_EQ(filter->appliedHandle, 77u);
    EXPECT_EQ(filter->paramsSeen, (std::vector<LONG>{3, 4}));
    // Row 0 of the picture the routine gets is the last row of the frame...
    EXPECT_EQ(filter->firstRowSeen, std::vector<uint32_t>(input.end() - W, input.end()));
    // ...so what it paints on its row 0 lands on the frame's last row.
    const auto output = harness.output();
    EXPECT_EQ(std::vector<uint32_t>(output.end() - W, output.end()), std::vector<uint32_t>(W, 0xFFFFFFFFu));
    EXPECT_EQ(std::vector<uint32_t>(output.begin(), output.end() - W),
              std::vector<uint32_t>(input.begin(), input.end() - W));
}

}  // namespace
}  // namespace qx
