#pragma once
// The seeking of a source stream: start, stop, duration and rate, which a stream that
// can play from any position offers through IMediaSeeking. The owner supplies the lock
// that guards the positions and learns of each change through ChangeStart, ChangeStop
// and ChangeRate, where it restarts its stream. References go to the owner: the object
// lives as long as the pin it is part of.
#include "platform/media/BaseFilter.h"

#include <mutex>

namespace qx::media {

class CSourceSeeking : public IMediaSeeking {
public:
    HRESULT QueryInterface(const IID& riid, void** ppv) override;
    ULONG AddRef() override;
    ULONG Release() override;

    /// Absolute seeking both ways, and the stop and duration told.
    HRESULT GetCapabilities(DWORD* pCapabilities) override;
    HRESULT GetDuration(LONGLONG* pDuration) override;
    HRESULT GetStopPosition(LONGLONG* pStop) override;
    /// E_NOTIMPL: the stream, not the seeking state, knows where it is.
    HRESULT GetCurrentPosition(LONGLONG* pCurrent) override;
    /// A start given absolutely or relatively, a stop absolutely, relatively or from the
    /// new start (incremental); ChangeStop then ChangeStart for what was given.
    HRESULT SetPositions(LONGLONG* pCurrent, DWORD CurrentFlags, LONGLONG* pStop, DWORD StopFlags) override;
    HRESULT GetPositions(LONGLONG* pCurrent, LONGLONG* pStop) override;
    /// Stores a rate other than 0 and calls ChangeRate; E_INVALIDARG for 0.
    HRESULT SetRate(double dRate) override;
    HRESULT GetRate(double* pdRate) override;

protected:
    /// `owner` answers the queries and counts the references; `lock` guards the positions.
    CSourceSeeking(IUnknown& owner, std::recursive_mutex& lock, REFERENCE_TIME duration);
    ~CSourceSeeking() = default;

    virtual HRESULT ChangeStart() = 0;
    virtual HRESULT ChangeStop() = 0;
    virtual HRESULT ChangeRate() = 0;

    REFERENCE_TIME m_rtDuration;
    REFERENCE_TIME m_rtStart = 0;
    REFERENCE_TIME m_rtStop;
    double m_dRateSeeking = 1.0;
    std::recursive_mutex& m_pLock;

private:
    IUnknown& m_owner;
};

}  // namespace qx::media
