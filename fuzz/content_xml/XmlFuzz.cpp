// Feeds arbitrary bytes to the XML document and walks the whole tree it builds, parents
// and children, so that a half-built tree can't hold a dangling link.
#include "fuzz/FuzzCheck.h"
#include "qx4d/core/XmlDocument.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qx4d;
    auto bytes = std::make_unique<uint8_t[]>(size);
    if (size > 0) std::memcpy(bytes.get(), data, size);
    XmlDocument document;
    document.Parse(std::move(bytes), int64_t(size));
    // The document's element is an inner one when the text stops early: its parents lead
    // to the top of the tree.
    const XmlNode* current = document.GetRoot();
    if (!current) return 0;
    const XmlNode* top = current;
    while (top->parent) top = top->parent;
    // Depth first with a stack of its own: a deep document must not exhaust the fuzzer's.
    std::vector<const XmlNode*> pending{top};
    bool currentReached = false;
    while (!pending.empty()) {
        const XmlNode* node = pending.back();
        pending.pop_back();
        currentReached = currentReached || node == current;
        QX_FUZZ_CHECK(node->attributeNames.size() == node->attributeValues.size());
        for (const auto& child : node->children) {
            QX_FUZZ_CHECK(child->parent == node);
            pending.push_back(child.get());
        }
    }
    QX_FUZZ_CHECK(currentReached);
    return 0;
}
