#pragma once
// Owner of one OpenGL object name, deleted with its context current. Names are 32-bit
// integers, as OpenGL's are.
#include "platform/gpu/Context.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace qx::gpu {

enum class GlKind { Texture, Buffer, Framebuffer, Sampler, Query, VertexArray, Program, Shader };

class GlName {
public:
    GlName() = default;
    GlName(std::shared_ptr<Context> context, GlKind kind, uint32_t name)
        : context_(std::move(context)), kind_(kind), name_(name)
    {}
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

    uint32_t get() const { return name_; }
    explicit operator bool() const { return name_ != 0; }
    void reset();

private:
    std::shared_ptr<Context> context_;
    GlKind kind_ = GlKind::Texture;
    uint32_t name_ = 0;
};

}  // namespace qx::gpu
