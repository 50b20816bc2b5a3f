#pragma once
// The engine's device and its frame protocol: device loss is seen at the start of a frame,
// which then calls the two callbacks; the end of a frame may save a screenshot and waits
// until the card has finished.
#include "platform/gpu/Device.h"
#include "platform/gpu/Query.h"

#include <memory>
#include <string>

namespace qx4d {

namespace gpu = qx::gpu;

class GraphicsDevice {
public:
    using Callback = void (*)();

    GraphicsDevice() = default;
    virtual ~GraphicsDevice();
    GraphicsDevice(const GraphicsDevice&) = delete;
    GraphicsDevice& operator=(const GraphicsDevice&) = delete;

    /// The engine-wide device: the last one created successfully, null when none lives.
    static GraphicsDevice* Current() { return current; }

    // Create, Reset and EndFrame hand the OpenGL context back when they end: device
    // creation and reset run on the worker thread and frames on the callers' threads.
    bool Create(const gpu::D3DPRESENT_PARAMETERS& parameters);
    void Destroy();
    bool BeginFrame();
    void EndFrame(bool present);
    void Flush();
    bool Reset();

    /// Hands the context back from the calling thread, for a thread that used the device
    /// outside a frame (loading, uploading) and leaves it to another.
    void ReleaseThread() const
    {
        if (device) device->DetachThread();
    }

    void SetDeviceLostCallback(Callback callback) { onDeviceLost = callback; }
    void SetDeviceResetCallback(Callback callback) { onDeviceReset = callback; }
    const gpu::D3DCAPS9& GetCaps() const { return caps; }
    const std::shared_ptr<gpu::Device>& GetDevice() const { return device; }
    /// The next EndFrame saves render target 0 to this file (at most 260 characters;
    /// a longer path is cut there) and clears it.
    void SetScreenshot(std::u16string_view path, gpu::D3DXIMAGE_FILEFORMAT format);

private:
    void SaveScreenshot();

    std::shared_ptr<gpu::Device> device;
    std::shared_ptr<gpu::Query> flushQuery;
    gpu::D3DPRESENT_PARAMETERS presentParameters;
    gpu::D3DCAPS9 caps;
    Callback onDeviceLost = nullptr;
    Callback onDeviceReset = nullptr;
    std::u16string screenshotPath;
    gpu::D3DXIMAGE_FILEFORMAT screenshotFormat = gpu::D3DXIFF_BMP;

    static inline GraphicsDevice* current = nullptr;
};

/// The engine-wide device's Direct3D device; null when there is none.
inline gpu::Device* CurrentDevice()
{
    GraphicsDevice* graphics = GraphicsDevice::Current();
    return graphics ? graphics->GetDevice().get() : nullptr;
}

}  // namespace qx4d
