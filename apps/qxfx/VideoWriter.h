#pragma once
// Writes BGRA frames to a video file (H.264 in MP4 when FFmpeg has an H.264 encoder, else
// a lossless codec the container takes) or to numbered PNG files (a path with a printf
// number such as "frame-%04d.png").
#include "apps/qxfx/AvHandles.h"
#include "apps/session/Frame.h"

#include <string>

namespace qx::qxfx {

class VideoWriter {
public:
    /// Opens the output; CommandError naming the problem when the path cannot be written
    /// or no encoder fits its container. `threads` 0 lets FFmpeg choose; `lossless` passes
    /// H.264 over for the lossless codecs.
    VideoWriter(const std::string& path, int width, int height, AVRational frameRate, int threads,
                bool lossless = false);
    VideoWriter(const VideoWriter&) = delete;
    VideoWriter& operator=(const VideoWriter&) = delete;

    void write(const Frame& frame);
    /// Drains the encoder and writes the trailer; the file is complete only after this.
    void finish();

    /// The name of the encoder chosen, for messages.
    std::string codecName() const { return encoder_ ? encoder_->codec->name : ""; }

private:
    void openEncoder(const AVCodec& codec, AVPixelFormat format, AVRational frameRate, int threads);
    void drainPackets();

    std::string path_;
    int width_;
    int height_;
    av::Output output_;
    av::Codec encoder_;
    av::Frame picture_;
    av::Packet packet_;
    av::Scaler scaler_;
    AVStream* stream_ = nullptr;
    int64_t nextPts_ = 0;
    bool finished_ = false;
};

}  // namespace qx::qxfx
