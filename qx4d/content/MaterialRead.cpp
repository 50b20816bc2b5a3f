// Reading a .mat file: the attributes of its "Surface" element and its "Texture"
// children. Unknown names and words are dropped without a word.
#include "qx4d/content/Material.h"

#include "qx4d/core/XmlDocument.h"

#include <string_view>

namespace qx4d {

namespace {

struct WordCode {
    std::u16string_view word;
    int code;
};

constexpr WordCode kBlendWords[] = {
    {u"Zero", 1},        {u"One", 2},       {u"SrcColor", 3},     {u"InvSrcColor", 4}, {u"SrcAlpha", 5},
    {u"InvSrcAlpha", 6}, {u"DestAlpha", 7}, {u"InvDestAlpha", 8}, {u"DestColor", 9},   {u"InvDestColor", 10},
};
constexpr WordCode kCullWords[] = {{u"None", 1}, {u"Front", 2}, {u"Back", 3}};
constexpr WordCode kSemanticWords[] = {
    {u"BaseColor", kSemanticBaseColor}, {u"Normal", kSemanticNormal},           {u"Height", kSemanticHeight},
    {u"Alpha", kSemanticAlpha},         {u"Specularity", kSemanticSpecularity}, {u"Reflection", kSemanticReflection},
};

/// The code of `word` in `table`, or `fallback` when it has none. Words compare exactly.
template <size_t N>
int CodeOf(const WordCode (&table)[N], std::u16string_view word, int fallback)
{
    for (const WordCode& entry : table) {
        if (entry.word == word) return entry.code;
    }
    return fallback;
}

/// The first element named "Surface" in document order, the root included. A document
/// that stops early hands out the element it stopped in, so the walk starts from the top
/// of the tree. It keeps its own stack: a deep document can't exhaust the call stack.
const XmlNode* FindSurface(const XmlNode* current)
{
    const XmlNode* root = current;
    while (root && root->parent) root = root->parent;
    std::vector<const XmlNode*> pending{root};
    while (!pending.empty()) {
        const XmlNode* node = pending.back();
        pending.pop_back();
        if (!node) continue;
        if (node->name == u"Surface") return node;
        for (auto child = node->children.rbegin(); child != node->children.rend(); ++child)
            pending.push_back(child->get());
    }
    return nullptr;
}

}  // namespace

bool Material::Load(const String& fileName)
{
    XmlDocument document;
    if (!document.Load(String(u"MATERIALS:" + fileName))) return false;
    Read(document);
    return true;
}

// Attributes are visited from the last to the first, so of a name given twice the first
// in the file wins. The states of blending, alpha test, depth and fog are accepted and
// dropped on purpose: the object file's render-state word sets them. The material is not
// reset first: the object file may have given its surface values before naming the file.
void Material::Read(const XmlDocument& document)
{
    const XmlNode* surface = FindSurface(document.GetRoot());
    if (!surface) return;
    const size_t count = std::min(surface->attributeNames.size(), surface->attributeValues.size());
    for (size_t i = count; i-- > 0;) ReadSurfaceAttribute(surface->attributeNames[i], surface->attributeValues[i]);
    for (const std::unique_ptr<XmlNode>& child : surface->children) {
        if (child->name == u"Texture") ReadTexture(*child);
    }
}

void Material::ReadSurfaceAttribute(const String& attribute, const String& value)
{
    if (attribute == u"Name")
        name = value;
    else if (attribute == u"VSProfile")
        vsProfile = value;
    else if (attribute == u"PSProfile")
        psProfile = value;
    else if (attribute == u"AlphaRef")
        alphaRef = uint8_t(value.ToInt());
    else if (attribute == u"SrcBlend")
        srcBlend = CodeOf(kBlendWords, value, srcBlend);
    else if (attribute == u"DestBlend")
        destBlend = CodeOf(kBlendWords, value, destBlend);
    else if (attribute == u"CullMode")
        cullMode = CodeOf(kCullWords, value, cullMode);
}

void Material::ReadTexture(const XmlNode& element)
{
    MaterialTexture texture;
    const size_t count = std::min(element.attributeNames.size(), element.attributeValues.size());
    for (size_t i = 0; i < count; ++i) {
        const String& attribute = element.attributeNames[i];
        const String& value = element.attributeValues[i];
        if (attribute == u"SemanticName")
            texture.semanticName = uint8_t(CodeOf(kSemanticWords, value, kSemanticNone));
        else if (attribute == u"SemanticIndex")
            texture.semanticIndex = uint8_t(value.ToInt());
        else if (attribute == u"SamplerSlot")
            texture.samplerSlot = uint8_t(value.ToInt());
        else if (attribute == u"TexCoordSlot")
            texture.texCoordSlot = uint8_t(value.ToInt());
        else if (attribute == u"StartComponent")
            texture.startComponent = uint8_t(value.ToInt());
        else if (attribute == u"ComponentCount")
            texture.componentCount = uint8_t(value.ToInt());
    }
    textures.push_back(texture);
}

}  // namespace qx4d
