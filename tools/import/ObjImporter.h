#pragma once
// Wavefront OBJ with its MTL materials and their texture files, read through
// tinyobjloader. Each shape becomes one mesh a material; normals missing from the file
// are computed over the smoothing groups (flat where a face has none).
#include "tools/import/ModelImporter.h"

namespace qx4d::tools {

class ObjImporter : public ModelImporter {
public:
    SourceScene Read(const std::filesystem::path& path, std::vector<std::string>& warnings) override;
};

}  // namespace qx4d::tools
