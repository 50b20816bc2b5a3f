#pragma once
// The converter: a model as an importer read it, to an object file's model. Node
// transforms are baked into the vertices (each placed mesh becomes one MESH item in the
// object's space, mirrored into the engine's left-handed space), so the items carry no
// placement of their own. A skinned mesh keeps its bones: it stands first in the list,
// posed as the file stores it, followed by one BONE item per joint, all at the identity
// there. Meshes that the model's first animation changes (skins, morph weights, moving
// nodes) are baked to MDD frames at 30 frames a second.
#include "tools/import/SourceScene.h"
#include "tools/objectfile/ObjectModel.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace qx4d::tools {

struct ConvertOptions {
    /// The model's file name, for messages.
    std::string source;
    /// The folder under "IMAGES:" that the textures are written to and loaded from.
    std::string imageFolder;
    /// Told the share of the baking done, from 0 to 1; may be empty.
    std::function<void(double)> progress;
};

struct Conversion {
    ObjectModel object;
    /// The texture files: a name inside the image folder and the bytes to write.
    std::vector<std::pair<std::string, std::vector<uint8_t>>> images;
    size_t meshItems = 0;
    size_t mddItems = 0;
    size_t boneItems = 0;
    /// Frames of the baked animation; 0 without one.
    uint32_t frames = 0;
};

/// Frames a second of a baked animation.
constexpr double kBakedFramesPerSecond = 30.0;

/// Converts `scene`. Throws ImportError when its data contradicts itself (indices past
/// the vertices, a joint the skin lacks) or the object would exceed what the file format
/// holds; parts left out on purpose add a line to `warnings`.
Conversion ConvertScene(const SourceScene& scene, const ConvertOptions& options, std::vector<std::string>& warnings);

}  // namespace qx4d::tools
