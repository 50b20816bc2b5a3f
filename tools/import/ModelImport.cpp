#include "tools/import/ModelImport.h"

#include "tools/import/ModelImporter.h"
#include "tools/import/SurfaceMapping.h"

#include <fstream>

namespace qx4d::tools {

namespace {

/// A folder name of the same portable kind as the texture files' names.
constexpr size_t kMaxFolderName = 100;

void WriteFile(const std::filesystem::path& path, const std::vector<uint8_t>& bytes)
{
    std::error_code error;
    if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path(), error);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    out.close();
    if (!out) throw ImportError(path.string() + ": cannot be written");
}

}  // namespace

ImportSummary ImportModel(const ImportOptions& options)
{
    const std::unique_ptr<ModelImporter> importer = MakeImporter(options.input);
    if (!importer)
        throw ImportError(options.input.filename().string() + ": not a model the importer reads (.obj, .gltf, .glb)");
    ImportSummary summary;
    const SourceScene scene = importer->Read(options.input, summary.warnings);

    ConvertOptions convert;
    convert.source = options.input.filename().string();
    convert.imageFolder = PortableFileName(options.output.stem().string(), kMaxFolderName);
    if (convert.imageFolder.empty()) convert.imageFolder = "model";
    convert.progress = options.progress;
    const Conversion conversion = ConvertScene(scene, convert, summary.warnings);

    const std::filesystem::path imagesRoot =
        options.images.empty() ? options.output.parent_path().parent_path() / "Images" : options.images;
    for (const auto& [name, bytes] : conversion.images) {
        const std::filesystem::path file = imagesRoot / convert.imageFolder / name;
        WriteFile(file, bytes);
        summary.textures.push_back(file);
    }
    WriteFile(options.output, WriteObject(conversion.object));
    summary.meshItems = conversion.meshItems;
    summary.mddItems = conversion.mddItems;
    summary.boneItems = conversion.boneItems;
    summary.frames = conversion.frames;
    return summary;
}

}  // namespace qx4d::tools
