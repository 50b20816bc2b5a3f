// The device's states: render and sampler states, bound textures, viewport, targets,
// streams and shader constants.
#include "platform/gpu/Device.h"

#include "platform/gpu/Formats.h"
#include "platform/gpu/GlApi.h"

#include <algorithm>
#include <bit>

namespace qx::gpu {

namespace {

GLenum blendFactor(DWORD blend)
{
    static constexpr GLenum kFactors[] = {GL_ZERO,
                                          GL_ZERO,
                                          GL_ONE,
                                          GL_SRC_COLOR,
                                          GL_ONE_MINUS_SRC_COLOR,
                                          GL_SRC_ALPHA,
                                          GL_ONE_MINUS_SRC_ALPHA,
                                          GL_DST_ALPHA,
                                          GL_ONE_MINUS_DST_ALPHA,
                                          GL_DST_COLOR,
                                          GL_ONE_MINUS_DST_COLOR,
                                          GL_SRC_ALPHA_SATURATE};
    return blend < std::size(kFactors) ? kFactors[blend] : GL_ONE;
}

GLenum blendEquation(DWORD operation)
{
    switch (operation) {
    case D3DBLENDOP_SUBTRACT: return GL_FUNC_SUBTRACT;
    case D3DBLENDOP_REVSUBTRACT: return GL_FUNC_REVERSE_SUBTRACT;
    case D3DBLENDOP_MIN: return GL_MIN;
    case D3DBLENDOP_MAX: return GL_MAX;
    default: return GL_FUNC_ADD;
    }
}

GLenum compareFunction(DWORD function)
{
    static constexpr GLenum kFunctions[] = {GL_ALWAYS,  GL_NEVER,    GL_LESS,   GL_EQUAL, GL_LEQUAL,
                                            GL_GREATER, GL_NOTEQUAL, GL_GEQUAL, GL_ALWAYS};
    return function < std::size(kFunctions) ? kFunctions[function] : GL_ALWAYS;
}

GLint addressMode(DWORD mode)
{
    switch (mode) {
    case D3DTADDRESS_MIRROR: return GL_MIRRORED_REPEAT;
    case D3DTADDRESS_CLAMP: return GL_CLAMP_TO_EDGE;
    case 4: return GL_CLAMP_TO_BORDER;
    default: return GL_REPEAT;
    }
}

GLint minifyFilter(DWORD minFilter, DWORD mipFilter)
{
    const bool linear = minFilter >= D3DTEXF_LINEAR;
    if (mipFilter == D3DTEXF_NONE) return linear ? GL_LINEAR : GL_NEAREST;
    if (mipFilter == D3DTEXF_POINT) return linear ? GL_LINEAR_MIPMAP_NEAREST : GL_NEAREST_MIPMAP_NEAREST;
    return linear ? GL_LINEAR_MIPMAP_LINEAR : GL_NEAREST_MIPMAP_LINEAR;
}

void setEnabled(GLenum capability, bool enabled)
{
    if (enabled)
        glEnable(capability);
    else
        glDisable(capability);
}

}  // namespace

HRESULT Device::SetRenderState(D3DRENDERSTATETYPE state, DWORD value)
{
    if (state >= kRenderStateCount) return D3DERR_INVALIDCALL;
    renderStates_[state] = value;
    return D3D_OK;
}

HRESULT Device::GetRenderState(D3DRENDERSTATETYPE state, DWORD* value) const
{
    if (state >= kRenderStateCount || !value) return D3DERR_INVALIDCALL;
    *value = renderStates_[state];
    return D3D_OK;
}

void Device::applyRenderStates()
{
    const auto& rs = renderStates_;
    setEnabled(GL_DEPTH_TEST, rs[D3DRS_ZENABLE] != 0 && usableDepth() != nullptr);
    glDepthMask(rs[D3DRS_ZWRITEENABLE] ? GL_TRUE : GL_FALSE);
    glDepthFunc(compareFunction(rs[D3DRS_ZFUNC]));
    setEnabled(GL_BLEND, rs[D3DRS_ALPHABLENDENABLE] != 0);
    glBlendFunc(blendFactor(rs[D3DRS_SRCBLEND]), blendFactor(rs[D3DRS_DESTBLEND]));
    glBlendEquation(blendEquation(rs[D3DRS_BLENDOP]));
    // Row 0 on top makes OpenGL see Direct3D's screen winding: clockwise is the front.
    setEnabled(GL_CULL_FACE, rs[D3DRS_CULLMODE] != D3DCULL_NONE);
    glFrontFace(rs[D3DRS_CULLMODE] == D3DCULL_CW ? GL_CCW : GL_CW);
    glCullFace(GL_BACK);
    const DWORD mask = rs[D3DRS_COLORWRITEENABLE];
    glColorMask(mask & 4 ? GL_TRUE : GL_FALSE, mask & 2 ? GL_TRUE : GL_FALSE, mask & 1 ? GL_TRUE : GL_FALSE,
                mask & 8 ? GL_TRUE : GL_FALSE);
    glPointSize(std::clamp(std::bit_cast<float>(rs[D3DRS_POINTSIZE]), 1.0f, 256.0f));
}

HRESULT Device::SetSamplerState(DWORD sampler, D3DSAMPLERSTATETYPE type, DWORD value)
{
    if (sampler >= kSamplerCount || type >= kSamplerStateCount || !context_->makeCurrent()) return D3DERR_INVALIDCALL;
    auto& states = samplerStates_[sampler];
    states[type] = value;
    for (const GLuint name : {samplers_[sampler].get(), singleLevelSamplers_[sampler].get()}) {
        glSamplerParameteri(name, GL_TEXTURE_WRAP_S, addressMode(states[D3DSAMP_ADDRESSU]));
        glSamplerParameteri(name, GL_TEXTURE_WRAP_T, addressMode(states[D3DSAMP_ADDRESSV]));
        glSamplerParameteri(name, GL_TEXTURE_MAG_FILTER,
                            states[D3DSAMP_MAGFILTER] >= D3DTEXF_LINEAR ? GL_LINEAR : GL_NEAREST);
    }
    glSamplerParameteri(samplers_[sampler].get(), GL_TEXTURE_MIN_FILTER,
                        minifyFilter(states[D3DSAMP_MINFILTER], states[D3DSAMP_MIPFILTER]));
    glSamplerParameteri(singleLevelSamplers_[sampler].get(), GL_TEXTURE_MIN_FILTER,
                        minifyFilter(states[D3DSAMP_MINFILTER], D3DTEXF_NONE));
    bindSampler(sampler);
    return D3D_OK;
}

void Device::bindSampler(DWORD stage)
{
    const bool oneLevel = textures_[stage] && textures_[stage]->GetLevelCount() == 1;
    glBindSampler(stage, (oneLevel ? singleLevelSamplers_ : samplers_)[stage].get());
}

HRESULT Device::GetSamplerState(DWORD sampler, D3DSAMPLERSTATETYPE type, DWORD* value) const
{
    if (sampler >= kSamplerCount || type >= kSamplerStateCount || !value) return D3DERR_INVALIDCALL;
    *value = samplerStates_[sampler][type];
    return D3D_OK;
}

HRESULT Device::SetTexture(DWORD stage, std::shared_ptr<Texture> texture)
{
    if (stage >= kSamplerCount || !context_->makeCurrent()) return D3DERR_INVALIDCALL;
    glBindTextureUnit(stage, texture ? texture->glName() : 0);
    textures_[stage] = std::move(texture);
    bindSampler(stage);
    return D3D_OK;
}

HRESULT Device::SetViewport(const D3DVIEWPORT9& viewport)
{
    viewport_ = viewport;
    return D3D_OK;
}

HRESULT Device::GetViewport(D3DVIEWPORT9* viewport) const
{
    if (!viewport) return D3DERR_INVALIDCALL;
    *viewport = viewport_;
    return D3D_OK;
}

HRESULT Device::SetRenderTarget(DWORD index, std::shared_ptr<Surface> surface)
{
    // One target: the engine renders to target 0 only.
    if (index != 0 || !surface || !surface->texture() || !(surface->desc().Usage & D3DUSAGE_RENDERTARGET))
        return D3DERR_INVALIDCALL;
    viewport_ = D3DVIEWPORT9{0, 0, surface->desc().Width, surface->desc().Height, 0.0f, 1.0f};
    target_ = std::move(surface);
    return D3D_OK;
}

HRESULT Device::GetRenderTarget(DWORD index, std::shared_ptr<Surface>* surface) const
{
    if (index != 0 || !surface) return D3DERR_INVALIDCALL;
    *surface = target_;
    return D3D_OK;
}

HRESULT Device::SetDepthStencilSurface(std::shared_ptr<Surface> surface)
{
    if (surface && (!surface->texture() || !formatInfo(surface->desc().Format).depth)) return D3DERR_INVALIDCALL;
    depth_ = std::move(surface);
    return D3D_OK;
}

HRESULT Device::GetDepthStencilSurface(std::shared_ptr<Surface>* surface) const
{
    if (!surface) return D3DERR_INVALIDCALL;
    *surface = depth_;
    return depth_ ? D3D_OK : D3DERR_NOTAVAILABLE;
}

HRESULT Device::SetVertexDeclaration(std::shared_ptr<VertexDeclaration> declaration)
{
    declaration_ = std::move(declaration);
    return D3D_OK;
}

HRESULT Device::SetStreamSource(UINT stream, std::shared_ptr<VertexBuffer> buffer, UINT offset, UINT stride)
{
    if (stream >= streams_.size() || (buffer && buffer->format() != D3DFMT_VERTEXDATA)) return D3DERR_INVALIDCALL;
    streams_[stream] = Stream{std::move(buffer), offset, stride};
    return D3D_OK;
}

HRESULT Device::SetIndices(std::shared_ptr<IndexBuffer> buffer)
{
    if (buffer && buffer->format() == D3DFMT_VERTEXDATA) return D3DERR_INVALIDCALL;
    indices_ = std::move(buffer);
    return D3D_OK;
}

namespace {

HRESULT writeConstants(std::vector<float>& file, UINT start, const float* data, UINT count)
{
    const size_t registers = file.size() / 4;
    if (!data || start > registers || count > registers - start) return D3DERR_INVALIDCALL;
    std::copy(data, data + size_t(count) * 4, file.begin() + std::ptrdiff_t(start) * 4);
    return D3D_OK;
}

}  // namespace

HRESULT Device::SetVertexShaderConstantF(UINT start, const float* data, UINT count)
{
    return writeConstants(vertexConstants_, start, data, count);
}

HRESULT Device::SetPixelShaderConstantF(UINT start, const float* data, UINT count)
{
    return writeConstants(pixelConstants_, start, data, count);
}

void Device::BeginEvent(DWORD colour, const std::string& label)
{
    (void)colour;  // debuggers show the label; the colour has no place in a debug group
    if (eventDepth_ < 64 && context_->makeCurrent()) {
        ++eventDepth_;
        glPushDebugGroup(GL_DEBUG_SOURCE_APPLICATION, 0, GLsizei(std::min<size_t>(label.size(), 255)), label.c_str());
    }
}

void Device::EndEvent()
{
    // An end without a begin is ignored, as by profilers.
    if (eventDepth_ > 0 && context_->makeCurrent()) {
        --eventDepth_;
        glPopDebugGroup();
    }
}

}  // namespace qx::gpu
