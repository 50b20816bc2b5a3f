#include "platform/media/BaseFilter.h"

#include "platform/media/Pins.h"

namespace qx::media {

HRESULT CBaseFilter::Stop()
{
    std::lock_guard lock(m_csFilter);
    HRESULT result = S_OK;
    if (m_State != State_Stopped) {
        // Every pin is made inactive; the first failure is the one reported.
        for (int i = 0; i < GetPinCount(); ++i) {
            CBasePin* pin = GetPin(i);
            if (!pin->IsConnected()) continue;
            const HRESULT hr = pin->Inactive();
            if (FAILED(hr) && SUCCEEDED(result)) result = hr;
        }
    }
    m_State = State_Stopped;
    return result;
}

HRESULT CBaseFilter::Pause()
{
    std::lock_guard lock(m_csFilter);
    if (m_State == State_Stopped) {
        for (int i = 0; i < GetPinCount(); ++i) {
            CBasePin* pin = GetPin(i);
            if (!pin->IsConnected()) continue;
            if (const HRESULT hr = pin->Active(); FAILED(hr)) return hr;
        }
    }
    m_State = State_Paused;
    return S_OK;
}

HRESULT CBaseFilter::Run(REFERENCE_TIME tStart)
{
    std::lock_guard lock(m_csFilter);
    if (m_State == State_Stopped) {
        if (const HRESULT hr = Pause(); FAILED(hr)) return hr;
    }
    m_tStart = tStart;
    m_State = State_Running;
    return S_OK;
}

HRESULT CBaseFilter::GetState(DWORD, FILTER_STATE* State)
{
    if (!State) return E_POINTER;
    *State = m_State;
    return S_OK;
}

HRESULT CBaseFilter::JoinFilterGraph(IFilterGraph* pGraph, const char16_t* pName)
{
    std::lock_guard lock(m_csFilter);
    m_pGraph = pGraph;
    if (pName) m_name = pName;
    return S_OK;
}

}  // namespace qx::media
