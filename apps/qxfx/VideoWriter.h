#pragma once
// Writes BGRA frames to a video (H.264 in MP4, MKV and MOV when FFmpeg has an H.264
// encoder; VP9 in WebM; GIF; raw frames to a pipe) or to numbered PNG or JPEG files (a
// path with a printf number such as "frame-%04d.png"). Frames carry their own times, so
// a clip of variable frame rate keeps its timing; other streams (audio) can be added
// before the first frame and are interleaved with it.
#include "apps/qxfx/AvHandles.h"
#include "apps/session/Frame.h"
#include "platform/video/MovieReader.h"

#include <string>

namespace qx::qxfx {

struct EncodeSettings {
    AVRational frameRate{25, 1};  ///< the rate declared, and how long a frame lasts by default
    /// The unit of the times given to write(); {0, 0}: one frame at frameRate. Containers
    /// without timestamps (y4m, raw) always count frames at frameRate.
    AVRational timeBase{0, 0};
    int threads = 0;            ///< 0 lets FFmpeg choose
    bool lossless = false;      ///< FFV1 or PNG with alpha instead of H.264
    std::string format;         ///< FFmpeg's muxer name ("mp4", "nut", "yuv4mpegpipe"); empty: from `nameForFormat`
    std::string nameForFormat;  ///< the file name the container is guessed from; empty: the path
    std::string codec;          ///< FFmpeg's encoder name; empty: the container's best
    int crf = -1;               ///< constant quality of H.264 and VP9; -1: 18 and 32
    std::string preset;         ///< H.264 preset; empty: veryfast
    video::ColourTags colour;   ///< tags copied to a YUV output
};

class VideoWriter {
public:
    /// Opens the output; CommandError naming the problem when the path cannot be written
    /// or no encoder fits its container.
    VideoWriter(const std::string& path, int width, int height, const EncodeSettings& settings);
    /// Frames at a constant `frameRate`, as most commands write them.
    VideoWriter(const std::string& path, int width, int height, AVRational frameRate, int threads,
                bool lossless = false);
    VideoWriter(const VideoWriter&) = delete;
    VideoWriter& operator=(const VideoWriter&) = delete;

    /// The next frame, one frame after the one before.
    void write(const Frame& frame);
    /// A frame shown at `seconds`; times that do not grow are moved one tick on.
    void write(const Frame& frame, double seconds);
    /// Drains the encoder and writes the trailer; the file is complete only after this.
    void finish();

    /// The container, for adding streams before start().
    AVFormatContext& container() { return *output_; }
    /// Writes the header, once every stream is added; the first frame or packet calls it.
    void start();
    /// Writes a packet of another stream, its times in that stream's unit.
    void writePacket(AVPacket& packet);

    /// The name of the encoder chosen, for messages.
    std::string codecName() const { return encoder_ ? encoder_->codec->name : ""; }
    /// The size encoded: the frame's, one sample larger on an odd side of 4:2:0 output.
    int encodedWidth() const { return encodedWidth_; }
    int encodedHeight() const { return encodedHeight_; }

private:
    void openEncoder(const AVCodec& codec, AVPixelFormat format, const EncodeSettings& settings);
    void setColour(const EncodeSettings& settings, AVPixelFormat format);
    void encode(const Frame& frame, int64_t pts);
    void drainPackets();

    std::string path_;
    int width_;
    int height_;
    int encodedWidth_;
    int encodedHeight_;
    av::Output output_;
    av::Codec encoder_;
    av::Frame picture_;
    av::Packet packet_;
    av::Scaler scaler_;
    Frame padded_;
    AVStream* stream_ = nullptr;
    int64_t frameTicks_ = 1;  // one frame at the declared rate, in the encoder's unit
    int64_t lastPts_ = -1;
    bool started_ = false;
    bool finished_ = false;
};

}  // namespace qx::qxfx
