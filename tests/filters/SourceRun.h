#pragma once
// The composition source in a graph of a test: its output pin connected to a host sink
// that keeps the frames and their time stamps, run until enough frames came.
#include "filters/Anim3DVideoSource.h"
#include "platform/media/HostFilters.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <vector>

namespace qx::test {

struct Received {
    std::vector<uint32_t> pixels;  // as delivered: bottom-up rows
    media::REFERENCE_TIME start = 0;
    media::REFERENCE_TIME stop = 0;
};

class SourceRun {
public:
    explicit SourceRun(CAnim3DVideoSource& filter) : filter_(filter)
    {
        sink_ = media::CHostSink::Create([](const media::CMediaType&) { return S_OK; },
                                         [this](media::IMediaSample& sample) { return receive(sample); });
        connected_ = filter.Stream().Connect(&sink_->Input(), nullptr);
    }
    ~SourceRun()
    {
        filter_.Stop();
        sink_->Stop();
        filter_.Stream().Disconnect();
    }
    SourceRun(const SourceRun&) = delete;
    SourceRun& operator=(const SourceRun&) = delete;

    HRESULT connected() const { return connected_; }
    media::IMediaSeeking& seeking()
    {
        void* seeking = nullptr;
        EXPECT_EQ(filter_.Stream().NonDelegatingQueryInterface(media::IMediaSeeking::iid, &seeking), S_OK);
        seeking_ = com::ComPtr<media::IMediaSeeking>::adopt(static_cast<media::IMediaSeeking*>(seeking));
        return *seeking_.get();
    }

    /// Lets `count` more frames through and waits for them (30 s at most). The first call
    /// starts the graph; later ones call `restart` (a seek) once the sink takes frames again.
    std::vector<Received> take(size_t count, const std::function<void()>& restart = {})
    {
        {
            std::lock_guard lock(lock_);
            wanted_ = frames_.size() + count;
        }
        if (filter_.IsStopped()) {
            sink_->Pause();
            filter_.Pause();
        } else if (restart) {
            restart();
        }
        std::unique_lock lock(lock_);
        arrived_.wait_for(lock, std::chrono::seconds(30), [&] { return frames_.size() >= wanted_; });
        return std::vector<Received>(frames_.end() - std::ptrdiff_t(std::min(count, frames_.size())), frames_.end());
    }

private:
    HRESULT receive(media::IMediaSample& sample)
    {
        std::lock_guard lock(lock_);
        if (frames_.size() >= wanted_) return S_FALSE;  // enough: the stream's loop ends
        Received frame;
        BYTE* bytes = nullptr;
        sample.GetPointer(&bytes);
        frame.pixels.resize(size_t(sample.GetSize()) / 4);
        std::memcpy(frame.pixels.data(), bytes, frame.pixels.size() * 4);
        sample.GetTime(&frame.start, &frame.stop);
        frames_.push_back(std::move(frame));
        arrived_.notify_all();
        return frames_.size() >= wanted_ ? S_FALSE : S_OK;
    }

    CAnim3DVideoSource& filter_;
    com::ComPtr<media::CHostSink> sink_;
    com::ComPtr<media::IMediaSeeking> seeking_;
    HRESULT connected_ = E_FAIL;
    std::mutex lock_;
    std::condition_variable arrived_;
    std::vector<Received> frames_;
    size_t wanted_ = 0;
};

}  // namespace qx::test
