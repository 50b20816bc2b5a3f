#pragma once
// Source filters: a filter whose output pins each run a stream thread of their own. The
// thread is made when the filter leaves the stopped state; it calls OnThreadCreate once,
// then, while it is told to run, OnThreadStartPlay and a loop that takes a buffer from
// the connection, has FillBuffer fill it and delivers it. FillBuffer's S_FALSE ends the
// stream (end of stream goes downstream); a failure ends it too. A delivery that is not
// S_OK (a sink that wants no more, or one that flushes) ends the loop quietly, and the
// thread waits for its next command. Stopping the filter ends the thread.
#include "platform/media/Pins.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace qx::media {

class CSourceStream;

class CSource : public CBaseFilter {
public:
    int GetPinCount() override;
    CBasePin* GetPin(int n) override;

    /// The filter's lock, which its pins' formats and buffer sizes are decided under.
    std::recursive_mutex& StateLock() { return m_csFilter; }

protected:
    CSource(std::u16string name, const CLSID& clsid) : CBaseFilter(std::move(name), clsid) {}

    /// A pin adds itself as it is made; the filter doesn't own it.
    friend class CSourceStream;
    std::vector<CSourceStream*> m_paStreams;
};

class CSourceStream : public CBaseOutputPin {
public:
    ~CSourceStream() override;

    /// Commits the allocator, starts the thread and has it run OnThreadCreate, then play.
    HRESULT Active() override;
    /// Decommits the allocator (which frees a thread waiting for a buffer), then stops and
    /// ends the thread.
    HRESULT Inactive() override;

    /// Other interfaces of the pin, as an owner asks for them; none by default.
    virtual HRESULT NonDelegatingQueryInterface(const IID& riid, void** ppv);

protected:
    CSourceStream(std::u16string name, CSource& filter);

    /// Fills the sample with the next frame and sets its times: S_OK to deliver it,
    /// S_FALSE at the end of the stream.
    virtual HRESULT FillBuffer(IMediaSample* pSample) = 0;
    /// On the stream thread: once when it starts, and when it is about to end.
    virtual HRESULT OnThreadCreate() { return S_OK; }
    virtual HRESULT OnThreadDestroy() { return S_OK; }
    /// On the stream thread, each time the loop of buffers begins.
    virtual HRESULT OnThreadStartPlay() { return S_OK; }

    /// The commands of the thread; they return once the thread took them.
    enum class Command { Init, Run, Stop, Exit };
    bool ThreadExists() const { return m_thread.joinable(); }
    HRESULT Init() { return CallWorker(Command::Init); }
    HRESULT Run() { return CallWorker(Command::Run); }
    HRESULT Stop() { return CallWorker(Command::Stop); }
    /// True while the loop of buffers runs.
    bool IsPlaying() const;

    CSource& m_pFilter;

private:
    HRESULT CallWorker(Command command);
    void ThreadProc();
    Command WaitRequest();
    std::optional<Command> PeekRequest();
    void Reply(HRESULT result);
    /// The loop of buffers; returns when a command other than Run arrives (left pending
    /// for the thread's main loop) or the stream ends.
    void DoBufferProcessingLoop();

    std::thread m_thread;
    mutable std::mutex m_commandLock;
    std::condition_variable m_commandChanged;
    std::optional<Command> m_request;
    std::optional<HRESULT> m_reply;
    std::mutex m_callerLock;  // one caller at a time
    bool m_playing = false;
};

}  // namespace qx::media
