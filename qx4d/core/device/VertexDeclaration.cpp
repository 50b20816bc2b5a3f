#include "qx4d/core/device/VertexDeclaration.h"

#include <cstring>

namespace qx4d {

bool VertexDeclaration::Restore()
{
    gpu::Device* device = CurrentDevice();
    if (declaration) return true;
    return device && qx::SUCCEEDED(device->CreateVertexDeclaration(elements.data(), &declaration));
}

bool VertexDeclaration::Matches(const gpu::D3DVERTEXELEMENT9* other, uint32_t count) const
{
    return count == elementCount && std::memcmp(other, elements.data(), count * sizeof(gpu::D3DVERTEXELEMENT9)) == 0;
}

}  // namespace qx4d
