#pragma once
// The default content pack as the tools find and use it: the folder the build assembled,
// else the one installed under the prefix; and, for the effects that play a file of their
// Source, the pack's scene or animation that they play when the user names none.
#include "platform/com/HResult.h"

#include <filesystem>
#include <string>
#include <vector>

namespace qx {

/// The first pack folder that exists: the build's, then the one installed under the
/// prefix of `binary` (a program in bin/, or a plugin one or two folders under lib/).
/// The empty text when there is none.
std::string findDataPath(const std::filesystem::path& binary);

/// The pack for the module this code is linked into (a plugin, or the program), found
/// from where the dynamic loader loaded it, as findDataPath does for a binary.
std::string findModuleDataPath();

/// Whether effect `id` plays content of the pack (scenes, objects, effect files, pictures).
bool needsPack(LONG id);
/// The Source that effect `id` plays by default, relative to the data path; empty for
/// effects that read no Source or whose Source is always the same scene.
std::string packSource(LONG id);

/// A scene of the pack and the effect that plays it.
struct PackScene {
    LONG effectId;
    std::string source;
};
/// The pack's particle, lens-flare and image-filter scenes that no effect plays by default,
/// in the order the demo shows them after the catalogue.
std::vector<PackScene> packShowcase();

}  // namespace qx
