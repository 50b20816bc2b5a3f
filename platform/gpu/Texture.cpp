#include "platform/gpu/Texture.h"

#include "platform/gpu/Formats.h"
#include "platform/gpu/GlApi.h"
#include "platform/gpu/Surface.h"

#include <algorithm>
#include <cstring>

namespace qx::gpu {

namespace {

UINT fullChainLength(UINT width, UINT height)
{
    UINT levels = 1;
    for (UINT size = std::max(width, height); size > 1; size >>= 1) ++levels;
    return levels;
}

constexpr UINT lockKey(UINT face, UINT level) { return face * 32 + level; }

// Single-channel formats read as Direct3D shows them: L8 as grey, A8 as alpha over black.
void applySwizzle(GLuint name, D3DFORMAT format)
{
    if (format == D3DFMT_L8) {
        const GLint swizzle[] = {GL_RED, GL_RED, GL_RED, GL_ONE};
        glTextureParameteriv(name, GL_TEXTURE_SWIZZLE_RGBA, swizzle);
    } else if (format == D3DFMT_A8) {
        const GLint swizzle[] = {GL_ZERO, GL_ZERO, GL_ZERO, GL_RED};
        glTextureParameteriv(name, GL_TEXTURE_SWIZZLE_RGBA, swizzle);
    } else if (formatInfo(format).opaque) {
        glTextureParameteri(name, GL_TEXTURE_SWIZZLE_A, GL_ONE);
    }
}

}  // namespace

Texture::Texture(const std::shared_ptr<Context>& context, const PoolCounter& pool, const TextureDesc& desc)
    : context_(context), poolToken_(pool, desc.pool), desc_(desc)
{}

std::shared_ptr<Texture> Texture::create(const std::shared_ptr<Context>& context, const PoolCounter& pool,
                                         const TextureDesc& desc)
{
    TextureDesc checked = desc;
    if (checked.levels == 0) checked.levels = fullChainLength(desc.width, desc.height);
    const bool renderable = (desc.usage & (D3DUSAGE_RENDERTARGET | D3DUSAGE_DEPTHSTENCIL)) != 0;
    if (formatInfo(desc.format).internalFormat == 0 || desc.width == 0 || desc.height == 0 || desc.width > 16384 ||
        desc.height > 16384 || checked.levels > fullChainLength(desc.width, desc.height) ||
        (desc.cube && desc.width != desc.height) || (renderable && desc.pool != D3DPOOL_DEFAULT) ||
        !context->makeCurrent())
        return nullptr;
    std::shared_ptr<Texture> texture(new Texture(context, pool, checked));
    if (!texture->allocate()) return nullptr;
    return texture;
}

bool Texture::allocate()
{
    const FormatInfo info = formatInfo(desc_.format);
    drainGlErrors();
    name_ = createGlName(context_, GlKind::Texture, desc_.cube ? GL_TEXTURE_CUBE_MAP : GL_TEXTURE_2D);
    if (!name_) return false;
    glTextureStorage2D(name_.get(), GLsizei(desc_.levels), info.internalFormat, GLsizei(desc_.width),
                       GLsizei(desc_.height));
    glTextureParameteri(name_.get(), GL_TEXTURE_MAX_LEVEL, GLint(desc_.levels - 1));
    applySwizzle(name_.get(), desc_.format);
    return glGetError() == GL_NO_ERROR;
}

UINT Texture::levelWidth(UINT level) const { return std::max(1u, desc_.width >> level); }
UINT Texture::levelHeight(UINT level) const { return std::max(1u, desc_.height >> level); }

HRESULT Texture::GetLevelDesc(UINT level, D3DSURFACE_DESC* desc) const
{
    if (!desc || level >= desc_.levels) return D3DERR_INVALIDCALL;
    *desc = D3DSURFACE_DESC{desc_.format,      D3DRTYPE_SURFACE,  desc_.usage, desc_.pool, 0, 0,
                            levelWidth(level), levelHeight(level)};
    return D3D_OK;
}

std::shared_ptr<Surface> Texture::GetCubeMapSurface(UINT face, UINT level)
{
    if (level >= desc_.levels || face >= (desc_.cube ? 6u : 1u)) return nullptr;
    return Surface::ofTexture(shared_from_this(), face, level);
}

HRESULT Texture::lockFace(UINT face, UINT level, D3DLOCKED_RECT* locked, DWORD flags)
{
    const UINT key = lockKey(face, level);
    if (!locked || level >= desc_.levels || face >= (desc_.cube ? 6u : 1u) || locks_.contains(key) ||
        formatInfo(desc_.format).depth || (desc_.pool == D3DPOOL_DEFAULT && !(desc_.usage & D3DUSAGE_DYNAMIC)))
        return D3DERR_INVALIDCALL;
    Staging& staging = locks_[key];
    staging.flags = flags;
    if (flags & D3DLOCK_DISCARD)
        staging.bytes.assign(imageSize(desc_.format, levelWidth(level), levelHeight(level)), 0);
    else
        download(face, level, staging.bytes);
    locked->Pitch = int32_t(rowPitch(desc_.format, levelWidth(level)));
    locked->pBits = staging.bytes.data();
    return D3D_OK;
}

HRESULT Texture::unlockFace(UINT face, UINT level)
{
    const auto it = locks_.find(lockKey(face, level));
    if (it == locks_.end()) return D3DERR_INVALIDCALL;
    if (!(it->second.flags & D3DLOCK_READONLY))
        upload(face, level, it->second.bytes.data(), rowPitch(desc_.format, levelWidth(level)));
    locks_.erase(it);
    return D3D_OK;
}

bool Texture::upload(UINT face, UINT level, const uint8_t* data, size_t rowPitchBytes)
{
    if (!data || level >= desc_.levels || !context_->makeCurrent()) return false;
    drainGlErrors();
    const FormatInfo info = formatInfo(desc_.format);
    const UINT width = levelWidth(level), height = levelHeight(level);
    const size_t tight = rowPitch(desc_.format, width);
    const UINT rows = rowCount(desc_.format, height);
    std::vector<uint8_t> packed;
    if (rowPitchBytes != tight) {
        packed.resize(tight * rows);
        for (UINT row = 0; row < rows; ++row)
            std::memcpy(packed.data() + row * tight, data + row * rowPitchBytes, tight);
        data = packed.data();
    }
    // Cube faces are the six layers of a cube map in the direct state access calls.
    if (info.compressed && !desc_.cube)
        glCompressedTextureSubImage2D(name_.get(), GLint(level), 0, 0, GLsizei(width), GLsizei(height),
                                      info.internalFormat, GLsizei(tight * rows), data);
    else if (info.compressed)
        glCompressedTextureSubImage3D(name_.get(), GLint(level), 0, 0, GLint(face), GLsizei(width), GLsizei(height), 1,
                                      info.internalFormat, GLsizei(tight * rows), data);
    else if (desc_.cube)
        glTextureSubImage3D(name_.get(), GLint(level), 0, 0, GLint(face), GLsizei(width), GLsizei(height), 1,
                            info.uploadFormat, info.uploadType, data);
    else
        glTextureSubImage2D(name_.get(), GLint(level), 0, 0, GLsizei(width), GLsizei(height), info.uploadFormat,
                            info.uploadType, data);
    return glGetError() == GL_NO_ERROR;
}

bool Texture::download(UINT face, UINT level, std::vector<uint8_t>& out) const
{
    const FormatInfo info = formatInfo(desc_.format);
    const UINT width = levelWidth(level), height = levelHeight(level);
    out.assign(imageSize(desc_.format, width, height), 0);
    if (level >= desc_.levels || info.depth || !context_->makeCurrent()) return false;
    drainGlErrors();
    const auto size = GLsizei(out.size());
    if (info.compressed)
        glGetCompressedTextureSubImage(name_.get(), GLint(level), 0, 0, GLint(face), GLsizei(width), GLsizei(height), 1,
                                       size, out.data());
    else
        glGetTextureSubImage(name_.get(), GLint(level), 0, 0, GLint(face), GLsizei(width), GLsizei(height), 1,
                             info.uploadFormat, info.uploadType, size, out.data());
    return glGetError() == GL_NO_ERROR;
}

}  // namespace qx::gpu
