#include "platform/media/SourceSeeking.h"

namespace qx::media {

CSourceSeeking::CSourceSeeking(IUnknown& owner, std::recursive_mutex& lock, REFERENCE_TIME duration)
    : m_rtDuration(duration), m_rtStop(duration), m_pLock(lock), m_owner(owner)
{}

HRESULT CSourceSeeking::QueryInterface(const IID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    if (riid == IMediaSeeking::iid) {
        *ppv = static_cast<IMediaSeeking*>(this);
        AddRef();
        return S_OK;
    }
    return m_owner.QueryInterface(riid, ppv);
}

ULONG CSourceSeeking::AddRef() { return m_owner.AddRef(); }

ULONG CSourceSeeking::Release() { return m_owner.Release(); }

HRESULT CSourceSeeking::GetCapabilities(DWORD* pCapabilities)
{
    if (!pCapabilities) return E_POINTER;
    *pCapabilities = AM_SEEKING_CanSeekAbsolute | AM_SEEKING_CanSeekForwards | AM_SEEKING_CanSeekBackwards |
                     AM_SEEKING_CanGetStopPos | AM_SEEKING_CanGetDuration;
    return S_OK;
}

HRESULT CSourceSeeking::GetDuration(LONGLONG* pDuration)
{
    if (!pDuration) return E_POINTER;
    std::lock_guard lock(m_pLock);
    *pDuration = m_rtDuration;
    return S_OK;
}

HRESULT CSourceSeeking::GetStopPosition(LONGLONG* pStop)
{
    if (!pStop) return E_POINTER;
    std::lock_guard lock(m_pLock);
    *pStop = m_rtStop;
    return S_OK;
}

HRESULT CSourceSeeking::GetCurrentPosition(LONGLONG*) { return E_NOTIMPL; }

HRESULT CSourceSeeking::SetPositions(LONGLONG* pCurrent, DWORD CurrentFlags, LONGLONG* pStop, DWORD StopFlags)
{
    const DWORD stopBits = StopFlags & AM_SEEKING_PositioningBitsMask;
    const DWORD startBits = CurrentFlags & AM_SEEKING_PositioningBitsMask;
    if (StopFlags) {
        if (!pStop) return E_POINTER;
        if (stopBits != StopFlags) return E_INVALIDARG;
    }
    if (CurrentFlags) {
        if (!pCurrent) return E_POINTER;
        if (startBits != AM_SEEKING_AbsolutePositioning && startBits != AM_SEEKING_RelativePositioning) {
            return E_INVALIDARG;
        }
    }
    {
        std::lock_guard lock(m_pLock);
        if (startBits == AM_SEEKING_AbsolutePositioning) m_rtStart = *pCurrent;
        if (startBits == AM_SEEKING_RelativePositioning) m_rtStart += *pCurrent;
        if (stopBits == AM_SEEKING_AbsolutePositioning) m_rtStop = *pStop;
        if (stopBits == AM_SEEKING_IncrementalPositioning) m_rtStop = m_rtStart + *pStop;
        if (stopBits == AM_SEEKING_RelativePositioning) m_rtStop += *pStop;
    }
    HRESULT hr = S_OK;
    if (stopBits) hr = ChangeStop();
    if (startBits) hr = ChangeStart();
    return hr;
}

HRESULT CSourceSeeking::GetPositions(LONGLONG* pCurrent, LONGLONG* pStop)
{
    std::lock_guard lock(m_pLock);
    if (pCurrent) *pCurrent = m_rtStart;
    if (pStop) *pStop = m_rtStop;
    return S_OK;
}

HRESULT CSourceSeeking::SetRate(double dRate)
{
    if (dRate == 0.0) return E_INVALIDARG;
    {
        std::lock_guard lock(m_pLock);
        m_dRateSeeking = dRate;
    }
    return ChangeRate();
}

HRESULT CSourceSeeking::GetRate(double* pdRate)
{
    if (!pdRate) return E_POINTER;
    std::lock_guard lock(m_pLock);
    *pdRate = m_dRateSeeking;
    return S_OK;
}

}  // namespace qx::media
