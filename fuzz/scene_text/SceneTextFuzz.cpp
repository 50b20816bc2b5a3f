// Scene texts from arbitrary bytes: the whole loader (entities, envelopes, fog, filters,
// links and their order), a few updates of the scene, and the duration scan.
#include "qx4d/core/FileManager.h"
#include "qx4d/core/TextReader.h"
#include "qx4d/core/scene/Scene.h"

#include <cstdint>
#include <cstring>
#include <memory>

namespace {

bool Open(qx4d::TextReader& reader, const uint8_t* data, size_t size)
{
    auto bytes = std::make_unique<uint8_t[]>(size > 0 ? size : 1);
    if (size > 0) std::memcpy(bytes.get(), data, size);
    return reader.SetBuffer(std::move(bytes), size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // Object files named by the text are looked for and not found.
    static qx4d::FileManager files;
    qx4d::TextReader reader;
    if (!Open(reader, data, size)) return 0;
    qx4d::Scene scene;
    scene.MakeCurrent();
    scene.Read(reader);
    for (const float time : {0.0f, 0.5f, 3.0f}) scene.Update(time, 0.5f);
    qx4d::TextReader again;
    if (Open(again, data, size)) qx4d::ScanDuration(again);
    return 0;
}
