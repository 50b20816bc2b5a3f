#pragma once
// Filter registration data, in the form of the DirectShow set-up records: a filter's
// class, name and merit, its pins, and the media types each pin takes. Registration
// writes them where hosts look for filters; the GStreamer plugin builds its pad
// templates from them, so that the formats an element lists are those its filter takes.
#include "platform/media/MediaType.h"

#include <span>

namespace qx::media {

struct AMOVIESETUP_MEDIATYPE {
    const GUID* clsMajorType;
    const GUID* clsMinorType;
};

struct AMOVIESETUP_PIN {
    const char16_t* strName;
    bool bRendered;
    bool bOutput;
    bool bZero;
    bool bMany;
    const CLSID* clsConnectsToFilter;
    const char16_t* strConnectsToPin;
    UINT nMediaTypes;
    const AMOVIESETUP_MEDIATYPE* lpMediaType;

    std::span<const AMOVIESETUP_MEDIATYPE> MediaTypes() const { return {lpMediaType, nMediaTypes}; }
};

struct AMOVIESETUP_FILTER {
    const CLSID* clsID;
    const char16_t* strName;
    DWORD dwMerit;
    UINT nPins;
    const AMOVIESETUP_PIN* lpPin;

    std::span<const AMOVIESETUP_PIN> Pins() const { return {lpPin, nPins}; }
};

}  // namespace qx::media
