#pragma once
// Walking the elements of an emitter file: child elements by exact name, attributes by
// name without regard to case, in the order the file gives them.
#include "qx4d/core/XmlNode.h"

#include <algorithm>

namespace qx4d {

/// The first child of `element` named exactly `name`; null when there is none.
inline const XmlNode* FirstChild(const XmlNode& element, const char16_t* name)
{
    for (const auto& child : element.children)
        if (child->name == name) return child.get();
    return nullptr;
}

/// True when the attribute name is `key`, whatever the case.
inline bool KeyIs(const String& attribute, const char16_t* key) { return attribute.EqualsNoCase(key) == 0; }

/// Calls `take(name, value)` for each attribute of `element` in file order.
template <typename Take>
void ForEachAttribute(const XmlNode& element, Take&& take)
{
    const size_t count = std::min(element.attributeNames.size(), element.attributeValues.size());
    for (size_t i = 0; i < count; ++i) take(element.attributeNames[i], element.attributeValues[i]);
}

}  // namespace qx4d
