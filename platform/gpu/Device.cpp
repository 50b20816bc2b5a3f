#include "platform/gpu/Device.h"

#include "platform/gpu/Formats.h"
#include "platform/gpu/GlApi.h"

#include <bit>

namespace qx::gpu {

std::shared_ptr<Device> Device::create(const D3DPRESENT_PARAMETERS& parameters)
{
    std::shared_ptr<Context> context = Context::create();
    if (!context) return nullptr;
    std::shared_ptr<Device> device(new Device(std::move(context), parameters));
    if (!device->framebuffer_ || !device->makeImplicitSurfaces()) return nullptr;
    device->setDefaultStates();
    return device;
}

Device::Device(std::shared_ptr<Context> context, const D3DPRESENT_PARAMETERS& parameters)
    : context_(std::move(context)), parameters_(parameters)
{
    framebuffer_ = createGlName(context_, GlKind::Framebuffer);
    vertexArray_ = createGlName(context_, GlKind::VertexArray);
    scratchBuffer_ = createGlName(context_, GlKind::Buffer);
    for (GlName& sampler : samplers_) sampler = createGlName(context_, GlKind::Sampler);
    for (GlName& sampler : singleLevelSamplers_) sampler = createGlName(context_, GlKind::Sampler);
    // Direct3D's depth range and top-down images: row 0 of every target is its top row.
    glClipControl(GL_UPPER_LEFT, GL_ZERO_TO_ONE);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glBindVertexArray(vertexArray_.get());
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_.get());
}

Device::~Device()
{
    // Resources may outlive the device; they keep the context, not the device.
    if (context_->makeCurrent()) glFinish();
}

bool Device::makeImplicitSurfaces()
{
    const UINT width = parameters_.BackBufferWidth ? parameters_.BackBufferWidth : 1;
    const UINT height = parameters_.BackBufferHeight ? parameters_.BackBufferHeight : 1;
    const D3DFORMAT format = parameters_.BackBufferFormat ? parameters_.BackBufferFormat : D3DFMT_X8R8G8B8;
    // The implicit surfaces do not count against Reset: the device remakes them itself.
    const PoolCounter uncounted = std::make_shared<int>(0);
    const auto colour =
        Texture::create(context_, uncounted, {width, height, 1, D3DUSAGE_RENDERTARGET, format, D3DPOOL_DEFAULT});
    if (!colour) return false;
    backBuffer_ = colour->GetSurfaceLevel(0);
    autoDepth_.reset();
    if (parameters_.EnableAutoDepthStencil) {
        const auto depth = Texture::create(
            context_, uncounted,
            {width, height, 1, D3DUSAGE_DEPTHSTENCIL, parameters_.AutoDepthStencilFormat, D3DPOOL_DEFAULT});
        if (!depth) return false;
        autoDepth_ = depth->GetSurfaceLevel(0);
    }
    target_ = backBuffer_;
    depth_ = autoDepth_;
    viewport_ = D3DVIEWPORT9{0, 0, width, height, 0.0f, 1.0f};
    return true;
}

void Device::setDefaultStates()
{
    renderStates_.fill(0);
    renderStates_[D3DRS_ZENABLE] = parameters_.EnableAutoDepthStencil ? 1 : 0;
    renderStates_[D3DRS_ZWRITEENABLE] = 1;
    renderStates_[D3DRS_SRCBLEND] = D3DBLEND_ONE;
    renderStates_[D3DRS_DESTBLEND] = D3DBLEND_ZERO;
    renderStates_[D3DRS_CULLMODE] = D3DCULL_CCW;
    renderStates_[D3DRS_ZFUNC] = D3DCMP_LESSEQUAL;
    renderStates_[D3DRS_ALPHAFUNC] = D3DCMP_ALWAYS;
    renderStates_[D3DRS_POINTSIZE] = std::bit_cast<DWORD>(1.0f);
    renderStates_[D3DRS_COLORWRITEENABLE] = 0xF;
    renderStates_[D3DRS_BLENDOP] = D3DBLENDOP_ADD;
    for (DWORD sampler = 0; sampler < kSamplerCount; ++sampler) {
        samplerStates_[sampler].fill(0);
        SetSamplerState(sampler, D3DSAMP_ADDRESSU, D3DTADDRESS_WRAP);
        SetSamplerState(sampler, D3DSAMP_ADDRESSV, D3DTADDRESS_WRAP);
        SetSamplerState(sampler, D3DSAMP_MAGFILTER, D3DTEXF_POINT);
        SetSamplerState(sampler, D3DSAMP_MINFILTER, D3DTEXF_POINT);
        SetSamplerState(sampler, D3DSAMP_MIPFILTER, D3DTEXF_NONE);
        SetTexture(sampler, nullptr);
    }
    declaration_.reset();
    streams_ = {};
    indices_.reset();
    shaders_.reset();
}

HRESULT Device::TestCooperativeLevel() const { return lostState_; }

void Device::SimulateDeviceLoss(bool resettable)
{
    lostState_ = resettable ? D3DERR_DEVICENOTRESET : D3DERR_DEVICELOST;
}

HRESULT Device::Reset(const D3DPRESENT_PARAMETERS& parameters)
{
    if (lostState_ == D3DERR_DEVICELOST) return D3DERR_DEVICELOST;
    // What the device itself holds does not count: bindings are dropped first. Every
    // resource of the default pool the caller holds must be gone, as in Direct3D.
    setDefaultStates();
    target_ = backBuffer_;
    depth_ = autoDepth_;
    if (*defaultPool_ > 0 || !context_->makeCurrent()) return D3DERR_INVALIDCALL;
    parameters_ = parameters;
    if (!makeImplicitSurfaces()) return D3DERR_NOTAVAILABLE;
    setDefaultStates();
    lostState_ = D3D_OK;
    return D3D_OK;
}

HRESULT Device::BeginScene() { return lostState_ == D3D_OK ? D3D_OK : lostState_; }

HRESULT Device::EndScene()
{
    if (context_->makeCurrent()) glFlush();
    return D3D_OK;
}

HRESULT Device::GetDeviceCaps(D3DCAPS9* caps) const
{
    if (!caps) return D3DERR_INVALIDCALL;
    // Textures of any size, shader model 3: neither power-of-two restriction is set.
    *caps = D3DCAPS9{0, 0xFFFE0300u, 0xFFFF0300u, 16384, 16384, 2};
    return D3D_OK;
}

HRESULT Device::CreateTexture(UINT width, UINT height, UINT levels, DWORD usage, D3DFORMAT format, D3DPOOL pool,
                              std::shared_ptr<Texture>* texture)
{
    if (!texture) return D3DERR_INVALIDCALL;
    *texture = Texture::create(context_, defaultPool_, {width, height, levels, usage, format, pool, false});
    return *texture ? D3D_OK : D3DERR_INVALIDCALL;
}

HRESULT Device::CreateCubeTexture(UINT edge, UINT levels, DWORD usage, D3DFORMAT format, D3DPOOL pool,
                                  std::shared_ptr<Texture>* texture)
{
    if (!texture) return D3DERR_INVALIDCALL;
    *texture = Texture::create(context_, defaultPool_, {edge, edge, levels, usage, format, pool, true});
    return *texture ? D3D_OK : D3DERR_INVALIDCALL;
}

HRESULT Device::CreateVertexBuffer(UINT length, DWORD usage, D3DPOOL pool, std::shared_ptr<VertexBuffer>* buffer)
{
    if (!buffer) return D3DERR_INVALIDCALL;
    *buffer = Buffer::create(context_, defaultPool_, length, usage, D3DFMT_VERTEXDATA, pool);
    return *buffer ? D3D_OK : D3DERR_INVALIDCALL;
}

HRESULT Device::CreateIndexBuffer(UINT length, DWORD usage, D3DFORMAT format, D3DPOOL pool,
                                  std::shared_ptr<IndexBuffer>* buffer)
{
    if (!buffer || (format != D3DFMT_INDEX16 && format != D3DFMT_INDEX32)) return D3DERR_INVALIDCALL;
    *buffer = Buffer::create(context_, defaultPool_, length, usage, format, pool);
    return *buffer ? D3D_OK : D3DERR_INVALIDCALL;
}

HRESULT Device::CreateRenderTarget(UINT width, UINT height, D3DFORMAT format, std::shared_ptr<Surface>* surface)
{
    if (!surface) return D3DERR_INVALIDCALL;
    const auto texture =
        Texture::create(context_, defaultPool_, {width, height, 1, D3DUSAGE_RENDERTARGET, format, D3DPOOL_DEFAULT});
    *surface = texture && !formatInfo(format).depth ? texture->GetSurfaceLevel(0) : nullptr;
    return *surface ? D3D_OK : D3DERR_INVALIDCALL;
}

HRESULT Device::CreateDepthStencilSurface(UINT width, UINT height, D3DFORMAT format, std::shared_ptr<Surface>* surface)
{
    if (!surface || !formatInfo(format).depth) return D3DERR_INVALIDCALL;
    const auto texture =
        Texture::create(context_, defaultPool_, {width, height, 1, D3DUSAGE_DEPTHSTENCIL, format, D3DPOOL_DEFAULT});
    *surface = texture ? texture->GetSurfaceLevel(0) : nullptr;
    return *surface ? D3D_OK : D3DERR_INVALIDCALL;
}

HRESULT Device::CreateOffscreenPlainSurface(UINT width, UINT height, D3DFORMAT format, D3DPOOL pool,
                                            std::shared_ptr<Surface>* surface)
{
    if (!surface || pool != D3DPOOL_SYSTEMMEM) return D3DERR_INVALIDCALL;
    *surface = Surface::inSystemMemory(width, height, format);
    return *surface ? D3D_OK : D3DERR_INVALIDCALL;
}

HRESULT Device::CreateVertexDeclaration(const D3DVERTEXELEMENT9* elements,
                                        std::shared_ptr<VertexDeclaration>* declaration)
{
    constexpr size_t kMaxElements = 64;
    if (!elements || !declaration) return D3DERR_INVALIDCALL;
    std::vector<D3DVERTEXELEMENT9> copy;
    for (size_t i = 0; i < kMaxElements; ++i) {
        copy.push_back(elements[i]);
        if (elements[i].Stream == 0xFF) {
            *declaration = std::make_shared<VertexDeclaration>(std::move(copy));
            return D3D_OK;
        }
    }
    return D3DERR_INVALIDCALL;
}

HRESULT Device::CreateQuery(D3DQUERYTYPE type, std::shared_ptr<Query>* query)
{
    if (!query) return D3DERR_INVALIDCALL;
    *query = Query::create(context_, type);
    return *query ? D3D_OK : D3DERR_NOTAVAILABLE;
}

}  // namespace qx::gpu
