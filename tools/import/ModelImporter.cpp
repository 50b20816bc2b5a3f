#include "tools/import/ModelImporter.h"

#include "tools/import/GltfImporter.h"
#include "tools/import/ObjImporter.h"

#include <algorithm>
#include <cctype>

namespace qx4d::tools {

std::unique_ptr<ModelImporter> MakeImporter(const std::filesystem::path& path)
{
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    if (extension == ".obj") return std::make_unique<ObjImporter>();
    if (extension == ".gltf" || extension == ".glb") return std::make_unique<GltfImporter>();
    return nullptr;
}

}  // namespace qx4d::tools
