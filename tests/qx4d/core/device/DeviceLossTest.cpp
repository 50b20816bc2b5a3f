// A lost device, seen at the start of a frame, taken through the renderer's release and
// restore of every kind of resource.
#include "tests/qx4d/core/device/DeviceFixture.h"

#include <thread>

namespace qx4d::testing {
namespace {

const char* const kFlatEffect = R"(
#include "colour.fxh"
float4 ps_main() : COLOR0 { return Colour(); }
technique t0 { pass p0 { PixelShader = compile ps_2_0 ps_main(); } }
)";

// What the command thread would do on the two posted commands, recorded for the test.
// With `onWorker`, each runs on a thread of its own while the frame's thread waits, as
// the engine's worker does.
struct Commands {
    static inline bool onWorker = false;
    static inline int lost = 0;
    static inline int reset = 0;
    static inline bool resetOk = false;
    static inline bool restoredOk = false;
    static void Run(void (*command)())
    {
        if (onWorker)
            std::thread(command).join();
        else
            command();
    }
    static void OnLost()
    {
        Run([] {
            ++lost;
            Renderer::Instance()->OnDeviceLost();
            resetOk = GraphicsDevice::Current()->Reset();
        });
    }
    static void OnReset()
    {
        Run([] {
            ++reset;
            restoredOk = Renderer::Instance()->OnDeviceReset();
        });
    }
};

class DeviceLossTest : public EngineTest {
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        Commands::lost = Commands::reset = 0;
        Commands::resetOk = Commands::restoredOk = Commands::onWorker = false;
        graphics->SetDeviceLostCallback(&Commands::OnLost);
        graphics->SetDeviceResetCallback(&Commands::OnReset);
    }
};

TEST_F(DeviceLossTest, BeginFrameOnALostDeviceDoesNothing)
{
    Device().SimulateDeviceLoss(false);
    EXPECT_FALSE(graphics->BeginFrame());
    EXPECT_EQ(Commands::lost + Commands::reset, 0);
}

TEST_F(DeviceLossTest, LostThenResetRestoresEveryKind)
{
    WriteDds("Images/stone.dds", 0xFF112233u);
    WriteFile("Effects/colour.fxh", "float4 Colour() { return float4(1, 0, 0, 1); }\n");
    WriteFile("Effects/flat.fx", kFlatEffect);
    const gpu::D3DVERTEXELEMENT9 elements[] = {{0, 0, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_POSITION, 0},
                                               gpu::D3DDECL_END};
    const std::vector<uint8_t> vertices(48, 0x5A);
    uint32_t first = 0;
    const ResourceHandle declaration = renderer->CreateVertexDeclaration(elements, 2);
    const ResourceHandle pool = renderer->AddVertices(vertices.data(), 4, 12, first);
    const ResourceHandle indices = renderer->AddIndices(vertices.data(), 6, 2, first);
    const ResourceHandle quads = renderer->CreateIndexBuffer(1200, kResourceDynamic | kResourceQuadList);
    const ResourceHandle stone = renderer->LoadTexture(u"stone.dds");
    const ResourceHandle video = renderer->CreateTexture(2, 2, gpu::D3DFMT_A8R8G8B8, gpu::D3DUSAGE_DYNAMIC);
    const ResourceHandle target = renderer->CreateRenderTexture(8, 8, gpu::D3DFMT_X8R8G8B8);
    const ResourceHandle depth = renderer->CreateDepthStencil(8, 8, gpu::D3DFMT_D24S8);
    const ResourceHandle surface = renderer->CreateRenderTarget(8, 8);
    const ResourceHandle fileEffect = renderer->LoadEffect(u"flat.fx");
    const ResourceHandle textEffect = renderer->CreateEffect(kFlatEffect);
    for (const ResourceHandle* handle :
         {&declaration, &pool, &indices, &quads, &stone, &video, &target, &depth, &surface, &fileEffect, &textEffect})
        ASSERT_FALSE(handle->IsNull());
    const std::vector<uint8_t> frame(16, 0x77);
    ASSERT_TRUE(renderer->GetTexture(video)->Upload(frame.data(), 8));
    renderer->SetTexture(0, video);
    renderer->SetStream(pool, 12);
    renderer->SetEffect(fileEffect);
    // Watched without holding: a held default-pool object would rightly block the reset.
    const std::weak_ptr<gpu::Texture> stoneBefore = renderer->GetTexture(stone)->baseTexture;
    const std::weak_ptr<gpu::Texture> videoBefore = renderer->GetTexture(video)->baseTexture;

    Device().SimulateDeviceLoss(true);
    EXPECT_TRUE(graphics->BeginFrame());  // the frame runs in the very call that resets
    EXPECT_EQ(Commands::lost, 1);
    EXPECT_EQ(Commands::reset, 1);
    EXPECT_TRUE(Commands::resetOk);  // every default-pool object had been given up
    EXPECT_TRUE(Commands::restoredOk);
    EXPECT_EQ(Device().TestCooperativeLevel(), qx::S_OK);

    // The file texture lives in the managed pool: the same object, pixels and all.
    EXPECT_EQ(renderer->GetTexture(stone)->baseTexture, stoneBefore.lock());
    // The video texture is new and empty, to be filled again by its user.
    Texture* videoTexture = renderer->GetTexture(video);
    ASSERT_NE(videoTexture->texture, nullptr);
    EXPECT_TRUE(videoBefore.expired());
    std::vector<uint8_t> pixels;
    videoTexture->texture->download(0, 0, pixels);
    EXPECT_EQ(pixels, std::vector<uint8_t>(16, 0));
    // Static geometry comes back from its shadow copy; the quad list refills itself.
    void* data = nullptr;
    PooledBuffer* vertexBuffer = renderer->GetVertexBuffer(pool);
    ASSERT_EQ(vertexBuffer->buffer->Lock(0, 48, &data, gpu::D3DLOCK_READONLY), qx::S_OK);
    EXPECT_EQ(std::memcmp(data, vertices.data(), 48), 0);
    vertexBuffer->buffer->Unlock();
    EXPECT_EQ(renderer->GetIndexBuffer(quads)->writePosition, 1200u);
    EXPECT_NE(renderer->GetDepthStencil(depth)->surface, nullptr);
    EXPECT_NE(renderer->GetRenderTarget(surface)->surface, nullptr);
    EXPECT_NE(renderer->GetTexture(target)->surface, nullptr);
    EXPECT_NE(renderer->GetVertexDeclaration(declaration)->declaration, nullptr);
    EXPECT_NE(renderer->GetEffect(fileEffect)->effect, nullptr);
    // The reset cleared the bindings: nothing is bound, nothing running.
    EXPECT_TRUE(renderer->BoundEffect().IsNull());
    EXPECT_EQ(Device().GetTexture(0), nullptr);

    // The next frame is an ordinary one.
    EXPECT_TRUE(graphics->BeginFrame());
    EXPECT_EQ(Commands::lost, 1);
}

TEST_F(DeviceLossTest, TheWorkerThreadReleasesAndRestoresWhileTheFrameWaits)
{
    const ResourceHandle target = renderer->CreateRenderTarget(4, 4);
    const ResourceHandle video = renderer->CreateTexture(2, 2, gpu::D3DFMT_A8R8G8B8, gpu::D3DUSAGE_DYNAMIC);
    Commands::onWorker = true;
    Device().SimulateDeviceLoss(true);
    ASSERT_TRUE(graphics->BeginFrame());
    EXPECT_TRUE(Commands::resetOk);
    EXPECT_TRUE(Commands::restoredOk);
    // The frame's thread goes on drawing.
    RenderTarget* surface = renderer->GetRenderTarget(target);
    ASSERT_NE(surface->surface, nullptr);
    EXPECT_EQ(Device().SetRenderTarget(0, surface->surface), qx::S_OK);
    EXPECT_EQ(Device().Clear(gpu::D3DCLEAR_TARGET, 0xFF123456u, 1.0f, 0), qx::S_OK);
    std::vector<uint8_t> pixels;
    ASSERT_TRUE(surface->surface->texture()->download(0, 0, pixels));
    EXPECT_EQ(pixels[0], 0x56);
    EXPECT_TRUE(renderer->GetTexture(video)->Upload(std::vector<uint8_t>(16, 1).data(), 8));
}

TEST_F(DeviceLossTest, ResetFailsWhileTheRendererStillHoldsDefaultPoolResources)
{
    renderer->CreateRenderTarget(8, 8);
    Device().SimulateDeviceLoss(true);
    EXPECT_FALSE(graphics->Reset());
    renderer->OnDeviceLost();
    EXPECT_TRUE(graphics->Reset());
    EXPECT_TRUE(renderer->OnDeviceReset());
}

}  // namespace
}  // namespace qx4d::testing
