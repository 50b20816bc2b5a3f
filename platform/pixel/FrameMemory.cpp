#include "platform/pixel/FrameMemory.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <vector>

namespace qx::pixel {

namespace {

constexpr size_t kMaxKeptBytes = size_t(64) << 20;

struct KeptBlock {
    uint32_t* block;
    size_t samples;
};

class BlockCache {
public:
    ~BlockCache()
    {
        for (const auto& kept : kept_) std::free(kept.block);
    }

    uint32_t* take(size_t samples)
    {
        std::lock_guard guard(lock_);
        const auto it = std::ranges::find(kept_, samples, &KeptBlock::samples);
        if (it == kept_.end()) return nullptr;
        uint32_t* block = it->block;
        keptBytes_ -= samples * sizeof(uint32_t);
        kept_.erase(it);
        return block;
    }

    void give(uint32_t* block, size_t samples)
    {
        const size_t bytes = samples * sizeof(uint32_t);
        {
            std::lock_guard guard(lock_);
            if (bytes <= kMaxKeptBytes) {
                // The oldest blocks go first when the newest would not fit.
                while (keptBytes_ + bytes > kMaxKeptBytes) {
                    std::free(kept_.front().block);
                    keptBytes_ -= kept_.front().samples * sizeof(uint32_t);
                    kept_.erase(kept_.begin());
                }
                kept_.push_back({block, samples});
                keptBytes_ += bytes;
                return;
            }
        }
        std::free(block);
    }

private:
    std::mutex lock_;
    std::vector<KeptBlock> kept_;
    size_t keptBytes_ = 0;
};

BlockCache& cache()
{
    static BlockCache instance;
    return instance;
}

}  // namespace

void FrameMemoryRelease::operator()(uint32_t* block) const
{
    if (block) cache().give(block, samples);
}

FrameMemory allocateFrameMemory(size_t samples)
{
    if (samples == 0 || samples > std::numeric_limits<size_t>::max() / sizeof(uint32_t)) return {};
    uint32_t* block = cache().take(samples);
    if (!block) block = static_cast<uint32_t*>(std::malloc(samples * sizeof(uint32_t)));
    return FrameMemory(block, FrameMemoryRelease{samples});
}

}  // namespace qx::pixel
