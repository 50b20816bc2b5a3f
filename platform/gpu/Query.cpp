#include "platform/gpu/Query.h"

#include "platform/gpu/GlApi.h"

#include <cstring>

namespace qx::gpu {

namespace {

/// How long a flushing GetData waits for its fence before it answers "not yet".
constexpr GLuint64 kFlushWaitNs = 200'000;

}  // namespace

std::shared_ptr<Query> Query::create(const std::shared_ptr<Context>& context, D3DQUERYTYPE type)
{
    if ((type != D3DQUERYTYPE_EVENT && type != D3DQUERYTYPE_OCCLUSION) || !context->makeCurrent()) return nullptr;
    std::shared_ptr<Query> query(new Query(context, type));
    if (type == D3DQUERYTYPE_OCCLUSION) query->query_ = createGlName(context, GlKind::Query, GL_SAMPLES_PASSED);
    return query;
}

Query::~Query() { dropFence(); }

void Query::dropFence()
{
    if (fence_ && context_->makeCurrent()) glDeleteSync(static_cast<GLsync>(fence_));
    fence_ = nullptr;
}

HRESULT Query::Issue(DWORD flags)
{
    if (!context_->makeCurrent()) return D3DERR_INVALIDCALL;
    if (type_ == D3DQUERYTYPE_EVENT) {
        if (flags & D3DISSUE_END) {
            dropFence();
            fence_ = glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
            issued_ = true;
        }
        return D3D_OK;
    }
    if (flags & D3DISSUE_BEGIN)
        glBeginQuery(GL_SAMPLES_PASSED, query_.get());
    else if (flags & D3DISSUE_END) {
        glEndQuery(GL_SAMPLES_PASSED);
        // A fence behind the count, for callers that wait for it.
        dropFence();
        fence_ = glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
        issued_ = true;
    }
    return D3D_OK;
}

HRESULT Query::GetData(void* data, DWORD size, DWORD flags)
{
    if (!issued_ || !context_->makeCurrent()) return D3DERR_INVALIDCALL;
    if (type_ == D3DQUERYTYPE_EVENT) {
        // A caller that flushes is waiting for the card: it waits a moment in the driver
        // rather than asking again at once, so that its polling leaves the processor to a
        // software renderer's own threads.
        const bool flush = flags & D3DGETDATA_FLUSH;
        const GLenum state = glClientWaitSync(static_cast<GLsync>(fence_), flush ? GL_SYNC_FLUSH_COMMANDS_BIT : 0,
                                              flush ? kFlushWaitNs : 0);
        if (state == GL_TIMEOUT_EXPIRED) return S_FALSE;
        const int32_t done = 1;
        if (data && size >= sizeof(done)) std::memcpy(data, &done, sizeof(done));
        return S_OK;
    }
    // As with events, a caller that flushes waits a moment in the driver for the count.
    if (flags & D3DGETDATA_FLUSH)
        glClientWaitSync(static_cast<GLsync>(fence_), GL_SYNC_FLUSH_COMMANDS_BIT, kFlushWaitNs);
    GLuint available = 0;
    glGetQueryObjectuiv(query_.get(), GL_QUERY_RESULT_AVAILABLE, &available);
    if (!available) return S_FALSE;
    GLuint count = 0;
    glGetQueryObjectuiv(query_.get(), GL_QUERY_RESULT, &count);
    const DWORD result = count;
    if (data && size >= sizeof(result)) std::memcpy(data, &result, sizeof(result));
    return S_OK;
}

}  // namespace qx::gpu
