#pragma once
// The sink end of a source filter's graph inside a GStreamer source element: the filter's
// stream thread delivers a frame, which waits in a slot of one until the element's
// streaming thread takes it. A flush of the graph (a seek restarts the filter's thread)
// empties the slot and lets a waiting delivery go; the element can unlock its own wait
// (GstBaseSrc's unlock) and shut the hand-off for good before it stops the graph.
#include "platform/media/Pins.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <vector>

namespace qx::gst {

class FrameHandoff final : public media::CBaseFilter {
public:
    struct Frame {
        std::vector<uint8_t> bytes;
        media::REFERENCE_TIME start = 0;
    };

    /// A hand-off that takes video of `subtype` with samples of `sampleBytes`; null when
    /// out of memory.
    static com::ComPtr<FrameHandoff> Create(const GUID& subtype, LONG sampleBytes);

    int GetPinCount() override { return 1; }
    media::CBasePin* GetPin(int n) override;
    media::CBaseInputPin& Input();

    /// Waits for the next frame; nothing once unlocked or shut.
    std::optional<Frame> take();
    /// While unlocked, take returns at once with nothing.
    void setUnlocked(bool unlocked);
    /// Refuses every delivery from now on, so that the filter's thread never waits here.
    void shut();

private:
    class Pin;
    FrameHandoff(const GUID& subtype, LONG sampleBytes);
    ~FrameHandoff() override;

    HRESULT put(media::IMediaSample& sample);
    void flush(bool flushing);

    std::unique_ptr<Pin> pin_;
    std::mutex lock_;
    std::condition_variable changed_;
    std::optional<Frame> slot_;
    bool flushing_ = false;
    bool unlocked_ = false;
    bool shut_ = false;
};

}  // namespace qx::gst
