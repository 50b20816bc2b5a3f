#pragma once
// Materials of a model to the surfaces of an object file: one of the engine's standard
// material files ("texture.mat" with a base colour texture, "texture_alpha.mat" when
// that texture's alpha blends, "color.mat" otherwise) with the surface values, and the
// names under "IMAGES:" that the textures are written and loaded under.
#include "tools/import/SourceScene.h"
#include "tools/objectfile/ObjectModel.h"

#include <map>
#include <string>
#include <vector>

namespace qx4d::tools {

/// The surface of a material; null for the model's default material (plain white).
/// `textured` says whether its base colour texture made it into the object.
SurfaceModel SurfaceFor(const SourceMaterial* material, bool textured);

/// The texture files of an import: each image of the model that a material uses gets one
/// file name in the object's image folder, unique whatever the model calls its images.
class TextureNames {
public:
    /// `folder` is the folder under "IMAGES:" that holds the textures ("robot").
    explicit TextureNames(std::string folder) : folder_(std::move(folder)) {}

    /// The name the object loads image `index` by ("robot\\wood.png"), giving the image a
    /// file the first time.
    std::string NameOf(const SourceScene& scene, int index);
    /// Each file to write: its name inside the folder, and the image it holds.
    const std::map<std::string, int>& Files() const { return files_; }

private:
    std::string folder_;
    std::map<int, std::string> names_;
    std::map<std::string, int> files_;
};

/// A name of plain ASCII letters, digits, spaces, '-', '_' and '.', as short as the
/// engine's 255-character names need, so that file systems and the engine's 8-bit code
/// page agree on it.
std::string PortableFileName(const std::string& name, size_t maxLength);

}  // namespace qx4d::tools
