#pragma once
// A vertex or index buffer. Locks hand out a range of a system-memory copy; the unlock
// uploads it. D3DLOCK_DISCARD gives the buffer fresh storage, so the card never waits on
// data it may still be reading; D3DLOCK_NOOVERWRITE promises not to touch such data.
#include "platform/gpu/GlName.h"
#include "platform/gpu/PoolToken.h"
#include "platform/gpu/Types.h"

#include <memory>
#include <vector>

namespace qx::gpu {

inline constexpr D3DFORMAT D3DFMT_VERTEXDATA = 100;

class Buffer {
public:
    /// `format` is D3DFMT_VERTEXDATA, D3DFMT_INDEX16 or D3DFMT_INDEX32. Null on size 0.
    static std::shared_ptr<Buffer> create(const std::shared_ptr<Context>& context, const PoolCounter& pool, UINT length,
                                          DWORD usage, D3DFORMAT format, D3DPOOL poolKind);
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    HRESULT Lock(UINT offset, UINT size, void** data, DWORD flags);
    HRESULT Unlock();

    UINT length() const { return UINT(shadow_.size()); }
    DWORD usage() const { return usage_; }
    D3DFORMAT format() const { return format_; }
    uint32_t glName() const { return name_.get(); }

private:
    Buffer(const std::shared_ptr<Context>& context, const PoolCounter& pool, D3DPOOL poolKind)
        : context_(context), poolToken_(pool, poolKind)
    {}

    std::shared_ptr<Context> context_;
    PoolToken poolToken_;
    GlName name_;
    std::vector<uint8_t> shadow_;
    DWORD usage_ = 0;
    D3DFORMAT format_ = D3DFMT_VERTEXDATA;
    bool locked_ = false;
    UINT lockOffset_ = 0;
    UINT lockSize_ = 0;
    DWORD lockFlags_ = 0;
};

using VertexBuffer = Buffer;
using IndexBuffer = Buffer;

}  // namespace qx::gpu
