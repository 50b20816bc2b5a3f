// A .mat file, a vertex declaration and the generator's inputs, all from arbitrary bytes:
// the material is read, its effect text written and its draw constants computed.
// Input: one byte of record count, that many 8-byte declaration records, a fog mode
// byte, 4 bytes of flags, one byte of key count and 4 bytes a key, one byte of bones,
// then the XML text.
#include "fuzz/FuzzCheck.h"
#include "qx4d/content/Material.h"
#include "qx4d/content/ShaderConstants.h"
#include "qx4d/content/ShaderWriter.h"
#include "qx4d/core/XmlDocument.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>

namespace {

class ByteCursor {
public:
    explicit ByteCursor(std::span<const uint8_t> input) : bytes(input) {}
    template <typename T>
    T Take()
    {
        T value{};
        const size_t count = std::min(sizeof(T), bytes.size());
        std::memcpy(&value, bytes.data(), count);
        bytes = bytes.subspan(count);
        return value;
    }
    std::span<const uint8_t> Rest() const { return bytes; }

private:
    std::span<const uint8_t> bytes;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qx4d;
    ByteCursor cursor(std::span<const uint8_t>(data, size));
    std::vector<qx::gpu::D3DVERTEXELEMENT9> declaration(cursor.Take<uint8_t>() % 32);
    for (auto& record : declaration) record = cursor.Take<qx::gpu::D3DVERTEXELEMENT9>();
    const int32_t fogType = cursor.Take<uint8_t>() % 5;
    Material material;
    material.flags = cursor.Take<uint32_t>();
    material.shaderKeys.resize(cursor.Take<uint8_t>() % 16);
    for (uint32_t& key : material.shaderKeys) key = cursor.Take<uint32_t>();
    material.bones = cursor.Take<uint8_t>();

    const std::span<const uint8_t> xml = cursor.Rest();
    auto bytes = std::make_unique<uint8_t[]>(xml.size());
    if (!xml.empty()) std::memcpy(bytes.get(), xml.data(), xml.size());
    XmlDocument document;
    document.Parse(std::move(bytes), int64_t(xml.size()));
    material.Read(document);
    material.reflective = material.alphaRef & 1;

    const std::string text = ShaderWriter(material, declaration, fogType).Write(std::string());
    ShadingScene scene;
    scene.lights.resize(material.shaderKeys.size() / 2);
    const ShaderConstantRuns runs = ComputeShaderConstants(material, scene, ShadingCamera(), Matrix3x4{});
    // Constants go to the device in registers of four floats.
    QX_FUZZ_CHECK(!text.empty() && runs.vertex.size() % 4 == 0);
    return 0;
}
