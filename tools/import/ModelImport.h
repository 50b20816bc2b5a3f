#pragma once
// The whole import of a model: read by the backend for its format, converted, and
// written as an object file with its textures beside it in an images folder.
#include "tools/import/ObjectConverter.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace qx4d::tools {

struct ImportOptions {
    std::filesystem::path input;
    /// The object file to write.
    std::filesystem::path output;
    /// The folder that "IMAGES:" stands for; empty for "Images" beside the output's
    /// folder, as in a data folder ("Objects/robot.qxo" and "Images/").
    std::filesystem::path images;
    /// Told the share of the work done, from 0 to 1; may be empty.
    std::function<void(double)> progress;
};

struct ImportSummary {
    size_t meshItems = 0;
    size_t mddItems = 0;
    size_t boneItems = 0;
    uint32_t frames = 0;
    /// The texture files written.
    std::vector<std::filesystem::path> textures;
    std::vector<std::string> warnings;
};

/// Imports the model. Throws ImportError, with one line that names the file and the
/// problem, when it can't be read, contradicts itself or a file can't be written. A model
/// that is refused is refused before anything is written.
ImportSummary ImportModel(const ImportOptions& options);

}  // namespace qx4d::tools
