#include "apps/session/ContentPack.h"

#include "host/EffectCatalog.h"
#include "wrap3d/SceneEffects.h"

#include <dlfcn.h>

#include <system_error>

namespace qx {

std::string findDataPath(const std::filesystem::path& binary)
{
    namespace fs = std::filesystem;
    const fs::path installed = fs::path("share") / "qxdynamiceffects" / "data";
    std::error_code error;
    // The binary as it lies (/proc/self/exe is a link to it).
    const fs::path resolved = fs::canonical(binary, error);
    const fs::path folder = (error ? binary : resolved).parent_path();
    const fs::path candidates[] = {
        QX_BUILD_DATA_DIR,
        folder.parent_path() / installed,                // bin/qxfx
        folder.parent_path().parent_path() / installed,  // lib/frei0r-1/qxfx.so
    };
    for (const auto& candidate : candidates)
        if (!candidate.empty() && fs::is_directory(candidate, error)) return candidate.string();
    return {};
}

std::string findModuleDataPath()
{
    Dl_info info{};
    if (!dladdr(reinterpret_cast<const void*>(&findModuleDataPath), &info) || !info.dli_fname) return findDataPath({});
    return findDataPath(info.dli_fname);
}

bool needsPack(LONG id)
{
    return (id >= effect_id::kCube && id < effect_id::kSceneEnd) || id == effect_id::kVectorAnimation ||
           id == effect_id::kTransition3D || id == effect_id::kComposition3D;
}

std::string packSource(LONG id)
{
    switch (id) {
    case effect_id::kParticles3D: return "Particles\\Sparks.afx";
    case effect_id::kScene3D: return "Effects\\Drapeau.afx";
    case effect_id::kAnimation3D: return "Effects\\Battement.afx";
    case effect_id::kVectorAnimation: return "Animations\\sample.swf";
    default: return {};
    }
}

std::vector<PackScene> packShowcase()
{
    const LONG particles = effect_id::kParticles3D, scene = effect_id::kScene3D;
    return {{particles, "Particles\\Neige.afx"},  {particles, "Particles\\Fontaine.afx"},
            {particles, "Particles\\Averse.afx"}, {scene, "Effects\\Soleil.afx"},
            {scene, "Effects\\Negatif.afx"},      {scene, "Effects\\Sepia.afx"},
            {scene, "Effects\\Eclat.afx"},        {scene, "Effects\\Tourbillon.afx"},
            {scene, "Effects\\Explosion.afx"},    {scene, "Effects\\Onde.afx"}};
}

}  // namespace qx
