// Envelope blocks of the scene notation, read the way a block reader reads its keys:
// each value through ReadFloatOrEnvelope, then the rest of its line dropped.
#include "fuzz/envelope_common/EnvelopeProbe.h"
#include "qx4d/content/ReadFloatOrEnvelope.h"
#include "qx4d/core/TextReader.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    auto bytes = std::make_unique<uint8_t[]>(size > 0 ? size : 1);
    if (size > 0) {
        std::memcpy(bytes.get(), data, size);
    }
    qx4d::TextReader reader;
    if (!reader.SetBuffer(std::move(bytes), size)) {
        return 0;
    }
    std::vector<std::unique_ptr<qx4d::Envelope>> envelopes;
    float field = 0.0f;
    constexpr int kMaxValues = 64;
    for (int i = 0; i < kMaxValues && !reader.IsAtEnd(); ++i) {
        qx4d::ReadFloatOrEnvelope(reader, field, envelopes);
        reader.SkipLine();
    }
    for (auto& envelope : envelopes) {
        qx4d::fuzz::ProbeEnvelope(*envelope);
    }
    return 0;
}
