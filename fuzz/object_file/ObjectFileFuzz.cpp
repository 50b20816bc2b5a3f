// Object files from arbitrary bytes: the item list, every mesh sub-chunk with its buffers
// on a small device (when one can be made), then the object's update with its bones and
// envelopes, and the MDD deformation at a few times.
#include "qx4d/content/IFFReader.h"
#include "qx4d/content/MeshItem.h"
#include "qx4d/content/Object.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"

#include <cstdint>
#include <cstring>
#include <memory>

namespace {

/// One device and renderer for the whole run: making them costs far more than an input.
struct Engine {
    Engine()
    {
        qx::gpu::D3DPRESENT_PARAMETERS parameters;
        parameters.BackBufferWidth = parameters.BackBufferHeight = 4;
        parameters.BackBufferFormat = qx::gpu::D3DFMT_A8R8G8B8;
        if (device.Create(parameters)) renderer = std::make_unique<qx4d::Renderer>();
    }
    qx4d::GraphicsDevice device;
    std::unique_ptr<qx4d::Renderer> renderer;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static Engine engine;
    auto bytes = std::make_unique<uint8_t[]>(size > 0 ? size : 1);
    if (size > 0) std::memcpy(bytes.get(), data, size);
    qx4d::IFFReader reader;
    if (!reader.SetBuffer(std::move(bytes), size)) return 0;
    qx4d::Object object;
    if (!qx4d::ReadObject(reader, u"fuzz", object)) return 0;
    for (const float time : {0.0f, 0.37f, 5.0f}) {
        object.Update(time);
        for (const auto& item : object.items)
            if (auto* mesh = dynamic_cast<qx4d::MeshItem*>(item.get())) mesh->mdd.Evaluate(time);
    }
    return 0;
}
