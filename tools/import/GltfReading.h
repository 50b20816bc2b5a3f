#pragma once
// The parts of the glTF backend, each turning one section of a loaded file into the
// importer's model. They share the file's name for messages, the checked accessor
// reader and the list of warnings.
#include "tools/import/GltfAccessors.h"
#include "tools/import/SourceScene.h"

#include <tiny_gltf.h>

#include <filesystem>
#include <string>
#include <vector>

namespace qx4d::tools::gltf {

struct Context {
    const tinygltf::Model& model;
    std::string file;
    AccessorReader accessors;
    std::vector<std::string>& warnings;

    void Warn(const std::string& text) const { warnings.push_back(file + ": " + text); }
    [[noreturn]] void Fail(const std::string& text) const { throw ImportError(file + ": " + text); }
};

/// Loads the file into `model`; ImportError when tinygltf refuses it or it requires an
/// extension that the importer doesn't read.
void Load(const std::filesystem::path& path, const std::string& file, tinygltf::Model& model);
/// The images, still encoded; an image the engine can't read stays empty, with a warning.
std::vector<SourceImage> ReadImages(const Context& context);
std::vector<SourceMaterial> ReadMaterials(const Context& context, const std::vector<SourceImage>& images);
/// The triangle primitives of every mesh, and for each glTF mesh the indices of its own.
std::vector<SourceMesh> ReadMeshes(const Context& context, std::vector<std::vector<int>>& primitivesOfMesh);
/// The nodes of the default scene, parents first; `nodeIndex` maps a glTF node to its
/// place in the result, or -1 for a node outside the scene.
std::vector<SourceNode> ReadNodes(const Context& context, const std::vector<std::vector<int>>& primitivesOfMesh,
                                  std::vector<int>& nodeIndex);
std::vector<SourceSkin> ReadSkins(const Context& context, const std::vector<int>& nodeIndex);
std::vector<SourceAnimation> ReadAnimations(const Context& context, const std::vector<int>& nodeIndex);

}  // namespace qx4d::tools::gltf
