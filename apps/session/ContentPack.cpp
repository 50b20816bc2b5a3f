#include "apps/qxfx/DataPack.h"

#include <filesystem>
#include <system_error>

namespace qx::qxfx {

std::string defaultDataPath()
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    const fs::path candidates[] = {
        QX_BUILD_DATA_DIR,
        error ? fs::path() : program.parent_path().parent_path() / "share" / "qxdynamiceffects" / "data",
    };
    for (const auto& candidate : candidates) {
        if (!candidate.empty() && fs::is_directory(candidate, error)) return candidate.string();
    }
    return {};
}

}  // namespace qx::qxfx
