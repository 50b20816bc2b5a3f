// Curve elements of an emitter file: every child of the document's root is read as a
// curve, once plain and once as a repeating curve.
#include "fuzz/envelope_common/EnvelopeProbe.h"
#include "qx4d/core/XmlDocument.h"

#include <cstdint>
#include <cstring>
#include <memory>

namespace {

struct Plain {
    float subdivisionScaleRepeats = 0.0f;
};
struct Repeating {
    float subdivisionScaleRepeats = 1.0f;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    auto bytes = std::make_unique<uint8_t[]>(size > 0 ? size : 1);
    if (size > 0) {
        std::memcpy(bytes.get(), data, size);
    }
    qx4d::XmlDocument document;
    document.Parse(std::move(bytes), int64_t(size));
    const qx4d::XmlNode* root = document.GetRoot();
    if (root == nullptr) {
        return 0;
    }
    for (const auto& curve : root->children) {
        qx4d::Envelope plain;
        plain.LoadElement(Plain{}, *curve, 0.0f);
        qx4d::fuzz::ProbeEnvelope(plain);
        qx4d::Envelope repeating;
        repeating.LoadElement(Repeating{}, *curve, 3.0f);
        qx4d::fuzz::ProbeEnvelope(repeating);
    }
    return 0;
}
