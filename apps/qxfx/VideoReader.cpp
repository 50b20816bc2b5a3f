#include "apps/qxfx/VideoReader.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>

namespace qx::qxfx {

namespace {

// Decoding errors past this many in a row end the read: a damaged file must not make
// the loop endless.
constexpr int kMaxConsecutiveErrors = 64;

// Rows converted at a time: a multiple of every chroma subsampling, and 32 rows of a
// 1920-wide frame (240 KiB) stay in the cache.
constexpr int kBandRows = 32;

CommandError readError(const std::string& path, const std::string& what) { return CommandError("'" + path + "': " + what); }

AVRational streamRate(const AVStream& stream)
{
    for (const AVRational rate : {stream.avg_frame_rate, stream.r_frame_rate}) {
        if (rate.num > 0 && rate.den > 0 && av_q2d(rate) <= 1000.0) return rate;
    }
    return {25, 1};
}

}  // namespace

VideoReader::VideoReader(const std::string& path, int threads)
    : path_(path), decoded_(av_frame_alloc()), packet_(av_packet_alloc())
{
    if (!decoded_ || !packet_) throw CommandError("out of memory");
    AVFormatContext* opened = nullptr;
    if (const int rc = avformat_open_input(&opened, path.c_str(), nullptr, nullptr); rc < 0) {
        throw readError(path, "cannot open (" + av::errorText(rc) + ")");
    }
    input_.reset(opened);
    if (const int rc = avformat_find_stream_info(input_.get(), nullptr); rc < 0) {
        throw readError(path, "not a readable media file (" + av::errorText(rc) + ")");
    }
    const AVCodec* codec = nullptr;
    streamIndex_ = av_find_best_stream(input_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (streamIndex_ < 0 || !codec) throw readError(path, "no video stream that can be decoded");
    const AVStream& stream = *input_->streams[streamIndex_];
    decoder_.reset(avcodec_alloc_context3(codec));
    if (!decoder_ || avcodec_parameters_to_context(decoder_.get(), stream.codecpar) < 0) {
        throw readError(path, "cannot set up the decoder");
    }
    decoder_->thread_count = threads;
    if (const int rc = avcodec_open2(decoder_.get(), codec, nullptr); rc < 0) {
        throw readError(path, "cannot open the decoder (" + av::errorText(rc) + ")");
    }
    width_ = decoder_->width;
    height_ = decoder_->height;
    makeFrame(width_, height_);  // refuses sizes out of range before any frame is decoded
    rate_ = streamRate(stream);
    timeBase_ = stream.time_base;
    streamStart_ = stream.start_time;
    frameRate_ = av_q2d(rate_);
    frameCountHint_ = stream.nb_frames > 0 ? stream.nb_frames : 0;
    if (frameCountHint_ == 0 && input_->duration > 0) {
        frameCountHint_ = int64_t(double(input_->duration) / AV_TIME_BASE * frameRate_ + 0.5);
    }
}

int64_t VideoReader::countFrames(const std::string& path)
{
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0) return 0;
    const av::Input input(opened);
    const av::Packet packet(av_packet_alloc());
    if (!packet || avformat_find_stream_info(input.get(), nullptr) < 0) return 0;
    const int stream = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (stream < 0) return 0;
    int64_t count = 0;
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        count += packet->stream_index == stream;
        av_packet_unref(packet.get());
    }
    return count;
}

bool VideoReader::read(Frame& frame)
{
    if (!decodeNext()) return false;
    convert(frame);
    return true;
}

bool VideoReader::readYv12(std::span<uint8_t> planes)
{
    if (planes.size() < yv12Size()) throw CommandError("a YV12 frame needs " + std::to_string(yv12Size()) + " bytes");
    if (!decodeNext()) return false;
    convertYv12(planes);
    return true;
}

// Decodes until a picture is in `decoded_`, and notes its time. False at the end.
bool VideoReader::decodeNext()
{
    int errors = 0;
    while (true) {
        const int rc = avcodec_receive_frame(decoder_.get(), decoded_.get());
        if (rc == 0) {
            noteFrameTime();
            return true;
        }
        if (rc == AVERROR_EOF) return false;
        if (rc != AVERROR(EAGAIN)) {
            if (++errors > kMaxConsecutiveErrors) throw readError(path_, "cannot decode (" + av::errorText(rc) + ")");
            continue;
        }
        if (!sendNextPacket()) return false;
    }
}

void VideoReader::noteFrameTime()
{
    constexpr AVRational kReferenceTime{1, 10'000'000};
    const int64_t timestamp = decoded_->best_effort_timestamp;
    if (timestamp == AV_NOPTS_VALUE || timeBase_.num <= 0 || timeBase_.den <= 0) {
        lastFrameTime_ = lastFrameTime_ < 0 ? 0 : lastFrameTime_ + av_rescale_q(1, av_inv_q(rate_), kReferenceTime);
        return;
    }
    if (streamStart_ == AV_NOPTS_VALUE) streamStart_ = timestamp;
    lastFrameTime_ = av_rescale_q(timestamp - streamStart_, timeBase_, kReferenceTime);
}

// Feeds the decoder the next packet of the video stream, or the end-of-stream marker.
// False once the decoder has been drained.
bool VideoReader::sendNextPacket()
{
    if (draining_) return false;
    while (true) {
        const int rc = av_read_frame(input_.get(), packet_.get());
        if (rc < 0) {
            draining_ = true;
            avcodec_send_packet(decoder_.get(), nullptr);
            return true;
        }
        const bool ours = packet_->stream_index == streamIndex_;
        const int sent = ours ? avcodec_send_packet(decoder_.get(), packet_.get()) : 0;
        av_packet_unref(packet_.get());
        if (ours && sent < 0 && sent != AVERROR(EAGAIN) && sent != AVERROR_INVALIDDATA) {
            throw readError(path_, "cannot decode (" + av::errorText(sent) + ")");
        }
        if (ours) return true;
    }
}

// The planes of `picture` from row `top` on: chroma planes count rows at their own
// subsampled height.
std::array<const uint8_t*, 4> planesFromRow(const AVFrame& picture, const AVPixFmtDescriptor& format, int top)
{
    std::array<const uint8_t*, 4> planes{};
    for (int p = 0; p < 4 && picture.data[p]; ++p) {
        const bool chroma = (p == 1 || p == 2) && format.log2_chroma_h > 0;
        const int rows = chroma ? top >> format.log2_chroma_h : top;
        planes[size_t(p)] = picture.data[p] + ptrdiff_t(rows) * picture.linesize[p];
    }
    return planes;
}

// Converts the decoded picture to BGRA at the size of the first frame; later frames of
// another size (a stream may change) are scaled to it. A picture without alpha is
// opaque, but the conversion leaves its alpha bytes at 0: a picture of the same size is
// converted in bands of rows whose alpha is set while the band is still in the cache,
// rather than in a second pass over the whole frame.
void VideoReader::convert(Frame& frame)
{
    const AVFrame& in = *decoded_;
    scaler_.reset(sws_getCachedContext(scaler_.release(), in.width, in.height, AVPixelFormat(in.format), width_,
                                       height_, AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr, nullptr));
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(AVPixelFormat(in.format));
    if (!scaler_ || !format) throw readError(path_, "cannot convert its pixel format");
    // Source slices start at their first row; the destination is always the whole frame.
    uint8_t* planes[4] = {reinterpret_cast<uint8_t*>(frame.samples.data()), nullptr, nullptr, nullptr};
    const int strides[4] = {width_ * 4, 0, 0, 0};
    const bool opaque = !(format->flags & AV_PIX_FMT_FLAG_ALPHA);
    const bool banded = opaque && in.width == width_ && in.height == height_ && !(format->flags & AV_PIX_FMT_FLAG_PAL);
    const int band = banded ? kBandRows : in.height;
    for (int top = 0; top < in.height; top += band) {
        const int rows = std::min(band, in.height - top);
        sws_scale(scaler_.get(), planesFromRow(in, *format, top).data(), in.linesize, top, rows, planes, strides);
        if (!opaque) continue;
        uint32_t* out = frame.samples.data() + size_t(banded ? top : 0) * size_t(width_);
        const size_t samples = size_t(banded ? rows : height_) * size_t(width_);
        for (size_t i = 0; i < samples; ++i) out[i] |= 0xFF000000u;
    }
    av_frame_unref(decoded_.get());
}

size_t VideoReader::yv12Size() const
{
    const size_t chroma = size_t((width_ + 1) / 2) * size_t((height_ + 1) / 2);
    return size_t(width_) * size_t(height_) + 2 * chroma;
}

// Converts the decoded picture to YV12 of the first frame's size; the V plane comes
// before the U plane.
void VideoReader::convertYv12(std::span<uint8_t> planes)
{
    const AVFrame& in = *decoded_;
    yv12Scaler_.reset(sws_getCachedContext(yv12Scaler_.release(), in.width, in.height, AVPixelFormat(in.format), width_,
                                           height_, AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!yv12Scaler_) throw readError(path_, "cannot convert its pixel format");
    const int chromaWidth = (width_ + 1) / 2;
    const size_t chroma = size_t(chromaWidth) * size_t((height_ + 1) / 2);
    uint8_t* luma = planes.data();
    uint8_t* v = luma + size_t(width_) * size_t(height_);
    uint8_t* targets[4] = {luma, v + chroma, v, nullptr};  // Y, U, V as the scaler counts them
    const int strides[4] = {width_, chromaWidth, chromaWidth, 0};
    sws_scale(yv12Scaler_.get(), in.data, in.linesize, 0, in.height, targets, strides);
    av_frame_unref(decoded_.get());
}

}  // namespace qx::qxfx
