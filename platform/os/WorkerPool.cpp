#include "platform/os/WorkerPool.h"

#include <sched.h>

#include <algorithm>
#include <new>
#include <utility>

namespace qx::os {

namespace {

/// Rows below which a slice costs more to hand over than to compute (a 1080p row of a
/// colour effect takes a few microseconds).
constexpr int kRowsPerSlice = 16;
/// Slices per thread: more than one, so that a thread that gets its core late does not
/// hold the frame up at the end.
constexpr int kSlicesPerThread = 4;

std::atomic<unsigned> requestedThreads{0};
std::atomic<bool> made{false};
thread_local int singleThreadedDepth = 0;
// Set while this thread runs a slice: a split asked for inside one runs in place.
thread_local bool inSlice = false;

/// The cores this process may run on (taskset and container limits narrow them).
unsigned usableCores()
{
    cpu_set_t cores;
    if (sched_getaffinity(0, sizeof cores, &cores) == 0) return unsigned(std::max(1, CPU_COUNT(&cores)));
    return std::max(1u, std::thread::hardware_concurrency());
}

/// Holds an object that is never destroyed: the shared pool outlives static destruction,
/// since a host's threads may still be drawing frames when its process exits, and its
/// workers stay parked until the process ends them.
template <typename T>
class NeverDestroyed {
public:
    template <typename... Args>
    explicit NeverDestroyed(Args&&... args)
    {
        new (storage_) T(std::forward<Args>(args)...);
    }
    T& get() { return *std::launder(reinterpret_cast<T*>(storage_)); }

private:
    alignas(T) unsigned char storage_[sizeof(T)];
};

/// The size of the shared pool, taken as it is made: later requests are refused.
unsigned sharedThreadCount()
{
    made.store(true);
    const unsigned requested = requestedThreads.load();
    return requested > 0 ? requested : usableCores();
}

}  // namespace

WorkerPool& WorkerPool::shared()
{
    static NeverDestroyed<WorkerPool> pool(sharedThreadCount());
    return pool.get();
}

bool WorkerPool::setThreadCount(unsigned count)
{
    if (made.load()) return false;
    requestedThreads.store(count);
    return true;
}

WorkerPool::WorkerPool(unsigned threads)
{
    workers_.reserve(threads > 0 ? threads - 1 : 0);
    for (unsigned i = 1; i < threads; ++i) workers_.emplace_back([this] { work(); });
}

WorkerPool::~WorkerPool()
{
    {
        std::lock_guard guard(lock_);
        stopping_ = true;
    }
    started_.notify_all();
    for (auto& worker : workers_) worker.join();
}

void WorkerPool::runSlices(Job& job)
{
    for (int slice = job.next.fetch_add(1); slice < job.slices; slice = job.next.fetch_add(1)) {
        const int begin = slice * job.sliceSize;
        inSlice = true;
        (*job.body)(begin, std::min(job.count, begin + job.sliceSize));
        inSlice = false;
        job.finished.fetch_add(1);
    }
}

void WorkerPool::work()
{
    unsigned seen = 0;
    for (;;) {
        Job* job = nullptr;
        {
            std::unique_lock guard(lock_);
            started_.wait(guard, [&] { return stopping_ || generation_ != seen; });
            if (stopping_) return;
            seen = generation_;
            job = job_;
        }
        runSlices(*job);
        {
            std::lock_guard guard(lock_);
            ++workersDone_;
        }
        ended_.notify_one();
    }
}

void WorkerPool::forSlices(int count, int minSlice, const std::function<void(int, int)>& body)
{
    if (count <= 0) return;
    const int threads = int(threadCount());
    const int slices = std::clamp(count / std::max(minSlice, 1), 1, threads * kSlicesPerThread);
    if (slices < 2 || threads < 2 || inSlice) {
        body(0, count);
        return;
    }
    std::unique_lock busy(busy_, std::try_to_lock);
    if (!busy.owns_lock()) {
        body(0, count);
        return;
    }
    Job job;
    job.body = &body;
    job.count = count;
    job.sliceSize = (count + slices - 1) / slices;
    job.slices = (count + job.sliceSize - 1) / job.sliceSize;
    {
        std::lock_guard guard(lock_);
        job_ = &job;
        workersDone_ = 0;
        ++generation_;
    }
    started_.notify_all();
    runSlices(job);
    // Every worker has let go of the job before it leaves this frame.
    std::unique_lock guard(lock_);
    ended_.wait(guard, [&] { return workersDone_ == workers_.size(); });
    job_ = nullptr;
}

SingleThreadedRows::SingleThreadedRows() { ++singleThreadedDepth; }

SingleThreadedRows::~SingleThreadedRows() { --singleThreadedDepth; }

void parallelRows(int rows, const std::function<void(int, int)>& body)
{
    if (singleThreadedDepth > 0 || rows < 2 * kRowsPerSlice) {
        if (rows > 0) body(0, rows);
        return;
    }
    WorkerPool::shared().forSlices(rows, kRowsPerSlice, body);
}

}  // namespace qx::os
