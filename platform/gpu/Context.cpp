#include "platform/gpu/Context.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <vector>

namespace qx::gpu {

namespace {

// The first EGL device that gives a display; null without the device extension.
EGLDisplay deviceDisplay()
{
    if (!epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_EXT_platform_device")) return EGL_NO_DISPLAY;
    EGLint count = 0;
    if (!eglQueryDevicesEXT(0, nullptr, &count) || count <= 0) return EGL_NO_DISPLAY;
    std::vector<EGLDeviceEXT> devices(static_cast<size_t>(count));
    if (!eglQueryDevicesEXT(count, devices.data(), &count)) return EGL_NO_DISPLAY;
    for (EGLDeviceEXT device : devices) {
        // Mesa lists its software device too; a real GPU device names a DRM node.
        const char* extensions = eglQueryDeviceStringEXT(device, EGL_EXTENSIONS);
        if (!extensions || std::string(extensions).find("EGL_EXT_device_drm") == std::string::npos) continue;
        EGLDisplay display = eglGetPlatformDisplayEXT(EGL_PLATFORM_DEVICE_EXT, device, nullptr);
        if (display != EGL_NO_DISPLAY) return display;
    }
    return EGL_NO_DISPLAY;
}

EGLDisplay surfacelessDisplay()
{
    if (!epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_MESA_platform_surfaceless")) return EGL_NO_DISPLAY;
    return eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
}

}  // namespace

std::shared_ptr<Context> Context::create()
{
    std::shared_ptr<Context> context(new Context());
    for (EGLDisplay display : {deviceDisplay(), surfacelessDisplay()}) {
        if (display != EGL_NO_DISPLAY && context->open(display)) return context;
    }
    return nullptr;
}

bool Context::open(void* display)
{
    EGLint major = 0, minor = 0;
    if (!eglInitialize(display, &major, &minor)) return false;
    display_ = display;
    if (!eglBindAPI(EGL_OPENGL_API)) return false;
    const EGLint configAttributes[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint configCount = 0;
    if (!epoxy_has_egl_extension(display, "EGL_KHR_no_config_context") &&
        (!eglChooseConfig(display, configAttributes, &config, 1, &configCount) || configCount < 1))
        return false;
    // Robust buffer access first: draws whose indices point past their buffers (bad
    // content) then read zeros instead of memory they do not own.
    for (const EGLint robust : {EGL_TRUE, EGL_FALSE}) {
        const EGLint contextAttributes[] = {EGL_CONTEXT_MAJOR_VERSION,
                                            4,
                                            EGL_CONTEXT_MINOR_VERSION,
                                            5,
                                            EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                            EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                            EGL_CONTEXT_OPENGL_ROBUST_ACCESS,
                                            robust,
                                            EGL_NONE};
        context_ = eglCreateContext(display, config, EGL_NO_CONTEXT, contextAttributes);
        if (context_ != EGL_NO_CONTEXT) return makeCurrent();
    }
    return false;
}

Context::~Context()
{
    if (context_ != EGL_NO_CONTEXT && context_ != nullptr) {
        if (eglGetCurrentContext() == context_)
            eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglDestroyContext(display_, context_);
    }
    // The display stays initialised: EGL displays are process-wide and shared by devices.
}

bool Context::makeCurrent() const
{
    if (eglGetCurrentContext() == context_) return true;
    return eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_) == EGL_TRUE;
}

void Context::releaseCurrent() const
{
    if (eglGetCurrentContext() == context_) eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

std::string Context::rendererName() const
{
    if (!makeCurrent()) return {};
    const auto* name = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    return name ? name : "";
}

}  // namespace qx::gpu
