#include "filters/FlashAnimation.h"

#include "filters/SwfRenderer.h"

namespace qx {

com::ComPtr<CFlashAnimation> CFlashAnimation::Create() { return com::ComPtr<CFlashAnimation>(new CFlashAnimation()); }

HRESULT CFlashAnimation::GetFrame(BSTR path, LONG nWidth, LONG nHeight, BYTE* pFrame)
{
    // Beyond the interface's two codes: no memory to draw into, and a size that is no
    // frame, are refused before anything is loaded.
    if (!pFrame) return E_POINTER;
    if (nWidth <= 0 || nHeight <= 0) return E_INVALIDARG;
    CSwfRenderer renderer;
    const std::u16string_view file = path ? std::u16string_view(path, SysStringLen(path)) : std::u16string_view();
    if (!renderer.Load(file, nWidth, nHeight, 0)) return E_FAIL;
    // The first frame, with the movie's background keyed out.
    renderer.Draw(reinterpret_cast<uint32_t*>(pFrame), 0.0f, 1, 0.0f, 0.0f, 1.0f, 1.0f);
    return S_OK;
}

}  // namespace qx
