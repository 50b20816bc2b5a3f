// Feeds arbitrary bytes to the XML document and walks the tree it builds, parents and
// children, so that a half-built tree can't hold a dangling link.
#include "qx4d/core/XmlDocument.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qx4d;
    auto bytes = std::make_unique<uint8_t[]>(size);
    if (size > 0) std::memcpy(bytes.get(), data, size);
    XmlDocument document;
    document.Parse(std::move(bytes), int64_t(size));
    size_t attributes = 0;
    for (const XmlNode* node = document.GetRoot(); node; node = node->parent) {
        if (node->attributeNames.size() != node->attributeValues.size()) return 1;
        for (const auto& child : node->children) {
            if (child->parent != node) return 1;
            attributes += child->attributeNames.size();
        }
    }
    return attributes == size_t(-1) ? 1 : 0;
}
