#include "qx4d/core/device/Effect.h"

#include "platform/os/CodePage.h"
#include "qx4d/core/FileManager.h"

namespace qx4d {

namespace {

std::optional<std::string> LoadEffectPath(const String& path)
{
    size_t size = 0;
    FileManager* files = FileManager::Instance();
    const std::unique_ptr<uint8_t[]> data = files ? files->Load(path, size) : nullptr;
    if (!data) return std::nullopt;
    return std::string(reinterpret_cast<const char*>(data.get()), size);
}

}  // namespace

std::optional<std::string> LoadEffectFile(std::string_view fileName)
{
    return LoadEffectPath(String(u"EFFECTS:" + qx::os::toWide(qx::os::CodePage::Ansi, fileName)));
}

bool Effect::Restore()
{
    if (effect) return true;
    GraphicsDevice* graphics = GraphicsDevice::Current();
    if (!graphics || !graphics->GetDevice()) return false;
    const std::optional<std::string> text = source ? source : LoadEffectPath(String(u"EFFECTS:" + name));
    if (!text) return false;
    const gpu::IncludeResolver includes = [](const std::string& include) { return LoadEffectFile(include); };
    return qx::SUCCEEDED(gpu::D3DXCreateEffect(graphics->GetDevice(), *text, includes, &effect));
}

}  // namespace qx4d
