#pragma once
// Media types: what flows on a connection, named by major type, subtype and format type
// GUIDs, with a format block. Video formats are a VIDEOINFOHEADER (88 bytes) holding the
// BITMAPINFOHEADER of the frames. Byte layouts and GUIDs are DirectShow's, since hosts
// and graphs exchange them as they are.
#include "platform/com/Guid.h"
#include "platform/media/Types.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qx::media {

inline constexpr GUID GUID_NULL{};
inline constexpr GUID MEDIATYPE_Video = guid("{73646976-0000-0010-8000-00AA00389B71}");
inline constexpr GUID MEDIASUBTYPE_RGB32 = guid("{E436EB7E-524F-11CE-9F53-0020AF0BA770}");
inline constexpr GUID MEDIASUBTYPE_ARGB32 = guid("{773C9AC0-3274-11D0-B724-00AA006C1A01}");
inline constexpr GUID MEDIASUBTYPE_YV12 = guid("{32315659-0000-0010-8000-00AA00389B71}");
inline constexpr GUID FORMAT_VideoInfo = guid("{05589F80-C356-11CE-BF01-00AA0055595A}");

struct BITMAPINFOHEADER {
    DWORD biSize = 40;
    LONG biWidth = 0;
    LONG biHeight = 0;  ///< Positive: rows bottom-up in memory. Negative: top-down.
    uint16_t biPlanes = 1;
    uint16_t biBitCount = 0;
    DWORD biCompression = 0;
    DWORD biSizeImage = 0;
    LONG biXPelsPerMeter = 0;
    LONG biYPelsPerMeter = 0;
    DWORD biClrUsed = 0;
    DWORD biClrImportant = 0;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40);

struct VIDEOINFOHEADER {
    RECT rcSource;
    RECT rcTarget;
    DWORD dwBitRate = 0;
    DWORD dwBitErrorRate = 0;
    REFERENCE_TIME AvgTimePerFrame = 0;
    BITMAPINFOHEADER bmiHeader;
};
static_assert(sizeof(VIDEOINFOHEADER) == 88 && offsetof(VIDEOINFOHEADER, bmiHeader) == 48);

class CMediaType {
public:
    GUID majortype{};
    GUID subtype{};
    bool bFixedSizeSamples = true;
    bool bTemporalCompression = false;
    ULONG lSampleSize = 1;
    GUID formattype{};

    /// The format block as stored; empty when there is none.
    std::span<const uint8_t> Format() const { return format_; }
    ULONG FormatLength() const { return ULONG(format_.size()); }
    /// Replaces the format block by a copy of `bytes`.
    void SetFormat(std::span<const uint8_t> bytes) { format_.assign(bytes.begin(), bytes.end()); }
    /// A zeroed format block of `length` bytes.
    void AllocFormatBuffer(size_t length) { format_.assign(length, 0); }

    /// The VIDEOINFOHEADER at the start of the format block, when the format type is
    /// FORMAT_VideoInfo and the block holds one whole; nothing otherwise.
    std::optional<VIDEOINFOHEADER> VideoInfo() const;
    /// Makes the format exactly `info`: the video-info format type and an 88-byte block.
    void SetVideoInfo(const VIDEOINFOHEADER& info);

    /// Same major type, subtype, format type and format bytes, as types are compared
    /// when a connection is checked.
    friend bool operator==(const CMediaType& a, const CMediaType& b);

private:
    std::vector<uint8_t> format_;
};

}  // namespace qx::media
