#pragma once
// Counts the live resources of D3DPOOL_DEFAULT of one device. Direct3D refuses to reset a
// device while any of them lives, which is what makes the engine's release-then-reset
// order matter; our device keeps that rule.
#include "platform/gpu/Types.h"

#include <memory>

namespace qx::gpu {

using PoolCounter = std::shared_ptr<int>;

class PoolToken {
public:
    PoolToken() = default;
    PoolToken(const PoolCounter& counter, D3DPOOL pool) : counter_(pool == D3DPOOL_DEFAULT ? counter : nullptr)
    {
        if (counter_) ++*counter_;
    }
    ~PoolToken()
    {
        if (counter_) --*counter_;
    }
    PoolToken(const PoolToken&) = delete;
    PoolToken& operator=(const PoolToken&) = delete;

private:
    PoolCounter counter_;
};

}  // namespace qx::gpu
