#include "platform/gpu/Buffer.h"

#include "platform/gpu/GlApi.h"

namespace qx::gpu {

std::shared_ptr<Buffer> Buffer::create(const std::shared_ptr<Context>& context, const PoolCounter& pool, UINT length,
                                       DWORD usage, D3DFORMAT format, D3DPOOL poolKind)
{
    // 256 MiB is far above what any engine buffer asks; a larger request is bad data.
    if (length == 0 || length > (256u << 20) || !context->makeCurrent()) return nullptr;
    std::shared_ptr<Buffer> buffer(new Buffer(context, pool, poolKind));
    drainGlErrors();
    buffer->name_ = createGlName(context, GlKind::Buffer);
    buffer->shadow_.assign(length, 0);
    buffer->usage_ = usage;
    buffer->format_ = format;
    glNamedBufferData(buffer->name_.get(), GLsizeiptr(length), nullptr,
                      (usage & D3DUSAGE_DYNAMIC) ? GL_STREAM_DRAW : GL_STATIC_DRAW);
    return glGetError() == GL_NO_ERROR ? buffer : nullptr;
}

HRESULT Buffer::Lock(UINT offset, UINT size, void** data, DWORD flags)
{
    if (!data || locked_ || offset > length()) return D3DERR_INVALIDCALL;
    // Size 0 locks the whole buffer from the offset, as in Direct3D.
    if (size == 0 || size > length() - offset) size = length() - offset;
    locked_ = true;
    lockOffset_ = offset;
    lockSize_ = size;
    lockFlags_ = flags;
    *data = shadow_.data() + offset;
    return D3D_OK;
}

HRESULT Buffer::Unlock()
{
    if (!locked_) return D3DERR_INVALIDCALL;
    locked_ = false;
    if ((lockFlags_ & D3DLOCK_READONLY) || !context_->makeCurrent()) return D3D_OK;
    if (lockFlags_ & D3DLOCK_DISCARD) {
        // Fresh storage: draws still queued keep reading the old one.
        glInvalidateBufferData(name_.get());
    }
    glNamedBufferSubData(name_.get(), GLintptr(lockOffset_), GLsizeiptr(lockSize_), shadow_.data() + lockOffset_);
    return D3D_OK;
}

}  // namespace qx::gpu
