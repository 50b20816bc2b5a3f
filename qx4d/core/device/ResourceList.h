#pragma once
// The list of one kind of resource in the renderer: a handle's index is the place in the
// list. Releasing from the middle moves the last resource into the hole and updates its
// record, so handles to it still reach it.
#include "qx4d/core/device/ResourceHandle.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace qx4d {

template <typename T>
class ResourceList {
public:
    T* Resolve(const ResourceHandle& handle) const
    {
        const int32_t index = handle.Index();
        return index >= 0 && size_t(index) < items.size() ? items[size_t(index)].get() : nullptr;
    }

    /// Restores a new resource and appends it; a resource that cannot be made is dropped
    /// at once and the null handle given.
    ResourceHandle Make(std::unique_ptr<T> resource)
    {
        if (!resource->Restore()) return ResourceHandle();
        resource->handle.SetIndex(int32_t(items.size()));
        items.push_back(std::move(resource));
        return items.back()->handle;
    }

    /// The last resource (searching from the end) that `matches`, its count raised.
    template <typename Predicate>
    ResourceHandle Share(Predicate matches)
    {
        for (size_t i = items.size(); i-- > 0;) {
            if (matches(*items[i])) {
                ++items[i]->refCount;
                return items[i]->handle;
            }
        }
        return ResourceHandle();
    }

    /// Destroys the resource at `index`: its record reads -1, the last moves in its place.
    void Destroy(int32_t index)
    {
        items[size_t(index)]->handle.SetIndex(-1);
        items[size_t(index)] = std::move(items.back());
        items.pop_back();
        if (size_t(index) < items.size()) items[size_t(index)]->handle.SetIndex(index);
    }

    /// Destroys every resource, from the last to the first.
    void Clear()
    {
        while (!items.empty()) Destroy(int32_t(items.size() - 1));
    }

    std::vector<std::unique_ptr<T>> items;
};

}  // namespace qx4d
