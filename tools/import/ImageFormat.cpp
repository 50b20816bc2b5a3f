#include "tools/import/ImageFormat.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace qx4d::tools {

namespace {

bool StartsWith(std::span<const uint8_t> bytes, const char* signature, size_t length)
{
    return bytes.size() >= length && std::memcmp(bytes.data(), signature, length) == 0;
}

}  // namespace

std::string EngineImageFormat(std::span<const uint8_t> bytes, const std::string& declared)
{
    if (StartsWith(bytes, "\x89PNG\r\n\x1a\n", 8)) return "png";
    if (StartsWith(bytes, "\xff\xd8\xff", 3)) return "jpg";
    if (StartsWith(bytes, "BM", 2)) return "bmp";
    if (StartsWith(bytes, "DDS ", 4)) return "dds";
    // A TGA header is 18 bytes, with an image type of 1, 2, 3, 9, 10 or 11.
    if ((declared == "tga" || declared == "x-tga" || declared == "x-targa") && bytes.size() >= 18) {
        const uint8_t type = bytes[2];
        if (type == 1 || type == 2 || type == 3 || type == 9 || type == 10 || type == 11) return "tga";
    }
    return {};
}

std::string DeclaredFormat(const std::string& nameOrMime)
{
    const size_t slash = nameOrMime.find_last_of("/\\");
    std::string tail = nameOrMime;
    if (nameOrMime.rfind("image/", 0) == 0)
        tail = nameOrMime.substr(6);
    else if (const size_t dot = nameOrMime.rfind('.');
             dot != std::string::npos && (slash == std::string::npos || dot > slash))
        tail = nameOrMime.substr(dot + 1);
    else
        return {};
    std::transform(tail.begin(), tail.end(), tail.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return tail == "jpeg" ? "jpg" : tail;
}

}  // namespace qx4d::tools
