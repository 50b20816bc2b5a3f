#pragma once
// One element of an XML description file: its name, its attributes in file order and its
// child elements in document order. Text, comments and processing instructions are not
// kept.
#include "qx4d/core/String.h"

#include <memory>
#include <vector>

namespace qx4d {

class XmlNode {
public:
    XmlNode() = default;
    /// Deletes the whole subtree, without recursion, so that deep documents can't
    /// exhaust the stack.
    ~XmlNode();
    XmlNode(const XmlNode&) = delete;
    XmlNode& operator=(const XmlNode&) = delete;

    String name;
    /// Attribute names and values, parallel: same index, same order as in the file.
    std::vector<String> attributeNames;
    std::vector<String> attributeValues;
    /// The enclosing element; null at the root.
    XmlNode* parent = nullptr;
    std::vector<std::unique_ptr<XmlNode>> children;
};

}  // namespace qx4d
