#pragma once
// The thread message queue and the event of the Windows thread services, for objects
// that keep a worker thread of their own: other threads post numbered messages to the
// worker, which takes them in order, and hand-overs are signalled with events.
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

namespace qx::os {

struct ThreadMessage {
    uint32_t message = 0;
    uintptr_t wParam = 0;
    intptr_t lParam = 0;
};

/// The queue of one worker thread: PostThreadMessage and GetMessage.
class MessageQueue {
public:
    void post(ThreadMessage message);
    /// Waits for the next message and takes it.
    ThreadMessage get();
    /// The next message if one is waiting.
    std::optional<ThreadMessage> peek();

private:
    std::mutex lock_;
    std::condition_variable arrived_;
    std::deque<ThreadMessage> messages_;
};

/// An event: auto-reset (a wait that succeeds clears it, releasing one waiter) or manual
/// reset (it stays set until reset).
class Event {
public:
    explicit Event(bool manualReset = false, bool initiallySet = false) : manualReset_(manualReset), set_(initiallySet)
    {}

    void set();
    void reset();
    /// Waits until the event is set, without a time limit.
    void wait();
    /// Waits at most `timeout`; false when it passed with the event not set.
    bool waitFor(std::chrono::milliseconds timeout);

private:
    std::mutex lock_;
    std::condition_variable changed_;
    const bool manualReset_;
    bool set_;
};

}  // namespace qx::os
