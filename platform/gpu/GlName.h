#pragma once
// Owner of one OpenGL object name, deleted with its context current.
#include "platform/gpu/Context.h"

#include <epoxy/gl.h>

#include <memory>
#include <utility>

namespace qx::gpu {

enum class GlKind { Texture, Buffer, Framebuffer, Sampler, Query, VertexArray, Program, Shader };

class GlName {
public:
    GlName() = default;
    GlName(std::shared_ptr<Context> context, GlKind kind, GLuint name)
        : context_(std::move(context)), kind_(kind), name_(name) {}
    ~GlName() { reset(); }
    GlName(GlName&& other) noexcept { *this = std::move(other); }
    GlName& operator=(GlName&& other) noexcept
    {
        if (this != &other) {
            reset();
            context_ = std::move(other.context_);
            kind_ = other.kind_;
            name_ = std::exchange(other.name_, 0u);
        }
        return *this;
    }
    GlName(const GlName&) = delete;
    GlName& operator=(const GlName&) = delete;

    GLuint get() const { return name_; }
    explicit operator bool() const { return name_ != 0; }
    void reset();

private:
    std::shared_ptr<Context> context_;
    GlKind kind_ = GlKind::Texture;
    GLuint name_ = 0;
};

/// Forgets earlier OpenGL errors, so that the next glGetError speaks of what follows.
inline void drainGlErrors()
{
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i) {
    }
}

/// Makes a new object of the kind with glCreate* (the context must be current).
GlName createGlName(const std::shared_ptr<Context>& context, GlKind kind, GLenum target = 0);

}  // namespace qx::gpu
