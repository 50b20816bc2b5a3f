#pragma once
// Reads the frames of anything FFmpeg opens (a video, or a still image, which gives one
// frame) and hands them over as BGRA frames of the size of the first frame, through the
// video layer's movie reader, with problems as one-line command errors. "-" reads
// standard input.
#include "apps/session/Frame.h"
#include "platform/video/MovieReader.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace qx::qxfx {

using video::ColourTags;
using video::InputFormat;

/// The name FFmpeg opens for a path of the command line: "-" is standard input or output.
std::string mediaUrl(const std::string& path, bool output);

class VideoReader {
public:
    /// Opens `path` and its best video stream; CommandError naming the problem when the
    /// file cannot be read or holds no decodable video. `threads` 0 lets FFmpeg choose.
    VideoReader(const std::string& path, int threads, const InputFormat& format = {});

    int width() const { return reader_->width(); }
    int height() const { return reader_->height(); }
    /// Frames per second as the stream declares it; 25 when it declares nothing usable.
    double frameRate() const { return reader_->frameRate(); }
    AVRational frameRateRational() const { return reader_->frameRateRational(); }
    /// The number of frames the container announces, or 0 when it does not say.
    int64_t frameCountHint() const { return reader_->frameCountHint(); }
    /// Seconds of video; 0 when the input does not tell (a pipe).
    double duration() const { return reader_->duration(); }
    /// The clockwise turn that shows the picture upright: 0, 90, 180 or 270.
    int uprightTurn() const { return reader_->uprightTurn(); }
    ColourTags colourTags() const { return reader_->colourTags(); }
    AVRational timeBase() const { return reader_->timeBase(); }
    /// Damaged packets or frames found so far.
    int64_t damagedSkipped() const { return reader_->damagedSkipped(); }

    /// The number of packets of the video stream of `path`, which is its number of frames
    /// (1 for a still image); 0 when it cannot be read.
    static int64_t countFrames(const std::string& path) { return video::MovieReader::countFrames(path); }
    /// When each frame of `path` starts, in seconds, in order; empty for a pipe or a file
    /// that cannot be read.
    static std::vector<double> frameTimes(const std::string& path);

    /// Decodes the next frame into `frame` (which has this reader's size). False at the
    /// end of the stream; CommandError when the data cannot be decoded.
    bool read(Frame& frame);

    /// The bytes of a YV12 frame of this reader's size: the luma plane, then the V and
    /// the U planes of half the width and height (rounded up), rows without padding.
    size_t yv12Size() const { return reader_->yv12Size(); }
    /// Decodes the next frame as YV12 into `planes` (at least yv12Size() bytes), as
    /// read() does for BGRA.
    bool readYv12(std::span<uint8_t> planes);
    /// When the last frame read starts, in 100 ns units from the start of the stream;
    /// frames without a time of their own follow the last one at the frame rate.
    int64_t lastFrameTime() const { return reader_->lastFrameTime(); }
    double lastFrameSeconds() const { return double(reader_->lastFrameTime()) * 1e-7; }

private:
    std::string path_;
    bool outcome(video::MovieReader::Read read) const;

    std::unique_ptr<video::MovieReader> reader_;
};

}  // namespace qx::qxfx
