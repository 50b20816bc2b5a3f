#include "filters/3DTransform.h"

#include "platform/com/Property.h"
#include "platform/pixel/FrameMemory.h"
#include "wrap3d/4DTransform.h"
#include "wrap3d/SceneBridge.h"

#include <algorithm>
#include <cstring>

namespace qx {

namespace {

using transform::DXPACKEDRECTDESC;
using transform::SurfaceLock;

DXPACKEDRECTDESC packedRect(uint32_t* samples, LONG width, LONG height)
{
    return {samples, false, {0, 0, width, height}, 0};
}

}  // namespace

com::ComPtr<CQX3DTransform> CQX3DTransform::Create() { return com::ComPtr<CQX3DTransform>(new CQX3DTransform()); }

// Two inputs required, two at most.
CQX3DTransform::CQX3DTransform() : CDXBaseNTo1(2, 2, 0) {}

CQX3DTransform::~CQX3DTransform() = default;

HRESULT CQX3DTransform::get_Quality(LONG* pVal) { return com::getProperty(quality, pVal); }

HRESULT CQX3DTransform::put_Quality(LONG newVal)
{
    quality = newVal;
    return S_OK;
}

HRESULT CQX3DTransform::get_Source(BSTR* pVal) { return com::newBstr(std::u16string_view(source.data()), pVal); }

HRESULT CQX3DTransform::put_Source(BSTR newVal)
{
    const std::u16string_view text = com::bstrView(newVal);
    // The field is a terminated text: what follows an embedded terminator is not kept.
    const size_t kept = std::min({text.size(), text.find(u'\0'), source.size() - 1});
    source.fill(u'\0');
    std::copy_n(text.begin(), kept, source.begin());
    return S_OK;
}

HRESULT CQX3DTransform::get_AspectRatio(float* pVal) { return com::getProperty(aspectRatio, pVal); }

HRESULT CQX3DTransform::put_AspectRatio(float newVal)
{
    aspectRatio = newVal;
    return S_OK;
}

// Set-up always succeeds: a transform that gets no client cuts hard at the middle.
HRESULT CQX3DTransform::OnSetup(DWORD)
{
    const transform::Bounds bounds = InputSurface(0)->GetBounds();
    const LONG w = bounds.width();
    const LONG h = bounds.height();
    client.reset();
    // A frame without area has nothing for a scene to fill (and no ratio to give it).
    if (w <= 0 || h <= 0) return S_OK;
    client = CreateClient(kClientId, w, h);
    if (!client) return S_OK;
    client->SetPath(std::u16string_view(source.data()));
    const double aspect = aspectRatio != 0.0f ? double(aspectRatio) : double(w) / double(h);
    client->SetAspectRatio(float(aspect));
    // No rate and no duration: the client's step stays 0, and progress alone sets the
    // scene's time.
    if (client->Init() == 0) client.reset();
    return S_OK;
}

HRESULT CQX3DTransform::WorkProc(const transform::CDXTWorkInfoNTo1& workInfo, bool*)
{
    std::unique_ptr<SurfaceLock> firstLock;
    std::unique_ptr<SurfaceLock> secondLock;
    std::unique_ptr<SurfaceLock> outputLock;
    HRESULT hr = InputSurface(0)->LockSurface(&workInfo.DoBnds, m_ulLockTimeOut, transform::DXLOCKF_READ, firstLock);
    if (SUCCEEDED(hr))
        hr = InputSurface(1)->LockSurface(&workInfo.DoBnds, m_ulLockTimeOut, transform::DXLOCKF_READ, secondLock);
    if (SUCCEEDED(hr)) {
        hr = OutputSurface()->LockSurface(&workInfo.OutputBnds, m_ulLockTimeOut, transform::DXLOCKF_READWRITE,
                                          outputLock);
    }
    if (FAILED(hr)) return hr;

    const LONG w = workInfo.DoBnds.width();
    const LONG h = workInfo.DoBnds.height();
    const size_t samples = size_t(w) * size_t(h);
    pixel::FrameMemory first = pixel::allocateFrameMemory(samples);
    pixel::FrameMemory second = pixel::allocateFrameMemory(samples);
    pixel::FrameMemory result = pixel::allocateFrameMemory(samples);
    // Only the result was looked at where this transform comes from; an input buffer that
    // cannot be had is refused the same way rather than written through.
    if (!first || !second || !result) return E_OUTOFMEMORY;
    firstLock->UnpackRect(packedRect(first.get(), w, h));
    secondLock->UnpackRect(packedRect(second.get(), w, h));

    const float progress = this->progress();
    // The hard cut, also at exactly 0.5 the first input. It is written first in any case:
    // a frame that the scene does not draw (a lost device) then shows the cut rather than
    // memory nobody wrote.
    std::memcpy(result.get(), progress > 0.5f ? second.get() : first.get(), samples * sizeof(uint32_t));
    LONG clientWidth = 0;
    LONG clientHeight = 0;
    if (client) client->GetSize(&clientWidth, &clientHeight);
    // The client renders frames of the set-up's size: a smaller part of the inputs (a
    // clip rectangle) would have it read and write past these buffers, so it is cut.
    if (client && clientWidth == w && clientHeight == h)
        client->ProcessTransition(first.get(), second.get(), result.get(), progress);
    first.reset();
    second.reset();
    outputLock->PackRect(packedRect(result.get(), w, h));
    return S_OK;
}

}  // namespace qx
