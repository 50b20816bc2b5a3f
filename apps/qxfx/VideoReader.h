#pragma once
// Reads the frames of anything FFmpeg opens (a video, or a still image, which gives one
// frame) and hands them over as BGRA frames of the size of the first frame.
#include "apps/qxfx/AvHandles.h"
#include "apps/qxfx/Frame.h"

#include <span>
#include <string>

namespace qx::qxfx {

class VideoReader {
public:
    /// Opens `path` and its best video stream; CommandError naming the problem when the
    /// file cannot be read or holds no decodable video. `threads` 0 lets FFmpeg choose.
    VideoReader(const std::string& path, int threads);

    int width() const { return width_; }
    int height() const { return height_; }
    /// Frames per second as the stream declares it; 25 when it declares nothing usable.
    double frameRate() const { return frameRate_; }
    AVRational frameRateRational() const { return rate_; }
    /// The number of frames the container announces, or 0 when it does not say.
    int64_t frameCountHint() const { return frameCountHint_; }

    /// The number of packets of the video stream of `path`, which is its number of frames
    /// (1 for a still image); 0 when it cannot be read.
    static int64_t countFrames(const std::string& path);

    /// Decodes the next frame into `frame` (which has this reader's size). False at the
    /// end of the stream; CommandError when the data cannot be decoded.
    bool read(Frame& frame);

    /// The bytes of a YV12 frame of this reader's size: the luma plane, then the V and
    /// the U planes of half the width and height (rounded up), rows without padding.
    size_t yv12Size() const;
    /// Decodes the next frame as YV12 into `planes` (at least yv12Size() bytes), as
    /// read() does for BGRA.
    bool readYv12(std::span<uint8_t> planes);

    /// When the last frame read starts, in 100 ns units from the start of the stream;
    /// frames without a time of their own follow the last one at the frame rate.
    int64_t lastFrameTime() const { return lastFrameTime_; }

private:
    bool decodeNext();
    bool sendNextPacket();
    void convert(Frame& frame);
    void convertYv12(std::span<uint8_t> planes);
    void noteFrameTime();

    std::string path_;
    av::Input input_;
    av::Codec decoder_;
    av::Frame decoded_;
    av::Packet packet_;
    av::Scaler scaler_;
    av::Scaler yv12Scaler_;
    int streamIndex_ = -1;
    int width_ = 0;
    int height_ = 0;
    double frameRate_ = 25.0;
    AVRational rate_{25, 1};
    int64_t frameCountHint_ = 0;
    bool draining_ = false;
    int64_t streamStart_ = AV_NOPTS_VALUE;
    AVRational timeBase_{1, 1};
    int64_t lastFrameTime_ = -1;
};

}  // namespace qx::qxfx
