// Draws from vertex and index buffers: streams with strides, base vertices, start indices,
// colours in D3DCOLOR byte order, and draws that would read past their buffers.
#include "tests/platform/gpu/GpuFixture.h"

namespace qx::gpu::testing {
namespace {

struct Vertex {
    float x, y, z;
    uint32_t colour;  // D3DCOLOR: bytes B, G, R, A
};

const D3DVERTEXELEMENT9 kDeclaration[] = {
    {0, 0, D3DDECLTYPE_FLOAT3, 0, D3DDECLUSAGE_POSITION, 0},
    {0, 12, D3DDECLTYPE_D3DCOLOR, 0, D3DDECLUSAGE_COLOR, 0},
    D3DDECL_END,
};

const char* const kColourEffect = R"(
struct VS_OUT { float4 Pos : POSITION; float4 Colour : COLOR0; };
VS_OUT vs_main(float3 pos : POSITION, float4 colour : COLOR0)
{
    VS_OUT OUT;
    OUT.Pos = float4(pos, 1.0);
    OUT.Colour = colour;
    return OUT;
}
float4 ps_main(float4 colour : COLOR0) : COLOR0 { return colour; }
technique t { pass p { CullMode = NONE; VertexShader = compile vs_2_0 vs_main(); PixelShader = compile ps_2_0 ps_main(); } }
)";

// Two quads in clip space: the left half in blue, the right half in orange.
const Vertex kQuads[] = {
    {-1, 1, 0, 0xFF0000FFu}, {0, 1, 0, 0xFF0000FFu}, {0, -1, 0, 0xFF0000FFu}, {-1, -1, 0, 0xFF0000FFu},
    {0, 1, 0, 0xFFFF8000u},  {1, 1, 0, 0xFFFF8000u}, {1, -1, 0, 0xFFFF8000u}, {0, -1, 0, 0xFFFF8000u},
};
const uint16_t kQuadIndices[] = {0, 1, 2, 0, 2, 3};

class DrawTest : public GpuTest {
protected:
    void SetUp() override
    {
        GpuTest::SetUp();
        target = makeTarget(8, 8);
        device->Clear(D3DCLEAR_TARGET, 0xFF000000u, 1.0f, 0);
        ASSERT_EQ(device->CreateVertexBuffer(sizeof(kQuads), D3DUSAGE_WRITEONLY, D3DPOOL_MANAGED, &vertices), D3D_OK);
        fill(*vertices, kQuads, sizeof(kQuads));
        ASSERT_EQ(device->CreateIndexBuffer(sizeof(kQuadIndices), 0, D3DFMT_INDEX16, D3DPOOL_MANAGED, &indices),
                  D3D_OK);
        fill(*indices, kQuadIndices, sizeof(kQuadIndices));
        std::shared_ptr<VertexDeclaration> declaration;
        device->CreateVertexDeclaration(kDeclaration, &declaration);
        device->SetVertexDeclaration(declaration);
        device->SetStreamSource(0, vertices, 0, sizeof(Vertex));
        device->SetIndices(indices);
        effect = makeEffect(device, kColourEffect);
        ASSERT_NE(effect, nullptr);
        effect->Begin(nullptr, 0);
        effect->BeginPass(0);
    }
    static void fill(Buffer& buffer, const void* data, UINT size)
    {
        void* target = nullptr;
        ASSERT_EQ(buffer.Lock(0, size, &target, 0), D3D_OK);
        std::memcpy(target, data, size);
        buffer.Unlock();
    }
    std::shared_ptr<Surface> target;
    std::shared_ptr<VertexBuffer> vertices;
    std::shared_ptr<IndexBuffer> indices;
    std::shared_ptr<Effect> effect;
};

TEST_F(DrawTest, IndexedDrawTakesTheBaseVertex)
{
    ASSERT_EQ(device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 4, 0, 4, 0, 2), D3D_OK);
    const auto pixels = readPixels(*device, target);
    EXPECT_EQ(pixels[2 * 8 + 1], 0xFF000000u);  // left: untouched
    EXPECT_EQ(pixels[2 * 8 + 6], 0xFFFF8000u);  // right: orange, channels in place
}

TEST_F(DrawTest, PlainDrawTakesTheStartVertex)
{
    ASSERT_EQ(device->DrawPrimitive(D3DPT_TRIANGLEFAN, 0, 2), D3D_OK);
    const auto pixels = readPixels(*device, target);
    EXPECT_EQ(pixels[5 * 8 + 2], 0xFF0000FFu);
    EXPECT_EQ(pixels[5 * 8 + 5], 0xFF000000u);
}

TEST_F(DrawTest, StreamOffsetsMoveTheFirstVertex)
{
    device->SetStreamSource(0, vertices, 4 * sizeof(Vertex), sizeof(Vertex));
    device->DrawPrimitive(D3DPT_TRIANGLEFAN, 0, 2);
    EXPECT_EQ(readPixels(*device, target)[2 * 8 + 6], 0xFFFF8000u);
}

TEST_F(DrawTest, DrawsPastTheIndicesAreRefused)
{
    EXPECT_EQ(device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 0, 4, 3, 2), D3DERR_INVALIDCALL);
    EXPECT_EQ(device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 0, 4, 0, 0x7FFFFFFF), D3DERR_INVALIDCALL);
    EXPECT_EQ(device->DrawPrimitive(99, 0, 2), D3DERR_INVALIDCALL);
    device->SetIndices(nullptr);
    EXPECT_EQ(device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 0, 4, 0, 2), D3DERR_INVALIDCALL);
    const auto pixels = readPixels(*device, target);
    EXPECT_TRUE(std::all_of(pixels.begin(), pixels.end(), [](uint32_t pixel) { return pixel == 0xFF000000u; }));
}

TEST_F(DrawTest, DiscardGivesFreshStorageWithoutDisturbingEarlierDraws)
{
    std::shared_ptr<VertexBuffer> dynamic;
    ASSERT_EQ(device->CreateVertexBuffer(sizeof(kQuads) / 2, D3DUSAGE_DYNAMIC | D3DUSAGE_WRITEONLY, D3DPOOL_DEFAULT,
                                         &dynamic),
              D3D_OK);
    device->SetStreamSource(0, dynamic, 0, sizeof(Vertex));
    void* data = nullptr;
    dynamic->Lock(0, 0, &data, D3DLOCK_DISCARD);
    std::memcpy(data, kQuads, sizeof(kQuads) / 2);  // left quad
    dynamic->Unlock();
    device->DrawPrimitive(D3DPT_TRIANGLEFAN, 0, 2);
    dynamic->Lock(0, 0, &data, D3DLOCK_DISCARD);
    std::memcpy(data, kQuads + 4, sizeof(kQuads) / 2);  // right quad, same place
    dynamic->Unlock();
    device->DrawPrimitive(D3DPT_TRIANGLEFAN, 0, 2);
    const auto pixels = readPixels(*device, target);
    EXPECT_EQ(pixels[2 * 8 + 1], 0xFF0000FFu);
    EXPECT_EQ(pixels[2 * 8 + 6], 0xFFFF8000u);
}

}  // namespace
}  // namespace qx::gpu::testing
