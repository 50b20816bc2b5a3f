#pragma once
// The process-wide scene context: the graphics device, the renderer and the engine's other
// services, and the worker thread on which the device is made, lost and reset. Its lock is
// the lock of the whole bridge: rendering runs on the callers' threads under it.
#include "platform/com/HResult.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace qx4d {
class FileManager;
class GraphicsDevice;
class LensFlareBucket;
class ParticleBucket;
class RenderQueue;
class Renderer;
}  // namespace qx4d

namespace qx {

/// A counter that device resets raise, for clients whose textures must be filled again.
class C4DReset {
public:
    bool NeedsReset() const { return counter > 0; }
    void ClearReset()
    {
        if (counter >= 1) --counter;
    }
    void Raise() { ++counter; }

private:
    int32_t counter = 0;
};

class C4DContext {
public:
    /// The commands of the worker thread, as thread messages.
    enum Command : int32_t { kCreate = 1025, kQuit = 1026, kDeviceLost = 1027, kDeviceReset = 1028 };
    /// How long a caller waits for the worker to finish a command.
    static constexpr std::chrono::milliseconds kCommandTimeout{10000};
    /// Sampler states and batch sizes of the engine's start.
    static constexpr uint32_t kBatchCapacity = 1000;

    C4DContext();
    /// Sends the quit command, which tears the device down on the worker, and joins it.
    ~C4DContext();
    C4DContext(const C4DContext&) = delete;
    C4DContext& operator=(const C4DContext&) = delete;

    /// The running context, or null.
    static C4DContext* Instance();

    /// Starts the worker and has it make the device; true when the renderer exists.
    bool Start();
    /// Hands a command to the worker and waits for it; false when no worker runs or it
    /// did not finish within the time-out.
    bool Send(Command command);
    bool HasRenderer() const { return renderer != nullptr; }

    void AddResetListener(C4DReset* listener);
    void RemoveResetListener(C4DReset* listener);

    /// The lock of the bridge.
    std::recursive_mutex& Lock() { return lock; }
    qx4d::GraphicsDevice* Device() const { return device.get(); }

private:
    void Run();
    void Execute(Command command);
    void Create();
    void CreateServices();
    void HandleDeviceLost();
    void HandleDeviceReset();
    void Teardown();
    void SetSamplerStates();

    std::recursive_mutex lock;
    std::unique_ptr<qx4d::FileManager> files;
    std::unique_ptr<qx4d::GraphicsDevice> device;
    std::unique_ptr<qx4d::Renderer> renderer;
    std::unique_ptr<qx4d::RenderQueue> queue;
    std::unique_ptr<qx4d::ParticleBucket> particles;
    std::unique_ptr<qx4d::LensFlareBucket> flares;
    std::vector<C4DReset*> resetListeners;

    // The worker's message queue: commands with their tickets, and the last ticket done.
    std::thread worker;
    std::mutex queueLock;
    std::condition_variable queueChanged;
    std::deque<std::pair<Command, uint64_t>> commands;
    uint64_t posted = 0;
    uint64_t done = 0;
};

/// Starts the context if it does not run; 1 when it exists or started.
LONG EnsureContext();
/// True when a context exists and its renderer is there.
bool IsContextReady();
/// Deletes the context, if any; the module calls it once as it unloads.
void DestroyContext();
/// Runs `work` under the bridge's lock, then hands the device's context back so that the
/// next caller may take it from another thread. Without a context `work` runs alone.
void UnderBridgeLock(const std::function<void()>& work);

}  // namespace qx
