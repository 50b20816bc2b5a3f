#pragma once
// CFlashAnimation (coclass FlashAnimation): the first frame of a vector animation, for
// an editor's thumbnails. It holds no state: each call loads the movie into a renderer
// of its own and lets it go.
#include "platform/com/Bstr.h"
#include "platform/com/Unknown.h"

namespace qx {

struct IFlashAnimation : IUnknown {
    static constexpr IID iid = guid("{7A5132A3-1E94-4D6C-ACF7-5B0BB9516E8F}");
    /// Draws the first frame of the movie `path` (relative to the global data path) into
    /// `pFrame`, `nWidth` by `nHeight` words, leaving the samples where the movie shows
    /// its background as the caller put them. S_OK; E_FAIL when the file cannot be loaded.
    virtual HRESULT GetFrame(BSTR path, LONG nWidth, LONG nHeight, BYTE* pFrame) = 0;
};

class CFlashAnimation final : public com::ComObject<IFlashAnimation> {
public:
    static constexpr CLSID clsid = guid("{30CB0B50-3F96-4414-8226-9DFD3219B2CC}");

    /// A new object with one reference, which the caller owns.
    static com::ComPtr<CFlashAnimation> Create();

    HRESULT GetFrame(BSTR path, LONG nWidth, LONG nHeight, BYTE* pFrame) override;

private:
    CFlashAnimation() = default;
    ~CFlashAnimation() override = default;
};

}  // namespace qx
