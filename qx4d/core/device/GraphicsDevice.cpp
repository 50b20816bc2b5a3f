#include "qx4d/core/device/GraphicsDevice.h"

#include "platform/gpu/ImageFile.h"
#include "platform/os/WideText.h"

#include <thread>

namespace qx4d {

namespace {

constexpr size_t kMaxPath = 260;
// The flush waits for the card; this bound only guards against a card that never answers.
constexpr int kMaxFlushPolls = 10'000'000;

}  // namespace

GraphicsDevice::~GraphicsDevice()
{
    Destroy();
    if (current == this) current = nullptr;
}

bool GraphicsDevice::Create(const gpu::D3DPRESENT_PARAMETERS& parameters)
{
    Destroy();
    presentParameters = parameters;
    device = gpu::Device::create(parameters);
    if (!device || qx::FAILED(device->CreateQuery(gpu::D3DQUERYTYPE_EVENT, &flushQuery)) ||
        qx::FAILED(device->GetDeviceCaps(&caps))) {
        Destroy();
        return false;
    }
    current = this;
    ReleaseThread();
    return true;
}

void GraphicsDevice::Destroy()
{
    flushQuery.reset();
    device.reset();
    presentParameters = {};
    caps = {};
    onDeviceLost = nullptr;
    onDeviceReset = nullptr;
}

bool GraphicsDevice::BeginFrame()
{
    if (!device) return false;
    const qx::HRESULT level = device->TestCooperativeLevel();
    if (level == gpu::D3DERR_DEVICELOST) return false;
    if (level == gpu::D3DERR_DEVICENOTRESET) {
        // The callbacks only post to the command thread; this frame still runs. That
        // thread needs the context meanwhile.
        ReleaseThread();
        if (flushQuery) {
            flushQuery.reset();
            if (onDeviceLost) onDeviceLost();
        }
        if (onDeviceReset) onDeviceReset();
    }
    device->BeginScene();
    return true;
}

void GraphicsDevice::EndFrame(bool present)
{
    if (!device) return;
    device->EndScene();
    if (!screenshotPath.empty()) SaveScreenshot();
    (void)present;  // nothing is ever shown: the back buffer is off-screen
    Flush();
    ReleaseThread();
}

void GraphicsDevice::SaveScreenshot()
{
    std::shared_ptr<gpu::Surface> target, copy;
    if (qx::SUCCEEDED(device->GetRenderTarget(0, &target))) {
        const gpu::D3DSURFACE_DESC desc = target->desc();
        if (qx::SUCCEEDED(device->CreateOffscreenPlainSurface(desc.Width, desc.Height, desc.Format,
                                                              gpu::D3DPOOL_SYSTEMMEM, &copy)) &&
            qx::SUCCEEDED(device->GetRenderTargetData(target, copy)))
            gpu::D3DXSaveSurfaceToFile(qx::os::toUtf8(screenshotPath), screenshotFormat, *copy);
    }
    screenshotPath.clear();
}

void GraphicsDevice::Flush()
{
    if (!device || !flushQuery) return;
    device->BeginEvent(0xFF000000u, "GraphicsDevice::Flush()");
    flushQuery->Issue(gpu::D3DISSUE_END);
    for (int poll = 0; poll < kMaxFlushPolls; ++poll) {
        if (flushQuery->GetData(nullptr, 0, gpu::D3DGETDATA_FLUSH) != qx::S_FALSE) break;
        std::this_thread::yield();
    }
    device->EndEvent();
}

bool GraphicsDevice::Reset()
{
    if (!device || qx::FAILED(device->Reset(presentParameters))) return false;
    flushQuery.reset();
    const bool made = qx::SUCCEEDED(device->CreateQuery(gpu::D3DQUERYTYPE_EVENT, &flushQuery));
    ReleaseThread();
    return made;
}

void GraphicsDevice::SetScreenshot(std::u16string_view path, gpu::D3DXIMAGE_FILEFORMAT format)
{
    screenshotPath = path.substr(0, kMaxPath);
    screenshotFormat = format;
}

}  // namespace qx4d
