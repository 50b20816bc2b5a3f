#pragma once
// The Direct3D 9 device, on OpenGL 4.5 core: resources, render and sampler states,
// render targets, shader constants, draws and read-back, with Direct3D's conventions
// (depth 0 to 1, row 0 on top, y up in clip space, its pixel centres). The back buffer is
// an off-screen target like any other: nothing is ever shown.
//
// Device loss: OpenGL rarely loses a context, but the lost, not-reset and reset protocol
// is real here. SimulateDeviceLoss puts the device in that state; while lost, draws and
// clears do nothing, and Reset fails as long as resources of D3DPOOL_DEFAULT live.
#include "platform/gpu/Buffer.h"
#include "platform/gpu/Context.h"
#include "platform/gpu/Program.h"
#include "platform/gpu/Query.h"
#include "platform/gpu/Surface.h"
#include "platform/gpu/Texture.h"
#include "platform/gpu/Types.h"

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qx::gpu {

struct CompiledEffect;

class VertexDeclaration {
public:
    explicit VertexDeclaration(std::vector<D3DVERTEXELEMENT9> elements) : elements_(std::move(elements)) {}
    /// The elements with the end marker.
    const std::vector<D3DVERTEXELEMENT9>& elements() const { return elements_; }

private:
    std::vector<D3DVERTEXELEMENT9> elements_;
};

class Device {
public:
    /// Null when no OpenGL 4.5 core context can be made.
    static std::shared_ptr<Device> create(const D3DPRESENT_PARAMETERS& parameters);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    // Frame protocol and device loss.
    HRESULT TestCooperativeLevel() const;
    HRESULT Reset(const D3DPRESENT_PARAMETERS& parameters);
    HRESULT BeginScene();
    HRESULT EndScene();
    HRESULT GetDeviceCaps(D3DCAPS9* caps) const;
    /// Test hook: the device becomes lost; `resettable` makes TestCooperativeLevel answer
    /// D3DERR_DEVICENOTRESET, otherwise D3DERR_DEVICELOST.
    void SimulateDeviceLoss(bool resettable);
    /// Hands the OpenGL context over: the next call may come from another thread.
    void DetachThread() const { context_->releaseCurrent(); }
    std::string rendererName() const { return context_->rendererName(); }

    // Resources.
    HRESULT CreateTexture(UINT width, UINT height, UINT levels, DWORD usage, D3DFORMAT format, D3DPOOL pool,
                          std::shared_ptr<Texture>* texture);
    HRESULT CreateCubeTexture(UINT edge, UINT levels, DWORD usage, D3DFORMAT format, D3DPOOL pool,
                              std::shared_ptr<Texture>* texture);
    HRESULT CreateVertexBuffer(UINT length, DWORD usage, D3DPOOL pool, std::shared_ptr<VertexBuffer>* buffer);
    HRESULT CreateIndexBuffer(UINT length, DWORD usage, D3DFORMAT format, D3DPOOL pool,
                              std::shared_ptr<IndexBuffer>* buffer);
    HRESULT CreateRenderTarget(UINT width, UINT height, D3DFORMAT format, std::shared_ptr<Surface>* surface);
    HRESULT CreateDepthStencilSurface(UINT width, UINT height, D3DFORMAT format, std::shared_ptr<Surface>* surface);
    HRESULT CreateOffscreenPlainSurface(UINT width, UINT height, D3DFORMAT format, D3DPOOL pool,
                                        std::shared_ptr<Surface>* surface);
    /// `elements` ends with D3DDECL_END; at most 64 records are read.
    HRESULT CreateVertexDeclaration(const D3DVERTEXELEMENT9* elements, std::shared_ptr<VertexDeclaration>* declaration);
    HRESULT CreateQuery(D3DQUERYTYPE type, std::shared_ptr<Query>* query);

    // States.
    HRESULT SetRenderState(D3DRENDERSTATETYPE state, DWORD value);
    HRESULT GetRenderState(D3DRENDERSTATETYPE state, DWORD* value) const;
    HRESULT SetSamplerState(DWORD sampler, D3DSAMPLERSTATETYPE type, DWORD value);
    HRESULT GetSamplerState(DWORD sampler, D3DSAMPLERSTATETYPE type, DWORD* value) const;
    HRESULT SetTexture(DWORD stage, std::shared_ptr<Texture> texture);
    /// The texture bound at a stage; null for none.
    std::shared_ptr<Texture> GetTexture(DWORD stage) const
    {
        return stage < kSamplerCount ? textures_[stage] : nullptr;
    }
    HRESULT SetViewport(const D3DVIEWPORT9& viewport);
    HRESULT GetViewport(D3DVIEWPORT9* viewport) const;
    /// Setting a target also sets the viewport to its whole size, as Direct3D does.
    HRESULT SetRenderTarget(DWORD index, std::shared_ptr<Surface> surface);
    HRESULT GetRenderTarget(DWORD index, std::shared_ptr<Surface>* surface) const;
    HRESULT SetDepthStencilSurface(std::shared_ptr<Surface> surface);
    HRESULT GetDepthStencilSurface(std::shared_ptr<Surface>* surface) const;
    HRESULT SetVertexDeclaration(std::shared_ptr<VertexDeclaration> declaration);
    HRESULT SetStreamSource(UINT stream, std::shared_ptr<VertexBuffer> buffer, UINT offset, UINT stride);
    HRESULT SetIndices(std::shared_ptr<IndexBuffer> buffer);
    HRESULT SetVertexShaderConstantF(UINT start, const float* data, UINT count);
    HRESULT SetPixelShaderConstantF(UINT start, const float* data, UINT count);
    /// The shaders of an effect pass; null draws nothing but clears.
    void SetPassShaders(std::shared_ptr<PassShaders> shaders) { shaders_ = std::move(shaders); }

    // Drawing and read-back.
    HRESULT Clear(DWORD flags, DWORD colour, float z, DWORD stencil);
    HRESULT DrawPrimitive(D3DPRIMITIVETYPE type, UINT startVertex, UINT primitiveCount);
    HRESULT DrawIndexedPrimitive(D3DPRIMITIVETYPE type, int32_t baseVertex, UINT minIndex, UINT vertexCount,
                                 UINT startIndex, UINT primitiveCount);
    /// Draws from memory at stream 0, which is unbound afterwards, as in Direct3D.
    HRESULT DrawPrimitiveUP(D3DPRIMITIVETYPE type, UINT primitiveCount, const void* vertices, UINT stride);
    /// Copies a render target into a system-memory surface of the same size and format.
    HRESULT GetRenderTargetData(const std::shared_ptr<Surface>& target, const std::shared_ptr<Surface>& memory);

    // Profiler marks (D3DPERF_BeginEvent / EndEvent): OpenGL debug groups.
    void BeginEvent(DWORD colour, const std::string& label);
    void EndEvent();

    const std::shared_ptr<Context>& context() const { return context_; }
    /// Compiled effects by their whole text (includes expanded): each text compiles once.
    std::map<std::string, std::shared_ptr<const CompiledEffect>>& effectCache() { return effectCache_; }

private:
    Device(std::shared_ptr<Context> context, const D3DPRESENT_PARAMETERS& parameters);
    bool makeImplicitSurfaces();
    void bindSampler(DWORD stage);
    void setDefaultStates();
    const Surface* usableDepth() const;
    bool bindFramebuffer();
    void applyRenderStates();
    bool prepareDraw(uint32_t userVertices = 0, UINT userStride = 0);
    /// `userVertices`: a buffer that stands in for stream 0 (DrawPrimitiveUP), 0 for none.
    bool bindVertexInput(const LinkedProgram& program, uint32_t userVertices, UINT userStride);
    void uploadConstants(const LinkedProgram& program);

    std::shared_ptr<Context> context_;
    PoolCounter defaultPool_ = std::make_shared<int>(0);
    D3DPRESENT_PARAMETERS parameters_;
    HRESULT lostState_ = D3D_OK;
    int eventDepth_ = 0;
    GlName framebuffer_;
    GlName vertexArray_;
    GlName scratchBuffer_;
    std::array<GlName, kSamplerCount> samplers_;
    // The same states without a mip filter, for textures of one level: the same texels,
    // and a software rasteriser then skips the level of detail of every pixel.
    std::array<GlName, kSamplerCount> singleLevelSamplers_;
    std::array<DWORD, kRenderStateCount> renderStates_{};
    std::array<std::array<DWORD, kSamplerStateCount>, kSamplerCount> samplerStates_{};
    std::array<std::shared_ptr<Texture>, kSamplerCount> textures_;
    std::shared_ptr<Surface> backBuffer_;
    std::shared_ptr<Surface> autoDepth_;
    std::shared_ptr<Surface> target_;
    std::shared_ptr<Surface> depth_;
    D3DVIEWPORT9 viewport_;
    std::shared_ptr<VertexDeclaration> declaration_;
    struct Stream {
        std::shared_ptr<VertexBuffer> buffer;
        UINT offset = 0;
        UINT stride = 0;
    };
    std::array<Stream, 2> streams_;
    std::shared_ptr<IndexBuffer> indices_;
    std::shared_ptr<PassShaders> shaders_;
    std::vector<float> vertexConstants_ = std::vector<float>(kVertexConstantCount * 4, 0.0f);
    std::map<std::string, std::shared_ptr<const CompiledEffect>> effectCache_;
    std::vector<float> pixelConstants_ = std::vector<float>(kPixelConstantCount * 4, 0.0f);
};

}  // namespace qx::gpu
