#include "platform/os/MessageQueue.h"

namespace qx::os {

void MessageQueue::post(ThreadMessage message)
{
    {
        const std::lock_guard hold(lock_);
        messages_.push_back(message);
    }
    arrived_.notify_one();
}

ThreadMessage MessageQueue::get()
{
    std::unique_lock hold(lock_);
    arrived_.wait(hold, [this] { return !messages_.empty(); });
    const ThreadMessage message = messages_.front();
    messages_.pop_front();
    return message;
}

std::optional<ThreadMessage> MessageQueue::peek()
{
    const std::lock_guard hold(lock_);
    if (messages_.empty()) return std::nullopt;
    const ThreadMessage message = messages_.front();
    messages_.pop_front();
    return message;
}

void Event::set()
{
    {
        const std::lock_guard hold(lock_);
        set_ = true;
    }
    if (manualReset_)
        changed_.notify_all();
    else
        changed_.notify_one();
}

void Event::reset()
{
    const std::lock_guard hold(lock_);
    set_ = false;
}

void Event::wait()
{
    std::unique_lock hold(lock_);
    changed_.wait(hold, [this] { return set_; });
    if (!manualReset_) set_ = false;
}

bool Event::waitFor(std::chrono::milliseconds timeout)
{
    std::unique_lock hold(lock_);
    if (!changed_.wait_for(hold, timeout, [this] { return set_; })) return false;
    if (!manualReset_) set_ = false;
    return true;
}

}  // namespace qx::os
