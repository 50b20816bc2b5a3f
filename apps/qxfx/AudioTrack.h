#pragma once
// The audio of the input, carried into the output beside the rendered video: copied as it
// is when the output's container takes its codec, else decoded and encoded again with the
// container's own audio codec (AAC in MP4). It follows the video's trim and its clock:
// times count from the video's first frame, so that sound and picture stay together.
#include "apps/qxfx/AvHandles.h"
#include "apps/qxfx/ClipFrames.h"

#include <memory>
#include <string>

namespace qx::qxfx {

class VideoWriter;

class AudioTrack {
public:
    /// The best audio stream of `path` added to `writer`'s container (before its first
    /// frame); null, with a warning when there is audio that cannot be kept, when there is
    /// nothing to carry.
    static std::unique_ptr<AudioTrack> open(const std::string& path, const Trim& trim, VideoWriter& writer);
    virtual ~AudioTrack();

    /// Writes the audio that starts before `seconds` of the output.
    void writeUntil(double seconds);
    /// Writes the rest, up to `seconds`, and drains an encoder.
    void finish(double seconds);

    /// "copied" or "encoded as CODEC", for messages.
    virtual std::string how() const = 0;

protected:
    AudioTrack(av::Input input, int streamIndex, double offsetSeconds, const Trim& trim, VideoWriter& writer);
    /// Carries one packet of the input's stream, already within the trim; its times are
    /// still in the input's unit.
    virtual void carry(AVPacket& packet) = 0;
    virtual void drain() = 0;

    AVStream& inputStream() const { return *input_->streams[streamIndex_]; }
    /// Where the output's clock stands at a time of the input stream, in its unit.
    int64_t outputTicks(int64_t inputTicks) const;
    VideoWriter& writer_;
    AVStream* output_ = nullptr;

private:
    /// Reads up to the next packet of the stream; false at the end of the input.
    bool readPending();
    double pendingSeconds() const;

    av::Input input_;
    int streamIndex_;
    double offsetSeconds_;  // the input's time of the output's zero
    Trim trim_;
    av::Packet pending_;
    bool hasPending_ = false;
    bool ended_ = false;
};

}  // namespace qx::qxfx
