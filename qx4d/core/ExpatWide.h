#pragma once
// The UTF-16 build of Expat, loaded privately. Its functions carry the same names as the
// UTF-8 build's, which the fonts layer under the 2D drawing parses its configuration with;
// linked like any library, the first one loaded would serve both, and the fonts layer would
// be handed UTF-16 text. Loaded on its own and reached through these pointers, it serves
// only the engine's XML files.
#include <expat.h>

namespace qx4d {

struct ExpatWide {
    decltype(&XML_ParserCreate) parserCreate = nullptr;
    decltype(&XML_SetElementHandler) setElementHandler = nullptr;
    decltype(&XML_SetUserData) setUserData = nullptr;
    decltype(&XML_Parse) parse = nullptr;
    decltype(&XML_ParserFree) parserFree = nullptr;
};

/// The functions, resolved once; null when the library can't be loaded, and then no XML
/// file can be read.
const ExpatWide* LoadExpatWide();

}  // namespace qx4d
