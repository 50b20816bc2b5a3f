#include "platform/gpu/GlName.h"

#include "platform/gpu/GlApi.h"

namespace qx::gpu {

void GlName::reset()
{
    if (name_ == 0 || !context_ || !context_->makeCurrent()) {
        name_ = 0;
        return;
    }
    switch (kind_) {
    case GlKind::Texture: glDeleteTextures(1, &name_); break;
    case GlKind::Buffer: glDeleteBuffers(1, &name_); break;
    case GlKind::Framebuffer: glDeleteFramebuffers(1, &name_); break;
    case GlKind::Sampler: glDeleteSamplers(1, &name_); break;
    case GlKind::Query: glDeleteQueries(1, &name_); break;
    case GlKind::VertexArray: glDeleteVertexArrays(1, &name_); break;
    case GlKind::Program: glDeleteProgram(name_); break;
    case GlKind::Shader: glDeleteShader(name_); break;
    }
    name_ = 0;
}

GlName createGlName(const std::shared_ptr<Context>& context, GlKind kind, GLenum target)
{
    GLuint name = 0;
    switch (kind) {
    case GlKind::Texture: glCreateTextures(target, 1, &name); break;
    case GlKind::Buffer: glCreateBuffers(1, &name); break;
    case GlKind::Framebuffer: glCreateFramebuffers(1, &name); break;
    case GlKind::Sampler: glCreateSamplers(1, &name); break;
    case GlKind::Query: glCreateQueries(target, 1, &name); break;
    case GlKind::VertexArray: glCreateVertexArrays(1, &name); break;
    case GlKind::Program: name = glCreateProgram(); break;
    case GlKind::Shader: name = glCreateShader(target); break;
    }
    return GlName(context, kind, name);
}

}  // namespace qx::gpu
