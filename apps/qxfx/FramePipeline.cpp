#include "apps/qxfx/FramePipeline.h"

#include "apps/qxfx/FrameQueue.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <thread>

namespace qx::qxfx {

namespace {

// One frame for each stage to work on and one waiting before each of the two later
// stages, so that a stage that is briefly slower does not hold up the others; one more
// lets the reader decode ahead while a frame is written. Six 1080p frames are 50 MB.
constexpr int kFramesInFlight = 6;

long runInTurn(const FrameStages& stages)
{
    TimedFrame frame;
    long done = 0;
    while (!stages.stopRequested() && stages.source.next(frame)) {
        stages.middle(frame);
        stages.sink(frame);
        ++done;
    }
    return done;
}

class ThreadedRun {
public:
    explicit ThreadedRun(const FrameStages& stages) : stages_(stages)
    {
        for (int i = 0; i < kFramesInFlight; ++i) {
            TimedFrame empty;
            spare_.give(empty);
        }
    }

    long run()
    {
        {
            const std::jthread reading([this] { readFrames(); });
            const std::jthread writing([this] { writeFrames(); });
            processFrames();
            // The reader stops after the frame it is on; the writer writes what the
            // middle stage finished, then ends.
            spare_.close();
            decoded_.close();
            processed_.close();
        }
        if (error_) std::rethrow_exception(error_);
        return written_;
    }

private:
    void readFrames()
    {
        guarded([this] {
            TimedFrame frame;
            while (spare_.take(frame) && stages_.source.next(frame) && decoded_.give(frame)) {}
        });
        decoded_.close();
    }

    void processFrames()
    {
        guarded([this] {
            TimedFrame frame;
            while (!stages_.stopRequested() && decoded_.take(frame)) {
                stages_.middle(frame);
                if (!processed_.give(frame)) return;
            }
        });
    }

    void writeFrames()
    {
        guarded([this] {
            TimedFrame frame;
            while (processed_.take(frame)) {
                stages_.sink(frame);
                ++written_;
                spare_.give(frame);
            }
        });
    }

    // Runs a stage's loop; its error is kept (the first one of the run) and ends every
    // stage, so that no thread waits for frames that will not come.
    template <typename Loop>
    void guarded(const Loop& loop)
    {
        try {
            loop();
        } catch (...) {
            {
                const std::lock_guard hold(errorLock_);
                if (!error_) error_ = std::current_exception();
            }
            spare_.close();
            decoded_.close();
            processed_.close();
        }
    }

    const FrameStages& stages_;
    FrameQueue spare_;
    FrameQueue decoded_;
    FrameQueue processed_;
    std::mutex errorLock_;
    std::exception_ptr error_;
    std::atomic<long> written_ = 0;
};

}  // namespace

long runFrameStages(const FrameStages& stages, bool threaded)
{
    if (!threaded) return runInTurn(stages);
    return ThreadedRun(stages).run();
}

}  // namespace qx::qxfx
