#include "platform/media/SourceFilter.h"

#include <algorithm>

namespace qx::media {

int CSource::GetPinCount() { return int(m_paStreams.size()); }

CBasePin* CSource::GetPin(int n) { return n >= 0 && size_t(n) < m_paStreams.size() ? m_paStreams[size_t(n)] : nullptr; }

CSourceStream::CSourceStream(std::u16string name, CSource& filter)
    : CBaseOutputPin(filter, std::move(name)), m_pFilter(filter)
{
    filter.m_paStreams.push_back(this);
}

CSourceStream::~CSourceStream()
{
    if (ThreadExists()) {
        if (m_pAllocator) m_pAllocator->Decommit();
        CallWorker(Command::Exit);
        m_thread.join();
    }
    std::erase(m_pFilter.m_paStreams, this);
}

HRESULT CSourceStream::NonDelegatingQueryInterface(const IID&, void** ppv)
{
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    return E_NOINTERFACE;
}

HRESULT CSourceStream::Active()
{
    std::lock_guard lock(m_pFilter.StateLock());
    if (ThreadExists()) return S_FALSE;
    if (const HRESULT hr = CBaseOutputPin::Active(); FAILED(hr)) return hr;
    m_thread = std::thread([this] { ThreadProc(); });
    if (const HRESULT hr = Init(); FAILED(hr)) {
        CallWorker(Command::Exit);
        m_thread.join();
        return hr;
    }
    return Run();
}

HRESULT CSourceStream::Inactive()
{
    std::lock_guard lock(m_pFilter.StateLock());
    // Without buffers the thread can't wait for one any longer.
    const HRESULT decommitted = CBaseOutputPin::Inactive();
    if (ThreadExists()) {
        Stop();
        const HRESULT ended = CallWorker(Command::Exit);
        m_thread.join();
        if (FAILED(ended)) return ended;
    }
    return decommitted;
}

bool CSourceStream::IsPlaying() const
{
    std::lock_guard lock(m_commandLock);
    return m_playing;
}

HRESULT CSourceStream::CallWorker(Command command)
{
    if (!ThreadExists()) return E_FAIL;
    std::lock_guard caller(m_callerLock);
    std::unique_lock lock(m_commandLock);
    m_request = command;
    m_reply.reset();
    m_commandChanged.notify_all();
    m_commandChanged.wait(lock, [this] { return m_reply.has_value(); });
    return *m_reply;
}

CSourceStream::Command CSourceStream::WaitRequest()
{
    std::unique_lock lock(m_commandLock);
    m_commandChanged.wait(lock, [this] { return m_request.has_value(); });
    return *m_request;
}

std::optional<CSourceStream::Command> CSourceStream::PeekRequest()
{
    std::lock_guard lock(m_commandLock);
    return m_request;
}

void CSourceStream::Reply(HRESULT result)
{
    std::lock_guard lock(m_commandLock);
    m_request.reset();
    m_reply = result;
    m_commandChanged.notify_all();
}

void CSourceStream::ThreadProc()
{
    for (;;) {
        switch (WaitRequest()) {
        case Command::Init: Reply(OnThreadCreate()); break;
        case Command::Run:
            Reply(S_OK);
            DoBufferProcessingLoop();
            break;
        case Command::Stop: Reply(S_OK); break;
        case Command::Exit: Reply(OnThreadDestroy()); return;
        }
    }
}

void CSourceStream::DoBufferProcessingLoop()
{
    {
        std::lock_guard lock(m_commandLock);
        m_playing = true;
    }
    OnThreadStartPlay();
    for (;;) {
        if (const std::optional<Command> request = PeekRequest()) {
            if (*request != Command::Run) break;
            Reply(S_OK);  // running already
            continue;
        }
        com::ComPtr<IMediaSample> sample;
        if (FAILED(GetDeliveryBuffer(sample.out(), nullptr, nullptr, 0))) {
            // Decommitted: the filter is stopping. Wait for its command.
            std::unique_lock lock(m_commandLock);
            m_commandChanged.wait(lock, [this] { return m_request.has_value(); });
            continue;
        }
        const HRESULT filled = FillBuffer(sample.get());
        if (filled == S_OK) {
            if (Deliver(sample.get()) != S_OK) break;
            continue;
        }
        sample.reset();
        DeliverEndOfStream();
        break;
    }
    std::lock_guard lock(m_commandLock);
    m_playing = false;
}

}  // namespace qx::media
