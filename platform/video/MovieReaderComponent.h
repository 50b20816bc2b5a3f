#pragma once
// The movie reader component that overlays of movies reach by class identifier: a file
// source that opens any video FFmpeg reads and gives the frame shown at a time. On
// Windows it was a separate component; here the video layer provides it, and a host
// registers it (RegisterMovieReader) so that creation by identifier finds it. Where it
// is not registered, creation fails as on a system without the component.
#include "platform/com/Unknown.h"

namespace qx::video {

inline constexpr CLSID CLSID_MovieReader = guid("{8EBBAF1B-D8F1-42AC-933F-F989393CB02E}");

/// The source filter's file interface; only Load is used. The media type is ignored.
struct IFileSourceFilter : IUnknown {
    static constexpr IID iid = guid("{56A868A6-0AD4-11CE-B03A-0020AF0BA770}");
    virtual HRESULT Load(const char16_t* pszFileName, const void* pmt) = 0;
};

/// The reader's own interface, with the four operations its users call. (On Windows
/// five other members came before them in its table; nothing calls them.)
struct IMovieReader : IUnknown {
    static constexpr IID iid = guid("{9C133AD4-1180-433B-9F98-2EFC7D378885}");
    virtual HRESULT GetWidth(int* width) = 0;
    virtual HRESULT GetHeight(int* height) = 0;
    /// The frame shown at `seconds`: 32-bit BGRA, a row every width times 4 bytes, owned
    /// by the reader until the next call.
    virtual HRESULT GetFrame(float seconds, BYTE** pixels) = 0;
    virtual HRESULT GetDuration(float* seconds) = 0;
};

/// Makes CLSID_MovieReader creatable in this process.
HRESULT RegisterMovieReader();
/// Undoes RegisterMovieReader.
HRESULT RevokeMovieReader();

}  // namespace qx::video
