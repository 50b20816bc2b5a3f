#pragma once
// The OpenGL 4.5 core context behind a device: EGL on the device platform when a GPU is
// present, else Mesa's surfaceless platform (llvmpipe). No window: all rendering goes to
// framebuffer objects. Resources keep the context alive through a shared pointer, so their
// OpenGL names are always deleted with the context current.
#include <memory>
#include <string>

namespace qx::gpu {

class Context {
public:
    /// Null when no display offers an OpenGL 4.5 core context.
    static std::shared_ptr<Context> create();
    ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    /// Makes the context current on the calling thread (cheap when it already is).
    /// Callers serialise their use of a device under their own lock, as with Direct3D.
    bool makeCurrent() const;
    /// Lets another thread take the context next: releases it from the calling thread.
    void releaseCurrent() const;
    /// GL_RENDERER, e.g. "llvmpipe (LLVM 15.0.6, 256 bits)".
    std::string rendererName() const;

private:
    Context() = default;
    bool open(void* display);

    void* display_ = nullptr;
    void* context_ = nullptr;
};

}  // namespace qx::gpu
