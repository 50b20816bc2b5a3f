#include "filters/Overlay.h"

#include "platform/pixel/FrameMemory.h"

namespace qx {

com::ComPtr<CQXOverlay> CQXOverlay::Create() { return com::ComPtr<CQXOverlay>(new CQXOverlay()); }

// One input required, one at most.
CQXOverlay::CQXOverlay() : CDXBaseNTo1(1, 1, 0) {}

HRESULT CQXOverlay::OnSetup(DWORD)
{
    const transform::Bounds bounds = InputSurface(0)->GetBounds();
    width = bounds.width();
    height = bounds.height();
    return S_OK;
}

HRESULT CQXOverlay::WorkProc(const transform::CDXTWorkInfoNTo1& workInfo, bool*)
{
    std::unique_ptr<transform::SurfaceLock> input;
    std::unique_ptr<transform::SurfaceLock> output;
    HRESULT hr = InputSurface(0)->LockSurface(&workInfo.DoBnds, m_ulLockTimeOut, transform::DXLOCKF_READ, input);
    if (SUCCEEDED(hr)) {
        hr = OutputSurface()->LockSurface(&workInfo.OutputBnds, m_ulLockTimeOut, transform::DXLOCKF_READWRITE, output);
    }
    if (FAILED(hr)) return hr;
    const LONG w = workInfo.DoBnds.width();
    const LONG h = workInfo.DoBnds.height();
    pixel::FrameMemory frame = pixel::allocateFrameMemory(size_t(w) * size_t(h));
    if (!frame) return E_OUTOFMEMORY;
    input->UnpackRect({frame.get(), false, {0, 0, w, h}, 0});
    // Nothing is drawn over the frame, so the result is the unpacked input as it stands:
    // the overlay passes its input through, and no second buffer or drawing surface is
    // made for a picture that never comes.
    output->PackRect({frame.get(), false, {0, 0, w, h}, 0});
    return S_OK;
}

}  // namespace qx
