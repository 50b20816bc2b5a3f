#pragma once
// A vertex declaration resource: an owned copy of its elements (with the end marker),
// from which the device object can be made again at any time.
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Resource.h"

#include <vector>

namespace qx4d {

class VertexDeclaration : public Resource {
public:
    VertexDeclaration(const gpu::D3DVERTEXELEMENT9* records, uint32_t count)
        : elementCount(count), elements(records, records + count)
    {}

    bool Restore() override;
    void ReleaseDevice() override { declaration.reset(); }
    bool Matches(const gpu::D3DVERTEXELEMENT9* other, uint32_t count) const;

    uint32_t elementCount;
    std::vector<gpu::D3DVERTEXELEMENT9> elements;
    std::shared_ptr<gpu::VertexDeclaration> declaration;
};

}  // namespace qx4d
