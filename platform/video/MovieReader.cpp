#include "platform/video/MovieReader.h"

#include "platform/pixel/Alpha.h"

#include <cstring>

extern "C" {
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <cmath>

namespace qx::video {

namespace {

// Decoding errors past this many in a row end the read: a damaged file must not make
// the loop endless.
constexpr int kMaxConsecutiveErrors = 64;

// Rows converted at a time: a multiple of every chroma subsampling, and 32 rows of a
// 1920-wide frame (240 KiB) stay in the cache.
constexpr int kBandRows = 32;

// A wanted time further ahead than this from the frame shown is reached by seeking
// rather than by decoding every frame between.
constexpr double kSeekAheadSeconds = 1.0;

// FFmpeg keeps whatever a stream declares, numbers that its enums do not name included:
// the field is read as the number it holds, and one outside the enum's names counts as
// `unnamed` (unspecified).
template <typename Enum>
int namedOr(const Enum& field, int count, int unnamed)
{
    static_assert(sizeof(Enum) == sizeof(int));
    int value = 0;
    std::memcpy(&value, &field, sizeof value);
    return value >= 0 && value < count ? value : unnamed;
}

AVRational streamRate(const AVStream& stream)
{
    for (const AVRational rate : {stream.avg_frame_rate, stream.r_frame_rate}) {
        if (rate.num > 0 && rate.den > 0 && av_q2d(rate) <= 1000.0) return rate;
    }
    return {25, 1};
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

}  // namespace

bool frameSizeAllowed(int width, int height)
{
    return width > 0 && height > 0 && width <= kMaxFrameSide && height <= kMaxFrameSide &&
           int64_t(width) * height <= kMaxFrameSamples;
}

MovieReader::MovieReader(std::string path)
    : path_(std::move(path)), decoded_(av_frame_alloc()), packet_(av_packet_alloc())
{}

MovieReader::~MovieReader() = default;

std::unique_ptr<MovieReader> MovieReader::open(const std::string& path, int threads, std::string* error,
                                               const InputFormat& format)
{
    std::unique_ptr<MovieReader> reader(new MovieReader(path));
    if (!reader->decoded_ || !reader->packet_) {
        reader->error_ = "out of memory";
    } else if (reader->openStream(threads, format)) {
        return reader;
    }
    if (error) *error = reader->error_;
    return nullptr;
}

bool MovieReader::openStream(int threads, const InputFormat& format)
{
    AVFormatContext* opened = nullptr;
    const AVInputFormat* demuxer = nullptr;
    if (!format.name.empty() && !(demuxer = av_find_input_format(format.name.c_str()))) {
        error_ = "no input format '" + format.name + "'";
        return false;
    }
    AVDictionary* options = nullptr;
    for (const auto& [key, value] : format.options) av_dict_set(&options, key.c_str(), value.c_str(), 0);
    const int openRc = avformat_open_input(&opened, path_.c_str(), demuxer, &options);
    av_dict_free(&options);
    if (openRc < 0) {
        error_ = "cannot open (" + av::errorText(openRc) + ")";
        return false;
    }
    input_.reset(opened);
    if (const int rc = avformat_find_stream_info(input_.get(), nullptr); rc < 0) {
        error_ = "not a readable media file (" + av::errorText(rc) + ")";
        return false;
    }
    const AVCodec* codec = nullptr;
    streamIndex_ = av_find_best_stream(input_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (streamIndex_ < 0 || !codec) {
        error_ = "no video stream that can be decoded";
        return false;
    }
    const AVStream& stream = *input_->streams[streamIndex_];
    decoder_.reset(avcodec_alloc_context3(codec));
    if (!decoder_ || avcodec_parameters_to_context(decoder_.get(), stream.codecpar) < 0) {
        error_ = "cannot set up the decoder";
        return false;
    }
    decoder_->thread_count = threads;
    if (const int rc = avcodec_open2(decoder_.get(), codec, nullptr); rc < 0) {
        error_ = "cannot open the decoder (" + av::errorText(rc) + ")";
        return false;
    }
    width_ = decoder_->width;
    height_ = decoder_->height;
    if (width_ <= 0 || height_ <= 0) {
        error_ = "no picture of a known size in it";
        return false;
    }
    if (!frameSizeAllowed(width_, height_)) {
        error_ = "frame size " + std::to_string(width_) + "x" + std::to_string(height_) + " is out of range (1 to " +
                 std::to_string(kMaxFrameSide) + " a side, " + std::to_string(kMaxFrameSamples) + " samples in all)";
        return false;
    }
    readStreamFacts(stream);
    frameCountHint_ = stream.nb_frames > 0 ? stream.nb_frames : 0;
    if (stream.duration > 0)
        duration_ = double(stream.duration) * av_q2d(stream.time_base);
    else if (input_->duration > 0)
        duration_ = double(input_->duration) / AV_TIME_BASE;
    if (frameCountHint_ == 0 && duration_ > 0) frameCountHint_ = int64_t(duration_ * frameRate() + 0.5);
    draining_ = false;
    ended_ = false;
    return true;
}

void MovieReader::readStreamFacts(const AVStream& stream)
{
    rate_ = streamRate(stream);
    colour_ = {namedOr(decoder_->color_primaries, AVCOL_PRI_NB, AVCOL_PRI_UNSPECIFIED),
               namedOr(decoder_->color_trc, AVCOL_TRC_NB, AVCOL_TRC_UNSPECIFIED),
               namedOr(decoder_->colorspace, AVCOL_SPC_NB, AVCOL_SPC_UNSPECIFIED),
               namedOr(decoder_->color_range, AVCOL_RANGE_NB, AVCOL_RANGE_UNSPECIFIED)};
    uprightTurn_ = 0;
    if (const uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr)) {
        // The matrix turns counter-clockwise by this angle; showing it upright takes the
        // opposite turn, rounded to the quarter turns that frames can take exactly.
        const double angle = av_display_rotation_get(reinterpret_cast<const int32_t*>(matrix));
        if (std::isfinite(angle)) {
            const long quarters = std::lround(-angle / 90.0);
            uprightTurn_ = int(((quarters % 4) + 4) % 4) * 90;
        }
    }
}

AVRational MovieReader::timeBase() const { return input_->streams[streamIndex_]->time_base; }

std::vector<double> MovieReader::frameTimes(const std::string& path)
{
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0) return {};
    const av::Input input(opened);
    const av::Packet packet(av_packet_alloc());
    if (!packet || avformat_find_stream_info(input.get(), nullptr) < 0) return {};
    const int index = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0) return {};
    const AVStream& stream = *input->streams[index];
    const double unit = av_q2d(stream.time_base);
    const double step = 1.0 / av_q2d(streamRate(stream));
    std::vector<double> times;
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        if (packet->stream_index == index) {
            // Packets without a time follow the one before at the declared rate.
            const int64_t pts = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
            times.push_back(pts != AV_NOPTS_VALUE ? double(pts) * unit : times.empty() ? 0.0 : times.back() + step);
        }
        av_packet_unref(packet.get());
    }
    std::sort(times.begin(), times.end());
    const double start = stream.start_time != AV_NOPTS_VALUE ? double(stream.start_time) * unit
                         : times.empty()                     ? 0.0
                                                             : times.front();
    for (double& time : times) time -= start;
    return times;
}

int64_t MovieReader::countFrames(const std::string& path)
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

MovieReader::Read MovieReader::readNext(std::span<uint32_t> out)
{
    if (!decodeNext()) return error_.empty() ? Read::End : Read::Error;
    noteFrameTime();
    return convert(out) ? Read::Frame : Read::Error;
}

MovieReader::Read MovieReader::readNextYv12(std::span<uint8_t> planes)
{
    if (!decodeNext()) return error_.empty() ? Read::End : Read::Error;
    noteFrameTime();
    return convertYv12(planes) ? Read::Frame : Read::Error;
}

void MovieReader::noteFrameTime()
{
    constexpr AVRational kReferenceTime{1, 10'000'000};
    const AVRational timeBase = input_->streams[streamIndex_]->time_base;
    const int64_t timestamp = decoded_->best_effort_timestamp;
    if (timestamp == AV_NOPTS_VALUE || timeBase.num <= 0 || timeBase.den <= 0) {
        lastFrameTime_ = lastFrameTime_ < 0 ? 0 : lastFrameTime_ + av_rescale_q(1, av_inv_q(rate_), kReferenceTime);
        return;
    }
    if (streamStart_ == AV_NOPTS_VALUE) {
        const int64_t start = input_->streams[streamIndex_]->start_time;
        streamStart_ = start == AV_NOPTS_VALUE ? timestamp : start;
    }
    lastFrameTime_ = av_rescale_q(timestamp - streamStart_, timeBase, kReferenceTime);
}

bool MovieReader::decodeNext()
{
    int errors = 0;
    while (!ended_) {
        const int rc = avcodec_receive_frame(decoder_.get(), decoded_.get());
        if (rc == 0) {
            // A frame the decoder patched over damage still comes out; it is counted.
            damaged_ += decoded_->decode_error_flags != 0 || (decoded_->flags & AV_FRAME_FLAG_CORRUPT) != 0;
            return true;
        }
        if (rc == AVERROR_EOF) break;
        if (rc != AVERROR(EAGAIN)) {
            ++damaged_;
            if (++errors > kMaxConsecutiveErrors) {
                error_ = "cannot decode (" + av::errorText(rc) + ")";
                return false;
            }
            continue;
        }
        if (!sendNextPacket()) return false;
    }
    ended_ = true;
    return false;
}

// Feeds the decoder the next packet of the video stream, or the end-of-stream marker.
// False once the decoder has been drained, or on an error.
bool MovieReader::sendNextPacket()
{
    if (draining_) {
        ended_ = true;
        return false;
    }
    while (true) {
        const int rc = av_read_frame(input_.get(), packet_.get());
        if (rc < 0) {
            draining_ = true;
            avcodec_send_packet(decoder_.get(), nullptr);
            return true;
        }
        const bool ours = packet_->stream_index == streamIndex_;
        damaged_ += ours && (packet_->flags & AV_PKT_FLAG_CORRUPT) != 0;
        const int sent = ours ? avcodec_send_packet(decoder_.get(), packet_.get()) : 0;
        av_packet_unref(packet_.get());
        damaged_ += sent == AVERROR_INVALIDDATA;
        if (ours && sent < 0 && sent != AVERROR(EAGAIN) && sent != AVERROR_INVALIDDATA) {
            error_ = "cannot decode (" + av::errorText(sent) + ")";
            return false;
        }
        if (ours) return true;
    }
}

// Converts the decoded picture to BGRA at the size of the first frame; later frames of
// another size (a stream may change) are scaled to it. The converter's vector loops may
// write past the end of a row, so it writes into a padded picture of its own, from which
// rows are copied out. A picture of the same size is converted in bands of rows, each
// copied out while it is still in the cache; pictures without alpha get theirs set on
// the way (the conversion leaves it at 0).
bool MovieReader::convert(std::span<uint32_t> out)
{
    const AVFrame& in = *decoded_;
    scaler_.reset(sws_getCachedContext(scaler_.release(), in.width, in.height, AVPixelFormat(in.format), width_,
                                       height_, AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr, nullptr));
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(AVPixelFormat(in.format));
    if (!scaler_ || !format || out.size() < size_t(width_) * size_t(height_) || !padded(converted_, AV_PIX_FMT_BGRA)) {
        error_ = "cannot convert its pixel format";
        av_frame_unref(decoded_.get());
        return false;
    }
    const bool opaque = !(format->flags & AV_PIX_FMT_FLAG_ALPHA);
    const bool banded = in.width == width_ && in.height == height_ && !(format->flags & AV_PIX_FMT_FLAG_PAL);
    const int band = banded ? kBandRows : in.height;
    for (int top = 0; top < in.height; top += band) {
        const int rows = std::min(band, in.height - top);
        sws_scale(scaler_.get(), planesFromRow(in, *format, top).data(), in.linesize, top, rows, converted_->data,
                  converted_->linesize);
        // A band gives its own rows; the one call of a scaled picture gives them all.
        const int first = banded ? top : 0;
        const int count = banded ? rows : height_;
        for (int y = first; y < first + count; ++y) {
            const std::span row(
                reinterpret_cast<const uint32_t*>(converted_->data[0] + ptrdiff_t(y) * converted_->linesize[0]),
                size_t(width_));
            const std::span target = out.subspan(size_t(y) * size_t(width_), size_t(width_));
            if (opaque) {
                pixel::copyOpaque(row, target);
            } else {
                std::copy(row.begin(), row.end(), target.begin());
            }
        }
    }
    av_frame_unref(decoded_.get());
    return true;
}

bool MovieReader::padded(av::Frame& picture, AVPixelFormat format)
{
    if (picture && picture->width == width_ && picture->height == height_) return true;
    picture.reset(av_frame_alloc());
    if (!picture) return false;
    picture->format = format;
    picture->width = width_;
    picture->height = height_;
    if (av_frame_get_buffer(picture.get(), 64) < 0) {
        picture.reset();
        return false;
    }
    return true;
}

size_t MovieReader::yv12Size() const
{
    const size_t chroma = size_t((width_ + 1) / 2) * size_t((height_ + 1) / 2);
    return size_t(width_) * size_t(height_) + 2 * chroma;
}

// Converts the decoded picture to YV12 of the first frame's size, through a padded
// picture as the BGRA conversion does; the V plane comes before the U plane.
bool MovieReader::convertYv12(std::span<uint8_t> planes)
{
    const AVFrame& in = *decoded_;
    yv12Scaler_.reset(sws_getCachedContext(yv12Scaler_.release(), in.width, in.height, AVPixelFormat(in.format), width_,
                                           height_, AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!yv12Scaler_ || planes.size() < yv12Size() || !padded(convertedYv12_, AV_PIX_FMT_YUV420P)) {
        error_ = "cannot convert its pixel format";
        av_frame_unref(decoded_.get());
        return false;
    }
    sws_scale(yv12Scaler_.get(), in.data, in.linesize, 0, in.height, convertedYv12_->data, convertedYv12_->linesize);
    const int chromaWidth = (width_ + 1) / 2, chromaHeight = (height_ + 1) / 2;
    uint8_t* luma = planes.data();
    uint8_t* v = luma + size_t(width_) * size_t(height_);
    uint8_t* u = v + size_t(chromaWidth) * size_t(chromaHeight);
    const auto copyPlane = [&](int plane, uint8_t* target, int width, int height) {
        for (int y = 0; y < height; ++y)
            std::memcpy(target + size_t(y) * size_t(width),
                        convertedYv12_->data[plane] + ptrdiff_t(y) * convertedYv12_->linesize[plane], size_t(width));
    };
    copyPlane(0, luma, width_, height_);
    copyPlane(1, u, chromaWidth, chromaHeight);
    copyPlane(2, v, chromaWidth, chromaHeight);
    av_frame_unref(decoded_.get());
    return true;
}

double MovieReader::frameTime(const AVFrame& frame) const
{
    const AVStream& stream = *input_->streams[streamIndex_];
    const int64_t pts = frame.best_effort_timestamp;
    if (pts == AV_NOPTS_VALUE) return hasShown_ ? shownTime_ + 1.0 / frameRate() : 0.0;
    const int64_t start = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
    return double(pts - start) * av_q2d(stream.time_base);
}

bool MovieReader::seekTo(double seconds)
{
    const AVStream& stream = *input_->streams[streamIndex_];
    const int64_t start = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
    const int64_t target = start + av_rescale_q(int64_t(std::max(0.0, seconds) * AV_TIME_BASE),
                                                AVRational{1, AV_TIME_BASE}, stream.time_base);
    hasShown_ = false;
    aheadReady_ = false;
    if (av_seek_frame(input_.get(), streamIndex_, target, AVSEEK_FLAG_BACKWARD) >= 0) {
        avcodec_flush_buffers(decoder_.get());
        draining_ = false;
        ended_ = false;
        return true;
    }
    // Inputs that cannot seek (a still picture, some streams) are read again from the start.
    const int threads = decoder_->thread_count;
    decoder_.reset();
    input_.reset();
    return openStream(threads);
}

const uint32_t* MovieReader::frameAt(double seconds)
{
    if (!std::isfinite(seconds)) seconds = 0.0;
    if (!hasShown_ || seconds < shownTime_ || seconds > shownTime_ + kSeekAheadSeconds) {
        if (!seekTo(seconds)) return nullptr;
    }
    shown_.resize(size_t(width_) * size_t(height_));
    // Frames are decoded on until one starts after `seconds`; that one is kept for the
    // next call, and the one before it is shown. Only the frame shown is converted.
    av::Frame candidate(av_frame_alloc());
    if (!candidate) return hasShown_ ? shown_.data() : nullptr;
    double candidateTime = 0.0;
    bool haveCandidate = false;
    while (true) {
        if (!aheadReady_) {
            if (!decodeNext()) break;
            aheadReady_ = true;
        }
        const double time = frameTime(*decoded_);
        if ((hasShown_ || haveCandidate) && time > seconds) break;
        av_frame_unref(candidate.get());
        av_frame_move_ref(candidate.get(), decoded_.get());
        candidateTime = time;
        haveCandidate = true;
        aheadReady_ = false;
    }
    if (haveCandidate) {
        // The ahead frame waits in decoded_; the candidate takes its place to be converted.
        av::Frame ahead(av_frame_alloc());
        if (!ahead) return hasShown_ ? shown_.data() : nullptr;
        if (aheadReady_) av_frame_move_ref(ahead.get(), decoded_.get());
        av_frame_move_ref(decoded_.get(), candidate.get());
        if (convert(shown_)) {
            shownTime_ = candidateTime;
            hasShown_ = true;
        }
        if (aheadReady_) av_frame_move_ref(decoded_.get(), ahead.get());
    }
    return hasShown_ ? shown_.data() : nullptr;
}

}  // namespace qx::video
