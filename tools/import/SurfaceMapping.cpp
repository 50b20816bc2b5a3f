#include "tools/import/SurfaceMapping.h"

#include <algorithm>

namespace qx4d::tools {

namespace {

/// Longest file name of a texture, and of the folder that holds them: together they stay
/// well inside the engine's 255 characters.
constexpr size_t kMaxFileName = 100;

}  // namespace

SurfaceModel SurfaceFor(const SourceMaterial* material, bool textured)
{
    SurfaceModel surface;
    surface.diffuse = 1.0f;
    if (!material) {
        surface.materialFile = "color.mat";
        return surface;
    }
    surface.color = material->color;
    surface.specular = material->specular;
    surface.glossiness = material->glossiness;
    surface.luminosity = material->luminosity;
    surface.transparency = material->blended ? 1.0f - material->opacity : 0.0f;
    surface.materialFile = !textured ? "color.mat" : material->blended ? "texture_alpha.mat" : "texture.mat";
    // A blended surface is drawn over what lies behind it, without hiding it from the
    // surfaces drawn later.
    surface.renderStates = material->blended ? SurfaceModel::kAlphaBlend | SurfaceModel::kDepth
                                             : SurfaceModel::kDepth | SurfaceModel::kDepthWrite;
    return surface;
}

std::string PortableFileName(const std::string& name, size_t maxLength)
{
    std::string out;
    for (const char c : name) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == ' ' ||
                           c == '-' || c == '_' || c == '.';
        out += plain ? c : '_';
    }
    // No hidden files, no names made only of dots.
    out.erase(0, out.find_first_not_of(". "));
    if (out.size() > maxLength) out.resize(maxLength);
    return out;
}

std::string TextureNames::NameOf(const SourceScene& scene, int index)
{
    if (const auto known = names_.find(index); known != names_.end()) return folder_ + "\\" + known->second;
    const SourceImage& image = scene.images[size_t(index)];
    std::string stem = image.name.substr(0, image.name.rfind('.'));
    stem = PortableFileName(stem, kMaxFileName);
    if (stem.empty()) stem = "image" + std::to_string(index);
    std::string file = stem + "." + image.extension;
    for (int copy = 2; files_.count(file); ++copy) file = stem + "-" + std::to_string(copy) + "." + image.extension;
    names_[index] = file;
    files_[file] = index;
    return folder_ + "\\" + file;
}

}  // namespace qx4d::tools
