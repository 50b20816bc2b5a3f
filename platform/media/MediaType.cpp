#include "platform/media/MediaType.h"

#include <algorithm>
#include <cstring>

namespace qx::media {

std::optional<VIDEOINFOHEADER> CMediaType::VideoInfo() const
{
    if (formattype != FORMAT_VideoInfo || format_.size() < sizeof(VIDEOINFOHEADER)) return std::nullopt;
    VIDEOINFOHEADER info;
    std::memcpy(&info, format_.data(), sizeof info);
    return info;
}

void CMediaType::SetVideoInfo(const VIDEOINFOHEADER& info)
{
    formattype = FORMAT_VideoInfo;
    format_.resize(sizeof info);
    std::memcpy(format_.data(), &info, sizeof info);
}

bool operator==(const CMediaType& a, const CMediaType& b)
{
    return a.majortype == b.majortype && a.subtype == b.subtype && a.formattype == b.formattype &&
           std::ranges::equal(a.format_, b.format_);
}

}  // namespace qx::media
