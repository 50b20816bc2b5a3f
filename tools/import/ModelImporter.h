#pragma once
// The one interface through which the converter reads a model: each backend (Wavefront
// OBJ, glTF 2.0) turns its format into a `SourceScene`, so that another format or library
// can be added here without touching the converter.
#include "tools/import/SourceScene.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace qx4d::tools {

class ModelImporter {
public:
    virtual ~ModelImporter() = default;

    /// Reads the model at `path`. Throws `ImportError` when it can't be read or its data
    /// can't be trusted; parts that are left out on purpose add a line to `warnings`.
    virtual SourceScene Read(const std::filesystem::path& path, std::vector<std::string>& warnings) = 0;
};

/// The importer for the file's extension (".obj", ".gltf", ".glb", in any case); null
/// when no backend reads it.
std::unique_ptr<ModelImporter> MakeImporter(const std::filesystem::path& path);

}  // namespace qx4d::tools
