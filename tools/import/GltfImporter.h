#pragma once
// glTF 2.0, as text (.gltf with its buffers and images beside it or in data URIs) or
// binary (.glb), read through tinygltf.
#include "tools/import/ModelImporter.h"

namespace qx4d::tools {

class GltfImporter : public ModelImporter {
public:
    SourceScene Read(const std::filesystem::path& path, std::vector<std::string>& warnings) override;
};

}  // namespace qx4d::tools
