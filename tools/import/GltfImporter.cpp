// Loading a glTF file through tinygltf, then its images and materials; the meshes, nodes,
// skins and animations follow in files of their own. tinygltf decodes no image here: the
// encoded bytes are kept, to be written out as they are.
#include "tools/import/GltfImporter.h"

#include "tools/import/GltfReading.h"
#include "tools/import/ImageFormat.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string_view>

namespace qx4d::tools {

namespace gltf {

namespace {

/// Extensions a file may require that the importer understands, or can do without
/// because they only refine the look of a material.
bool IsUnderstood(const std::string& extension)
{
    return extension == "KHR_mesh_quantization" || extension == "KHR_texture_transform" ||
           extension.rfind("KHR_materials_", 0) == 0;
}

/// Keeps an image encoded. Images in buffer views are read later, with their bounds
/// checked, since the loader hands over their bytes without checking them.
bool KeepEncoded(tinygltf::Image* image, const int, std::string*, std::string*, int, int, const unsigned char* bytes,
                 int size, void*)
{
    image->as_is = true;
    if (image->bufferView < 0 && bytes && size > 0) image->image.assign(bytes, bytes + size);
    return true;
}

/// The first line of tinygltf's message, which may run over several.
std::string FirstLine(const std::string& text)
{
    std::string line = text.substr(0, text.find('\n'));
    while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.pop_back();
    return line.empty() ? "the file is not valid glTF" : line;
}

std::string FileName(const std::string& uri)
{
    const size_t slash = uri.find_last_of("/\\");
    return slash == std::string::npos ? uri : uri.substr(slash + 1);
}

SourceImage ReadImage(const Context& context, const tinygltf::Image& image, size_t index)
{
    const std::string what = "image " + std::to_string(index);
    const bool dataUri = image.uri.rfind("data:", 0) == 0;
    SourceImage out;
    out.name = !image.uri.empty() && !dataUri ? FileName(image.uri) : image.name;
    std::span<const uint8_t> bytes = image.image;
    if (image.bufferView >= 0) bytes = context.accessors.View(image.bufferView, what);
    if (bytes.empty()) {
        context.Warn(what + " (" + image.uri + ") could not be read; its texture is left out");
        return out;
    }
    const std::string declared = !image.mimeType.empty() ? DeclaredFormat(image.mimeType) : DeclaredFormat(out.name);
    out.extension = EngineImageFormat(bytes, declared);
    if (out.extension.empty())
        context.Warn(what + " is not PNG, JPEG, TGA, BMP or DDS, which the engine reads; its texture is left out");
    else
        out.bytes.assign(bytes.begin(), bytes.end());
    return out;
}

/// The image of a texture reference, or -1.
int ImageOfTexture(const Context& context, int texture)
{
    if (texture < 0) return -1;
    if (size_t(texture) >= context.model.textures.size())
        context.Fail("texture " + std::to_string(texture) + " does not exist");
    const int source = context.model.textures[size_t(texture)].source;
    if (source < 0)
        context.Warn("texture " + std::to_string(texture) + " has no image in a core format; it is left out");
    else if (size_t(source) >= context.model.images.size())
        context.Fail("texture " + std::to_string(texture) + " names image " + std::to_string(source) +
                     ", which does not exist");
    return source;
}

/// Metallic-roughness to the engine's specular model: the rougher, the weaker and wider
/// the highlight. The exponent is the Blinn-Phong one of the same spread, 2 / a^2 - 2
/// with a = roughness^2, kept between 1 and 256.
void SetSpecular(SourceMaterial& material, double roughness)
{
    roughness = std::clamp(roughness, 0.0, 1.0);
    const double a = std::max(roughness * roughness, 1e-3);
    material.specular = float(1.0 - roughness);
    material.glossiness = float(std::clamp(2.0 / (a * a) - 2.0, 1.0, 256.0));
}

SourceMaterial ReadMaterial(const Context& context, const tinygltf::Material& material,
                            const std::vector<SourceImage>& images)
{
    SourceMaterial out;
    out.name = material.name;
    const tinygltf::PbrMetallicRoughness& pbr = material.pbrMetallicRoughness;
    if (pbr.baseColorFactor.size() == 4) {
        for (size_t c = 0; c < 3; ++c) out.color[c] = float(std::clamp(pbr.baseColorFactor[c], 0.0, 1.0));
        out.opacity = float(std::clamp(pbr.baseColorFactor[3], 0.0, 1.0));
    }
    // A cut-out (MASK) is drawn blended too: the engine's materials have no alpha test.
    out.blended = material.alphaMode == "BLEND" || material.alphaMode == "MASK";
    if (!out.blended) out.opacity = 1.0f;
    SetSpecular(out, pbr.roughnessFactor);
    for (const double emissive : material.emissiveFactor)
        out.luminosity = std::max(out.luminosity, float(std::clamp(emissive, 0.0, 1.0)));
    const int image = ImageOfTexture(context, pbr.baseColorTexture.index);
    if (image >= 0 && !images[size_t(image)].bytes.empty()) out.baseColorImage = image;
    return out;
}

}  // namespace

void Load(const std::filesystem::path& path, const std::string& file, tinygltf::Model& model)
{
    tinygltf::TinyGLTF loader;
    loader.SetImageLoader(&KeepEncoded, nullptr);
    std::string message, warning;
    // The binary container is told by its magic, whatever the file's name says.
    char magic[4] = {};
    std::ifstream(path, std::ios::binary).read(magic, sizeof magic);
    const bool binary = std::string_view(magic, sizeof magic) == "glTF";
    bool loaded = false;
    try {
        loaded = binary ? loader.LoadBinaryFromFile(&model, &message, &warning, path.string())
                        : loader.LoadASCIIFromFile(&model, &message, &warning, path.string());
    } catch (const std::exception& error) {
        message = error.what();
    }
    if (!loaded) throw ImportError(file + ": " + FirstLine(message));
    for (const std::string& required : model.extensionsRequired)
        if (!IsUnderstood(required))
            throw ImportError(file + ": needs the extension " + required + ", which the importer does not read");
}

std::vector<SourceImage> ReadImages(const Context& context)
{
    std::vector<SourceImage> images;
    for (size_t i = 0; i < context.model.images.size(); ++i)
        images.push_back(ReadImage(context, context.model.images[i], i));
    return images;
}

std::vector<SourceMaterial> ReadMaterials(const Context& context, const std::vector<SourceImage>& images)
{
    std::vector<SourceMaterial> materials;
    for (const tinygltf::Material& material : context.model.materials)
        materials.push_back(ReadMaterial(context, material, images));
    return materials;
}

}  // namespace gltf

SourceScene GltfImporter::Read(const std::filesystem::path& path, std::vector<std::string>& warnings)
{
    const std::string file = path.filename().string();
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) throw ImportError(file + ": no such file");
    tinygltf::Model model;
    gltf::Load(path, file, model);

    const gltf::Context context{model, file, gltf::AccessorReader(model, file), warnings};
    SourceScene scene;
    scene.images = gltf::ReadImages(context);
    scene.materials = gltf::ReadMaterials(context, scene.images);
    std::vector<std::vector<int>> primitivesOfMesh;
    scene.meshes = gltf::ReadMeshes(context, primitivesOfMesh);
    std::vector<int> nodeIndex;
    scene.nodes = gltf::ReadNodes(context, primitivesOfMesh, nodeIndex);
    scene.skins = gltf::ReadSkins(context, nodeIndex);
    scene.animations = gltf::ReadAnimations(context, nodeIndex);
    return scene;
}

}  // namespace qx4d::tools
