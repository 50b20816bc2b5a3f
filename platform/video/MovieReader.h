#pragma once
// Frames of anything FFmpeg reads (a video, or a still picture, which gives one frame)
// as 32-bit BGRA frames of the size of the first frame: one after another, as the
// command line reads its input, or the one shown at a time, as overlays read movies.
// Pictures without alpha come out opaque.
#include "platform/video/AvHandles.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace qx::video {

/// The largest frame read: 16384 samples a side, 2^26 in all, so that sizes from files
/// never overflow a 32-bit row or a 64-bit buffer.
inline constexpr int kMaxFrameSide = 16384;
inline constexpr int64_t kMaxFrameSamples = int64_t(1) << 26;

bool frameSizeAllowed(int width, int height);

/// How to open an input that cannot say what it is: a pipe ("-" is standard input) of raw
/// video needs its format, and the size, rate and sample layout as the format's options
/// ("video_size", "framerate", "pixel_format").
struct InputFormat {
    std::string name;  ///< FFmpeg's demuxer name ("yuv4mpegpipe", "nut", "rawvideo"); empty: probe
    std::vector<std::pair<std::string, std::string>> options;
};

/// The colour description a stream carries, as FFmpeg's enumerations, so that a writer
/// can tag its output the same way.
struct ColourTags {
    int primaries = 2;  ///< AVCOL_PRI_UNSPECIFIED
    int transfer = 2;   ///< AVCOL_TRC_UNSPECIFIED
    int matrix = 2;     ///< AVCOL_SPC_UNSPECIFIED
    int range = 0;      ///< AVCOL_RANGE_UNSPECIFIED
};

class MovieReader {
public:
    /// Opens `path` and its best video stream; null when the file cannot be read or holds
    /// no video that can be decoded, with the reason in `error`. `threads` 0 lets FFmpeg
    /// choose.
    static std::unique_ptr<MovieReader> open(const std::string& path, int threads, std::string* error = nullptr,
                                             const InputFormat& format = {});
    ~MovieReader();
    MovieReader(const MovieReader&) = delete;
    MovieReader& operator=(const MovieReader&) = delete;

    int width() const { return width_; }
    int height() const { return height_; }
    /// Frames per second as the stream declares it; 25 when it declares nothing usable.
    double frameRate() const { return av_q2d(rate_); }
    AVRational frameRateRational() const { return rate_; }
    /// The number of frames the container announces, or 0 when it does not say.
    int64_t frameCountHint() const { return frameCountHint_; }
    /// Seconds of video; 0 when the file does not tell.
    double duration() const { return duration_; }
    /// The turn that shows the picture upright, in degrees clockwise (0, 90, 180 or 270),
    /// from the stream's display matrix, as players and ffmpeg's autorotation read it.
    int uprightTurn() const { return uprightTurn_; }
    ColourTags colourTags() const { return colour_; }
    /// The unit of the stream's timestamps.
    AVRational timeBase() const;

    enum class Read { Frame, End, Error };
    /// Decodes the next frame into `out` (width times height samples). On Error,
    /// `lastError` says why.
    Read readNext(std::span<uint32_t> out);
    /// The frame shown at `seconds` from the start: the last one that starts at or
    /// before it (the first frame before the start, the last after the end). It stays
    /// valid until the next call; null when no frame can be decoded.
    const uint32_t* frameAt(double seconds);
    const std::string& lastError() const { return error_; }
    /// Packets and frames found damaged: refused and skipped, or patched over by the decoder.
    int64_t damagedSkipped() const { return damaged_; }

    /// The bytes of a YV12 frame of this reader's size: the luma plane, then the V and
    /// the U planes of half the width and height (rounded up), rows without padding.
    size_t yv12Size() const;
    /// Decodes the next frame as YV12 into `planes` (at least yv12Size() bytes), as
    /// readNext does for BGRA.
    Read readNextYv12(std::span<uint8_t> planes);
    /// When the last frame read starts, in 100 ns units from the start of the stream;
    /// frames without a time of their own follow the last one at the frame rate.
    int64_t lastFrameTime() const { return lastFrameTime_; }

    /// The number of packets of the video stream of `path`, which is its number of frames
    /// (1 for a still picture); 0 when it cannot be read.
    static int64_t countFrames(const std::string& path);
    /// When each frame of the video stream of `path` starts, in seconds from the start of
    /// the stream, in order, from its packets (nothing is decoded); empty when it cannot
    /// be read.
    static std::vector<double> frameTimes(const std::string& path);

private:
    MovieReader(std::string path);
    bool openStream(int threads, const InputFormat& format = {});
    void readStreamFacts(const AVStream& stream);
    /// The next decoded frame into `decoded_`; false at the end or on an error.
    bool decodeNext();
    bool sendNextPacket();
    bool convert(std::span<uint32_t> out);
    bool convertYv12(std::span<uint8_t> planes);
    void noteFrameTime();
    /// The padded picture of `format` the converter writes into; false when it cannot be had.
    bool padded(av::Frame& picture, AVPixelFormat format);
    double frameTime(const AVFrame& frame) const;
    bool seekTo(double seconds);

    std::string path_;
    av::Input input_;
    av::Codec decoder_;
    av::Frame decoded_;
    av::Packet packet_;
    av::Scaler scaler_;
    av::Frame converted_;
    av::Scaler yv12Scaler_;
    av::Frame convertedYv12_;
    int64_t streamStart_ = AV_NOPTS_VALUE;
    int64_t lastFrameTime_ = -1;
    int streamIndex_ = -1;
    int width_ = 0;
    int height_ = 0;
    AVRational rate_{25, 1};
    int64_t frameCountHint_ = 0;
    double duration_ = 0.0;
    int uprightTurn_ = 0;
    int64_t damaged_ = 0;
    ColourTags colour_;
    bool draining_ = false;
    bool ended_ = false;
    std::string error_;
    // frameAt: the frame shown, and the next one decoded ahead of it.
    std::vector<uint32_t> shown_;
    double shownTime_ = -1.0;
    bool hasShown_ = false;
    bool aheadReady_ = false;  // decoded_ holds a frame after the shown one
};

}  // namespace qx::video
