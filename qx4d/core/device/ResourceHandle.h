#pragma once
// A small shared handle to a device resource: a pointer to a record {index in its list,
// count of handles}. Copies raise the count, drops lower it, and the record is freed at 0.
// One engine-wide record with index -1 serves every null handle. When the resource dies
// its record's index becomes -1, so handles kept past it read as null.
#include <cstdint>

namespace qx4d {

struct HandleRecord {
    int32_t index = -1;
    int32_t count = 0;
};

class ResourceHandle {
public:
    /// The null handle.
    ResourceHandle();
    /// A new record for a resource at `index`, held by this handle alone.
    static ResourceHandle MakeRecord(int32_t index);

    ResourceHandle(const ResourceHandle& other);
    ResourceHandle& operator=(const ResourceHandle& other);
    ResourceHandle(ResourceHandle&& other) noexcept;
    ResourceHandle& operator=(ResourceHandle&& other) noexcept;
    ~ResourceHandle();

    int32_t Index() const { return record->index; }
    bool IsNull() const { return record->index < 0; }
    /// Moves the resource in its list, or marks it dead with -1.
    void SetIndex(int32_t index) const { record->index = index; }
    int32_t Count() const { return record->count; }
    /// Same resource: the same record, or both null (a dead resource's handle is null).
    bool SameAs(const ResourceHandle& other) const { return record == other.record || (IsNull() && other.IsNull()); }

private:
    explicit ResourceHandle(HandleRecord* adopted) : record(adopted) {}
    void Drop();

    HandleRecord* record;
};

}  // namespace qx4d
