#pragma once
// The base of every device resource. A resource can make its device object anew at any
// time (Restore), so that a lost device costs a rebuild and no reload of the scene.
#include "qx4d/core/String.h"
#include "qx4d/core/device/ResourceHandle.h"

#include <cstdint>

namespace qx4d {

/// `Resource::flags` bits.
enum ResourceFlags : uint32_t {
    /// Never handed to a second user by a search; also marks textures made as targets.
    kResourceExclusive = 0x01,
    kResourceCube = 0x02,
    kResourceDynamic = 0x04,
    /// The index buffer holds 32-bit indices.
    kResourceIndex32 = 0x08,
    /// The index buffer is filled as a quad list.
    kResourceQuadList = 0x10,
};

class Resource {
public:
    Resource() : handle(ResourceHandle::MakeRecord(-1)) {}
    Resource(const Resource&) = delete;
    Resource& operator=(const Resource&) = delete;

    virtual void OnDeviceLost() {}
    virtual bool Restore() { return true; }
    virtual void ReleaseDevice() {}
    virtual ~Resource() = default;

    /// Users of the resource.
    int32_t refCount = 1;
    uint32_t flags = 0;
    /// The record shared with the users' handles; its index is the place in the list.
    ResourceHandle handle;
    String name;
};

}  // namespace qx4d
