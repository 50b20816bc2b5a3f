#pragma once
// An XML description file (emitters, materials) parsed by Expat into an element tree.
#include "qx4d/core/XmlNode.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace qx4d {

class XmlDocument {
public:
    XmlDocument() = default;
    ~XmlDocument() = default;
    XmlDocument(const XmlDocument&) = delete;
    XmlDocument& operator=(const XmlDocument&) = delete;

    /// Reads the file through the `FileManager` and parses it.
    bool Load(std::u16string_view path);
    /// Keeps the bytes and parses them in one call that isn't final, so a document that
    /// simply stops early stands as far as it was read. False for a null buffer, a
    /// negative size or malformed XML.
    bool Parse(std::unique_ptr<uint8_t[]> bytes, int64_t size);

    /// The element under construction when parsing stopped: the root element after a
    /// whole document, an inner element after one that stops early; null before any
    /// element.
    XmlNode* GetRoot() const { return current; }

private:
    // Expat's element handlers, which grow the tree.
    friend class XmlTreeBuilder;

    std::unique_ptr<uint8_t[]> fileData;
    int64_t fileSize = 0;
    // Owns the whole tree, whatever element `current` ended at.
    std::unique_ptr<XmlNode> root;
    XmlNode* current = nullptr;
};

}  // namespace qx4d
