#include "qx4d/core/ExpatWide.h"

#include <dlfcn.h>

namespace qx4d {

namespace {

template <typename Function>
bool Resolve(void* library, const char* name, Function& out)
{
    out = reinterpret_cast<Function>(dlsym(library, name));
    return out != nullptr;
}

ExpatWide* Load()
{
    // Local: its names stay out of the global scope that other libraries resolve through.
    void* library = dlopen("libexpatw.so.1", RTLD_NOW | RTLD_LOCAL);
    static ExpatWide functions;
    if (!library || !Resolve(library, "XML_ParserCreate", functions.parserCreate) ||
        !Resolve(library, "XML_SetElementHandler", functions.setElementHandler) ||
        !Resolve(library, "XML_SetUserData", functions.setUserData) ||
        !Resolve(library, "XML_Parse", functions.parse) || !Resolve(library, "XML_ParserFree", functions.parserFree))
        return nullptr;
    return &functions;  // the library stays loaded for the life of the process
}

}  // namespace

const ExpatWide* LoadExpatWide()
{
    static const ExpatWide* const functions = Load();
    return functions;
}

}  // namespace qx4d
