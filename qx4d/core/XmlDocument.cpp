#include "qx4d/core/XmlDocument.h"

#include "qx4d/core/ExpatWide.h"
#include "qx4d/core/FileManager.h"

#include <limits>

static_assert(sizeof(XML_Char) == sizeof(char16_t), "Expat must be the UTF-16 build (XML_UNICODE without wchar_t)");

namespace qx4d {

namespace {

String fromExpat(const XML_Char* text)
{
    String result;
    if (text) {
        for (; *text; ++text) result.push_back(static_cast<char16_t>(*text));
    }
    return result;
}

}  // namespace

// Expat's element handlers: the start of an element hangs a new node under the current
// one and makes it current; the end moves back to the parent, except at the root.
class XmlTreeBuilder {
public:
    static void OnStart(void* userData, const XML_Char* name, const XML_Char** attributes)
    {
        auto& document = *static_cast<XmlDocument*>(userData);
        auto node = std::make_unique<XmlNode>();
        node->name = fromExpat(name);
        for (const XML_Char** pair = attributes; pair && pair[0]; pair += 2) {
            node->attributeNames.push_back(fromExpat(pair[0]));
            node->attributeValues.push_back(fromExpat(pair[1]));
        }
        XmlNode* added = node.get();
        if (!document.current) {
            document.root = std::move(node);
        } else {
            node->parent = document.current;
            document.current->children.push_back(std::move(node));
        }
        document.current = added;
    }

    static void OnEnd(void* userData, const XML_Char* /*name*/)
    {
        auto& document = *static_cast<XmlDocument*>(userData);
        if (document.current && document.current->parent) document.current = document.current->parent;
    }
};

bool XmlDocument::Load(std::u16string_view path)
{
    FileManager* files = FileManager::Instance();
    if (!files) return false;
    size_t size = 0;
    std::unique_ptr<uint8_t[]> bytes = files->Load(path, size);
    if (!bytes) return false;
    return Parse(std::move(bytes), int64_t(size));
}

bool XmlDocument::Parse(std::unique_ptr<uint8_t[]> bytes, int64_t size)
{
    // Expat takes an int length; a larger buffer is refused rather than cut.
    if (!bytes || size < 0 || size > std::numeric_limits<int>::max()) return false;
    fileData = std::move(bytes);
    fileSize = size;
    const ExpatWide* expat = LoadExpatWide();
    XML_Parser parser = expat ? expat->parserCreate(nullptr) : nullptr;
    if (!parser) return false;
    expat->setElementHandler(parser, XmlTreeBuilder::OnStart, XmlTreeBuilder::OnEnd);
    expat->setUserData(parser, this);
    root.reset();
    current = nullptr;
    // Not final: a document that stops early is no error, what was read stands.
    const XML_Status status = expat->parse(parser, reinterpret_cast<const char*>(fileData.get()), int(fileSize), 0);
    expat->parserFree(parser);
    return status == XML_STATUS_OK;
}

}  // namespace qx4d
