#include "qx4d/core/device/ResourceHandle.h"

#include <utility>

namespace qx4d {

namespace {

// Shared by every null handle and never freed, so its count is left alone: null handles
// may be copied on any thread.
HandleRecord& NullRecord()
{
    static HandleRecord record{-1, 1};
    return record;
}

void Retain(HandleRecord* record)
{
    if (record != &NullRecord()) ++record->count;
}

}  // namespace

ResourceHandle::ResourceHandle() : record(&NullRecord()) {}

ResourceHandle ResourceHandle::MakeRecord(int32_t index) { return ResourceHandle(new HandleRecord{index, 1}); }

ResourceHandle::ResourceHandle(const ResourceHandle& other) : record(other.record) { Retain(record); }

ResourceHandle& ResourceHandle::operator=(const ResourceHandle& other)
{
    if (record != other.record) {
        Retain(other.record);
        Drop();
        record = other.record;
    }
    return *this;
}

ResourceHandle::ResourceHandle(ResourceHandle&& other) noexcept
    : ResourceHandle(static_cast<const ResourceHandle&>(other))
{}

ResourceHandle& ResourceHandle::operator=(ResourceHandle&& other) noexcept
{
    return *this = static_cast<const ResourceHandle&>(other);
}

ResourceHandle::~ResourceHandle() { Drop(); }

void ResourceHandle::Drop()
{
    if (record != &NullRecord() && --record->count == 0)
        delete record;  // the record is owned by the handles that share it
}

}  // namespace qx4d
