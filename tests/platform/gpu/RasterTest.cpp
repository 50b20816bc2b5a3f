// Rasterisation as Direct3D 9 does it: pre-transformed quads cover the pixels whose
// integer centres they contain, row 0 is the top, clockwise triangles face the viewer.
#include "tests/platform/gpu/GpuFixture.h"

namespace qx::gpu::testing {
namespace {

// Pre-transformed vertices with a colour: x, y, z, rhw, then a D3DCOLOR.
struct ColouredVertex {
    float x, y, z, rhw;
    uint32_t colour;
};

const D3DVERTEXELEMENT9 kColouredDeclaration[] = {
    {0, 0, D3DDECLTYPE_FLOAT4, 0, D3DDECLUSAGE_POSITIONT, 0},
    {0, 16, D3DDECLTYPE_D3DCOLOR, 0, D3DDECLUSAGE_COLOR, 0},
    D3DDECL_END,
};

const char* const kColourEffect = R"(
float4 ps_colour(float4 colour : COLOR0) : COLOR0 { return colour; }
technique t0 { pass p0 { ZEnable = FALSE; PixelShader = compile ps_2_0 ps_colour(); } }
)";

class RasterTest : public GpuTest {
protected:
    void SetUp() override
    {
        GpuTest::SetUp();
        ASSERT_EQ(device->CreateVertexDeclaration(kColouredDeclaration, &declaration), D3D_OK);
        effect = makeEffect(device, kColourEffect);
        ASSERT_NE(effect, nullptr);
        device->SetVertexDeclaration(declaration);
        UINT passes = 0;
        effect->Begin(&passes, D3DXFX_DONOTSAVESTATE);
        effect->BeginPass(0);
    }
    void TearDown() override
    {
        if (effect) {
            effect->EndPass();
            effect->End();
        }
    }
    void drawRectangle(float left, float top, float right, float bottom, uint32_t colour)
    {
        const ColouredVertex quad[] = {{left, top, 0.5f, 1.0f, colour},
                                       {right, top, 0.5f, 1.0f, colour},
                                       {right, bottom, 0.5f, 1.0f, colour},
                                       {left, bottom, 0.5f, 1.0f, colour}};
        ASSERT_EQ(device->DrawPrimitiveUP(D3DPT_TRIANGLEFAN, 2, quad, sizeof(ColouredVertex)), D3D_OK);
    }
    // Expects exactly the pixels with x in [x0, x1) and y in [y0, y1) to be white.
    void expectCovered(const std::vector<uint32_t>& pixels, int width, int x0, int x1, int y0, int y1)
    {
        for (int y = 0; y < int(pixels.size()) / width; ++y) {
            for (int x = 0; x < width; ++x) {
                const bool inside = x >= x0 && x < x1 && y >= y0 && y < y1;
                EXPECT_EQ(pixels[size_t(y * width + x)], inside ? 0xFFFFFFFFu : 0xFF000000u) << x << "," << y;
            }
        }
    }
    std::shared_ptr<VertexDeclaration> declaration;
    std::shared_ptr<Effect> effect;
};

TEST_F(RasterTest, PreTransformedQuadCoversExactlyItsPixels)
{
    const auto target = makeTarget(16, 16);
    device->Clear(D3DCLEAR_TARGET, 0xFF000000u, 1.0f, 0);
    drawRectangle(4.0f, 4.0f, 12.0f, 10.0f, 0xFFFFFFFFu);
    expectCovered(readPixels(*device, target), 16, 4, 12, 4, 10);
}

TEST_F(RasterTest, PixelCentresAreAtIntegerCoordinates)
{
    // Direct3D 9 tests a pixel at its integer corner: an edge at 4.4 leaves pixel 4 out
    // and takes pixel 12 in (OpenGL's centres at +0.5 would do the opposite).
    const auto target = makeTarget(16, 16);
    device->Clear(D3DCLEAR_TARGET, 0xFF000000u, 1.0f, 0);
    drawRectangle(4.4f, 4.4f, 12.4f, 10.4f, 0xFFFFFFFFu);
    expectCovered(readPixels(*device, target), 16, 5, 13, 5, 11);
}

TEST_F(RasterTest, RowZeroIsTheTopAndColoursKeepTheirChannels)
{
    const auto target = makeTarget(8, 8);
    device->Clear(D3DCLEAR_TARGET, 0xFF000000u, 1.0f, 0);
    drawRectangle(0.0f, 0.0f, 8.0f, 2.0f, 0xFFFF0000u);  // red band at the top
    drawRectangle(0.0f, 6.0f, 8.0f, 8.0f, 0x800000FFu);  // blue band, half alpha, at the bottom
    const auto pixels = readPixels(*device, target);
    EXPECT_EQ(pixels[0], 0xFFFF0000u);
    EXPECT_EQ(pixels[1 * 8 + 7], 0xFFFF0000u);
    EXPECT_EQ(pixels[4 * 8 + 3], 0xFF000000u);
    EXPECT_LE(colourDistance(pixels[7 * 8 + 0], 0x800000FFu), 1);
}

TEST_F(RasterTest, CounterClockwiseTrianglesAreCulledByDefault)
{
    const auto target = makeTarget(8, 8);
    device->Clear(D3DCLEAR_TARGET, 0xFF000000u, 1.0f, 0);
    // Clockwise on the screen (y down): drawn. Counter-clockwise: culled by D3DCULL_CCW.
    const ColouredVertex clockwise[] = {
        {0, 0, 0, 1, 0xFFFFFFFFu}, {4, 0, 0, 1, 0xFFFFFFFFu}, {0, 4, 0, 1, 0xFFFFFFFFu}};
    const ColouredVertex counter[] = {{8, 8, 0, 1, 0xFFFFFFFFu}, {8, 4, 0, 1, 0xFFFFFFFFu}, {4, 8, 0, 1, 0xFFFFFFFFu}};
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_CCW);
    device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, clockwise, sizeof(ColouredVertex));
    device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, counter, sizeof(ColouredVertex));
    auto pixels = readPixels(*device, target);
    EXPECT_EQ(pixels[1 * 8 + 1], 0xFFFFFFFFu);
    EXPECT_EQ(pixels[7 * 8 + 7], 0xFF000000u);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_CW);
    device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, counter, sizeof(ColouredVertex));
    pixels = readPixels(*device, target);
    EXPECT_EQ(pixels[7 * 8 + 7], 0xFFFFFFFFu);
}

TEST_F(RasterTest, AlphaTestDropsPixelsBelowTheReference)
{
    const auto target = makeTarget(4, 4);
    device->Clear(D3DCLEAR_TARGET, 0xFF000000u, 1.0f, 0);
    device->SetRenderState(D3DRS_ALPHATESTENABLE, 1);
    device->SetRenderState(D3DRS_ALPHAREF, 0x80);
    device->SetRenderState(D3DRS_ALPHAFUNC, D3DCMP_GREATEREQUAL);
    drawRectangle(0, 0, 2, 4, 0x7FFFFFFFu);  // alpha 127: dropped
    drawRectangle(2, 0, 4, 4, 0x80FFFFFFu);  // alpha 128: kept
    const auto pixels = readPixels(*device, target);
    EXPECT_EQ(pixels[0], 0xFF000000u);
    EXPECT_EQ(pixels[3], 0x80FFFFFFu);
}

TEST_F(RasterTest, OcclusionQueryCountsTheDrawnPixelsAndEventsEnd)
{
    makeTarget(16, 16);
    std::shared_ptr<Query> occlusion, event;
    ASSERT_EQ(device->CreateQuery(D3DQUERYTYPE_OCCLUSION, &occlusion), D3D_OK);
    ASSERT_EQ(device->CreateQuery(D3DQUERYTYPE_EVENT, &event), D3D_OK);
    EXPECT_NE(device->CreateQuery(77, &event), D3D_OK);
    ASSERT_EQ(device->CreateQuery(D3DQUERYTYPE_EVENT, &event), D3D_OK);
    occlusion->Issue(D3DISSUE_BEGIN);
    drawRectangle(2, 3, 7, 6, 0xFFFFFFFFu);  // 5 x 3 pixels
    occlusion->Issue(D3DISSUE_END);
    event->Issue(D3DISSUE_END);
    DWORD count = 0;
    HRESULT result = S_FALSE;
    for (int poll = 0; poll < 1000000 && result == S_FALSE; ++poll)
        result = occlusion->GetData(&count, sizeof(count), D3DGETDATA_FLUSH);
    ASSERT_EQ(result, S_OK);
    EXPECT_EQ(count, 15u);
    for (int poll = 0; poll < 1000000 && (result = event->GetData(nullptr, 0, D3DGETDATA_FLUSH)) == S_FALSE;) ++poll;
    EXPECT_EQ(result, S_OK);
}

}  // namespace
}  // namespace qx::gpu::testing
