// The renderer's effect rules: the first pass in force while drawing, the last one run
// as the effect ends; effects shared by name or by text; effects that do not compile.
#include "tests/qx4d/core/device/DeviceFixture.h"

namespace qx4d::testing {
namespace {

// Each pass leaves its number in ALPHAREF.
const char* const kThreePasses = R"(
float4 ps_main() : COLOR0 { return float4(1, 1, 1, 1); }
technique t0
{
    pass p0 { AlphaRef = 1; PixelShader = compile ps_2_0 ps_main(); }
    pass p1 { AlphaRef = 2; }
    pass restore { AlphaRef = 3; }
}
)";
const char* const kOnePass = R"(
float4 ps_main() : COLOR0 { return float4(1, 1, 1, 1); }
technique t0 { pass p0 { AlphaRef = 7; PixelShader = compile ps_2_0 ps_main(); } }
)";

class EffectPassTest : public EngineTest {
protected:
    qx::DWORD AlphaRef()
    {
        qx::DWORD value = 0;
        Device().GetRenderState(gpu::D3DRS_ALPHAREF, &value);
        return value;
    }
};

TEST_F(EffectPassTest, FirstPassWhileDrawingLastPassAtTheEnd)
{
    const ResourceHandle three = renderer->CreateEffect(kThreePasses);
    ASSERT_FALSE(three.IsNull());
    renderer->SetEffect(three);
    EXPECT_EQ(renderer->PassCount(), 3u);
    EXPECT_EQ(AlphaRef(), 1u);
    renderer->SetEffect(three);  // the running one: only commits
    EXPECT_EQ(AlphaRef(), 1u);
    renderer->EndEffect();
    EXPECT_EQ(AlphaRef(), 3u);
    EXPECT_TRUE(renderer->BoundEffect().IsNull());
}

TEST_F(EffectPassTest, ChangingEffectEndsTheRunningOne)
{
    const ResourceHandle three = renderer->CreateEffect(kThreePasses);
    const ResourceHandle one = renderer->CreateEffect(kOnePass);
    renderer->SetEffect(three);
    renderer->SetEffect(one);
    EXPECT_EQ(AlphaRef(), 7u);
    Device().SetRenderState(gpu::D3DRS_ALPHAREF, 0);
    renderer->SetEffect(ResourceHandle());  // one pass: nothing runs again at the end
    EXPECT_EQ(AlphaRef(), 0u);
}

TEST_F(EffectPassTest, EffectsAreSharedByFileNameAndByText)
{
    WriteFile("Effects/one.fx", kOnePass);
    const ResourceHandle file = renderer->LoadEffect(u"one.fx");
    ASSERT_FALSE(file.IsNull());
    EXPECT_EQ(renderer->LoadEffect(u"one.fx").Index(), file.Index());
    const ResourceHandle text = renderer->CreateEffect(kOnePass);
    EXPECT_NE(text.Index(), file.Index());  // same text, but one is a file
    EXPECT_EQ(renderer->CreateEffect(kOnePass).Index(), text.Index());
    EXPECT_EQ(renderer->GetEffect(text)->refCount, 2);
}

TEST_F(EffectPassTest, EffectsThatDoNotCompileGiveTheNullHandle)
{
    WriteFile("Effects/broken.fx",
              "float4 ps_main() : COLOR0 { return nothing; }\n"
              "technique t { pass p { PixelShader = compile ps_2_0 ps_main(); } }");
    EXPECT_TRUE(renderer->LoadEffect(u"broken.fx").IsNull());
    EXPECT_TRUE(renderer->LoadEffect(u"absent.fx").IsNull());
    EXPECT_TRUE(renderer->CreateEffect("#include \"absent.fxh\"\n").IsNull());
    renderer->SetEffect(ResourceHandle());  // a null effect is accepted
}

}  // namespace
}  // namespace qx4d::testing
