#pragma once
// The project's worker threads, shared by every frame effect that splits its rows: made
// on first use with one thread per core the process may run on (or the count an
// application asked for before that), and kept for the life of the process. A frame is cut into slices of rows; the
// calling thread takes slices too, so a pool of one thread runs everything in place.
// Each row is computed on its own, so a frame comes out the same however it is cut.
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace qx::os {

class WorkerPool {
public:
    /// The process's pool, made on first use and never destroyed (a module that holds it
    /// must stay loaded: see the modules' -z nodelete).
    static WorkerPool& shared();
    /// Sets how many threads (the caller included) the pool will have, before it is made;
    /// 0 means one per core the process may run on. False once the pool exists: it is
    /// sized once.
    static bool setThreadCount(unsigned count);

    explicit WorkerPool(unsigned threads);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    /// Threads that take slices, the caller included.
    unsigned threadCount() const { return unsigned(workers_.size()) + 1; }

    /// Runs `body(begin, end)` over slices of [0, count) that together cover it once, and
    /// returns when all have run. Slices hold at least `minSlice` items. A call made while
    /// the pool is busy (from another thread, or from inside a slice) runs in place.
    /// `body` must not throw: the slices of workers have nobody to throw to.
    void forSlices(int count, int minSlice, const std::function<void(int, int)>& body);

private:
    struct Job {
        const std::function<void(int, int)>* body = nullptr;
        int count = 0;
        int sliceSize = 1;
        int slices = 0;
        std::atomic<int> next{0};
        std::atomic<int> finished{0};
    };

    void work();
    /// Takes slices of the current job until none is left.
    void runSlices(Job& job);

    std::vector<std::thread> workers_;
    std::mutex busy_;  // held by the caller whose job the pool runs
    std::mutex lock_;
    std::condition_variable started_;
    std::condition_variable ended_;
    Job* job_ = nullptr;
    unsigned generation_ = 0;
    unsigned workersDone_ = 0;
    bool stopping_ = false;
};

/// While one lives, the rows of this thread's frames are computed on this thread alone:
/// for callers that already run one frame per thread, and to compare the two ways.
class SingleThreadedRows {
public:
    SingleThreadedRows();
    ~SingleThreadedRows();
    SingleThreadedRows(const SingleThreadedRows&) = delete;
    SingleThreadedRows& operator=(const SingleThreadedRows&) = delete;
};

/// Runs `body(begin, end)` over slices of the rows [0, rows) on the shared pool. Frames
/// of fewer than two slices' worth of rows run in place without waking the pool.
void parallelRows(int rows, const std::function<void(int, int)>& body);

}  // namespace qx::os
