#pragma once
// The base of every filter: a component object with pins, a state (stopped, paused,
// running) and the graph it was put in. Pins belong to their filter and live as long as
// it; connections go from an output pin to an input pin of another filter.
#include "platform/com/Unknown.h"
#include "platform/media/Types.h"

#include <atomic>
#include <mutex>
#include <string>

namespace qx::media {

class CBasePin;

/// The graph a filter runs in. Filters only ask it for its other interfaces.
struct IFilterGraph : IUnknown {
    static constexpr IID iid = guid("{56A8689F-0AD4-11CE-B03A-0020AF0BA770}");

protected:
    ~IFilterGraph() = default;
};

/// SetPositions flags: how a position is given, in the low bits.
inline constexpr DWORD AM_SEEKING_NoPositioning = 0;
inline constexpr DWORD AM_SEEKING_AbsolutePositioning = 1;
inline constexpr DWORD AM_SEEKING_RelativePositioning = 2;
inline constexpr DWORD AM_SEEKING_IncrementalPositioning = 3;
inline constexpr DWORD AM_SEEKING_PositioningBitsMask = 3;

/// GetCapabilities bits.
inline constexpr DWORD AM_SEEKING_CanSeekAbsolute = 0x1;
inline constexpr DWORD AM_SEEKING_CanSeekForwards = 0x2;
inline constexpr DWORD AM_SEEKING_CanSeekBackwards = 0x4;
inline constexpr DWORD AM_SEEKING_CanGetCurrentPos = 0x8;
inline constexpr DWORD AM_SEEKING_CanGetStopPos = 0x10;
inline constexpr DWORD AM_SEEKING_CanGetDuration = 0x20;

/// Positions of a graph or a stream, in reference time. A graph that only tells where it
/// is implements GetCurrentPosition; the other members answer E_NOTIMPL unless a seekable
/// stream implements them.
struct IMediaSeeking : IUnknown {
    static constexpr IID iid = guid("{36B73880-C2C8-11CF-8B46-00805F6CEF60}");

    virtual HRESULT GetCurrentPosition(LONGLONG* pCurrent) = 0;
    virtual HRESULT GetCapabilities(DWORD* /*pCapabilities*/) { return E_NOTIMPL; }
    virtual HRESULT GetDuration(LONGLONG* /*pDuration*/) { return E_NOTIMPL; }
    virtual HRESULT GetStopPosition(LONGLONG* /*pStop*/) { return E_NOTIMPL; }
    /// New start and stop positions, each given as the flags say (AM_SEEKING_*).
    virtual HRESULT SetPositions(LONGLONG* /*pCurrent*/, DWORD /*CurrentFlags*/, LONGLONG* /*pStop*/,
                                 DWORD /*StopFlags*/)
    {
        return E_NOTIMPL;
    }
    virtual HRESULT GetPositions(LONGLONG* /*pCurrent*/, LONGLONG* /*pStop*/) { return E_NOTIMPL; }
    virtual HRESULT SetRate(double /*dRate*/) { return E_NOTIMPL; }
    virtual HRESULT GetRate(double* /*pdRate*/) { return E_NOTIMPL; }

protected:
    ~IMediaSeeking() = default;
};

struct IBaseFilter : IUnknown {
    static constexpr IID iid = guid("{56A86895-0AD4-11CE-B03A-0020AF0BA770}");

    virtual HRESULT Stop() = 0;
    virtual HRESULT Pause() = 0;
    virtual HRESULT Run(REFERENCE_TIME tStart) = 0;
    virtual HRESULT GetState(DWORD dwMilliSecsTimeout, FILTER_STATE* State) = 0;
    /// Puts the filter in `pGraph` (null takes it out), under `pName` when one is given.
    /// The graph holds the filter, not the other way round: the filter keeps a plain
    /// pointer.
    virtual HRESULT JoinFilterGraph(IFilterGraph* pGraph, const char16_t* pName) = 0;

protected:
    ~IBaseFilter() = default;
};

class CBaseFilter : public com::ComObject<IBaseFilter> {
public:
    HRESULT Stop() override;
    HRESULT Pause() override;
    HRESULT Run(REFERENCE_TIME tStart) override;
    HRESULT GetState(DWORD dwMilliSecsTimeout, FILTER_STATE* State) override;
    HRESULT JoinFilterGraph(IFilterGraph* pGraph, const char16_t* pName) override;

    virtual int GetPinCount() = 0;
    virtual CBasePin* GetPin(int n) = 0;

    const CLSID& ClassId() const { return m_clsid; }
    const std::u16string& Name() const { return m_name; }
    bool IsStopped() const { return m_State == State_Stopped; }
    /// The lock of state changes and connections, which pins share.
    std::recursive_mutex& FilterLock() { return m_csFilter; }

protected:
    CBaseFilter(std::u16string name, const CLSID& clsid) : m_name(std::move(name)), m_clsid(clsid) {}

    std::recursive_mutex m_csFilter;
    std::atomic<FILTER_STATE> m_State{State_Stopped};
    IFilterGraph* m_pGraph = nullptr;
    REFERENCE_TIME m_tStart = 0;

private:
    std::u16string m_name;
    CLSID m_clsid;
};

}  // namespace qx::media
