#include "wrap3d/Context.h"

#include "qx4d/core/FileManager.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"
#include "qx4d/core/scene/Bucket.h"
#include "qx4d/core/scene/RenderQueue.h"
#include "wrap3d/DataPath.h"

#include <algorithm>

namespace qx {

namespace {

/// The guard of the global pointer, apart from the context's own lock.
std::mutex& PointerGuard()
{
    static std::mutex guard;
    return guard;
}

/// The context that static destruction found still running, kept reachable.
C4DContext* leftToTheProcess = nullptr;

/// The owner of the process-wide context. DestroyContext tears it down. Static destruction
/// doesn't: it runs at process exit or while a host unloads the library, under the
/// loader's lock, and the worker's teardown would wait on that lock forever (its OpenGL
/// calls resolve their entry points through the loader). The process keeps it then.
struct ContextOwner {
    ~ContextOwner() { leftToTheProcess = context.release(); }
    std::unique_ptr<C4DContext> context;
};

std::unique_ptr<C4DContext>& TheContext()
{
    static ContextOwner owner;
    return owner.context;
}

/// Pixel shaders of version 1.3 and up: the encoded version 0xFFFF0103.
constexpr DWORD kMinPixelShaderVersion = 0xFFFF0103u;

/// The aliases of the content, in the order they are mounted, with their folders under
/// the data path.
constexpr std::pair<const char16_t*, const char16_t*> kAliases[] = {
    {u"IMAGES", u"\\Images\\"},     {u"EFFECTS", u"\\Effects\\"}, {u"SCENES", u"\\Scenes\\"},
    {u"EMITTERS", u"\\Emitters\\"}, {u"OBJECTS", u"\\Objects\\"}, {u"MATERIALS", u"\\Materials\\"},
};

// The device's callbacks, called inside a frame by a caller that holds the bridge's lock:
// they hand the work to the worker, which takes no lock for it.
void PostDeviceLost()
{
    if (C4DContext* context = C4DContext::Instance()) context->Send(C4DContext::kDeviceLost);
}

void PostDeviceReset()
{
    if (C4DContext* context = C4DContext::Instance()) context->Send(C4DContext::kDeviceReset);
}

}  // namespace

C4DContext::C4DContext() = default;

C4DContext::~C4DContext()
{
    if (!worker.joinable()) return;
    Send(kQuit);
    worker.join();
}

C4DContext* C4DContext::Instance() { return TheContext().get(); }

bool C4DContext::Start()
{
    worker = std::thread([this] { Run(); });
    return Send(kCreate) && HasRenderer();
}

bool C4DContext::Send(Command command)
{
    if (!worker.joinable()) return false;
    std::unique_lock guard(queueLock);
    const uint64_t ticket = ++posted;
    commands.emplace_back(command, ticket);
    queueChanged.notify_all();
    return queueChanged.wait_for(guard, kCommandTimeout, [&] { return done >= ticket; });
}

void C4DContext::Run()
{
    for (;;) {
        std::pair<Command, uint64_t> next;
        {
            std::unique_lock guard(queueLock);
            queueChanged.wait(guard, [&] { return !commands.empty(); });
            next = commands.front();
            commands.pop_front();
        }
        Execute(next.first);
        {
            std::lock_guard guard(queueLock);
            done = next.second;
            queueChanged.notify_all();
        }
        if (next.first == kQuit) return;
    }
}

void C4DContext::Execute(Command command)
{
    switch (command) {
    case kCreate: Create(); break;
    case kQuit: Teardown(); break;
    case kDeviceLost: HandleDeviceLost(); break;
    case kDeviceReset: HandleDeviceReset(); break;
    }
}

void C4DContext::Create()
{
    std::lock_guard guard(lock);
    device = std::make_unique<qx4d::GraphicsDevice>();
    // The real rendering goes to off-screen targets: the 1 by 1 back buffer never shows.
    gpu::D3DPRESENT_PARAMETERS parameters;
    parameters.BackBufferWidth = 1;
    parameters.BackBufferHeight = 1;
    parameters.BackBufferFormat = gpu::D3DFMT_A8R8G8B8;
    parameters.Windowed = 1;
    parameters.EnableAutoDepthStencil = 1;
    parameters.AutoDepthStencilFormat = gpu::D3DFMT_D24X8;
    if (!device->Create(parameters)) {
        device.reset();
        return;
    }
    device->SetDeviceLostCallback(PostDeviceLost);
    device->SetDeviceResetCallback(PostDeviceReset);
    const gpu::D3DCAPS9& caps = device->GetCaps();
    const bool pow2 = caps.TextureCaps & gpu::D3DPTEXTURECAPS_POW2;
    const bool conditional = caps.TextureCaps & gpu::D3DPTEXTURECAPS_NONPOW2CONDITIONAL;
    if (caps.PixelShaderVersion < kMinPixelShaderVersion || pow2 != conditional) {
        device.reset();
        return;
    }
    CreateServices();
    if (device) device->ReleaseThread();
}

void C4DContext::CreateServices()
{
    renderer = std::make_unique<qx4d::Renderer>();
    files = std::make_unique<qx4d::FileManager>();
    const std::u16string dataPath = DataPathBuffer();
    for (const auto& [alias, folder] : kAliases) files->Mount(alias, dataPath + folder);
    queue = std::make_unique<qx4d::RenderQueue>();
    particles = std::make_unique<qx4d::ParticleBucket>();
    flares = std::make_unique<qx4d::LensFlareBucket>();
    if (!particles->Create(kBatchCapacity) || !flares->Create(kBatchCapacity)) {
        Teardown();
        return;
    }
    SetSamplerStates();
}

void C4DContext::SetSamplerStates()
{
    gpu::Device* direct = device ? device->GetDevice().get() : nullptr;
    if (!direct) return;
    for (DWORD stage = 0; stage < 8; ++stage) {
        direct->SetSamplerState(stage, gpu::D3DSAMP_MINFILTER, gpu::D3DTEXF_LINEAR);
        direct->SetSamplerState(stage, gpu::D3DSAMP_MAGFILTER, gpu::D3DTEXF_LINEAR);
        direct->SetSamplerState(stage, gpu::D3DSAMP_MIPFILTER, gpu::D3DTEXF_LINEAR);
    }
}

void C4DContext::HandleDeviceLost()
{
    if (renderer) renderer->OnDeviceLost();
    if (device) device->Reset();
}

void C4DContext::HandleDeviceReset()
{
    if (renderer) renderer->OnDeviceReset();
    SetSamplerStates();
    for (C4DReset* listener : resetListeners) listener->Raise();
    if (device) device->ReleaseThread();
}

void C4DContext::Teardown()
{
    // The batches and the queue give their resources back to the renderer first.
    flares.reset();
    particles.reset();
    queue.reset();
    renderer.reset();
    if (device) device->ReleaseThread();
    device.reset();
    files.reset();
}

void C4DContext::AddResetListener(C4DReset* listener)
{
    std::lock_guard guard(lock);
    resetListeners.push_back(listener);
}

void C4DContext::RemoveResetListener(C4DReset* listener)
{
    std::lock_guard guard(lock);
    std::erase(resetListeners, listener);
}

LONG EnsureContext()
{
    std::lock_guard guard(PointerGuard());
    std::unique_ptr<C4DContext>& context = TheContext();
    if (context) return 1;
    context = std::make_unique<C4DContext>();
    if (context->Start()) return 1;
    context.reset();
    return 0;
}

bool IsContextReady()
{
    C4DContext* context = C4DContext::Instance();
    if (!context) return false;
    std::lock_guard guard(context->Lock());
    return context->HasRenderer();
}

void DestroyContext()
{
    std::lock_guard guard(PointerGuard());
    TheContext().reset();
}

void UnderBridgeLock(const std::function<void()>& work)
{
    C4DContext* context = C4DContext::Instance();
    if (!context) {
        work();
        return;
    }
    std::lock_guard guard(context->Lock());
    work();
    if (qx4d::GraphicsDevice* device = context->Device()) device->ReleaseThread();
}

}  // namespace qx
