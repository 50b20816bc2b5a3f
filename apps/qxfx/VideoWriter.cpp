#include "apps/qxfx/VideoWriter.h"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace qx::qxfx {

namespace {

CommandError writeError(const std::string& path, const std::string& what)
{
    return CommandError("'" + path + "': " + what);
}

bool named(const AVOutputFormat& format, const char* name) { return std::string(format.name) == name; }

bool hasExtension(const std::string& path, std::initializer_list<const char*> extensions)
{
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos) return false;
    std::string extension = path.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return std::any_of(extensions.begin(), extensions.end(), [&](const char* e) { return extension == e; });
}

struct CodecChoice {
    const AVCodec* codec = nullptr;
    AVPixelFormat format = AV_PIX_FMT_NONE;
};

// The pixel format an encoder named on the command line takes: 4:2:0 where it can, as
// players everywhere expect, else the closest to BGRA with alpha.
CodecChoice namedCodec(const std::string& name, const std::string& path)
{
    const AVCodec* codec = avcodec_find_encoder_by_name(name.c_str());
    if (!codec || codec->type != AVMEDIA_TYPE_VIDEO) throw writeError(path, "no video encoder '" + name + "'");
    if (!codec->pix_fmts) return {codec, AV_PIX_FMT_YUV420P};
    for (const AVPixelFormat* f = codec->pix_fmts; *f != AV_PIX_FMT_NONE; ++f)
        if (*f == AV_PIX_FMT_YUV420P) return {codec, *f};
    return {codec, avcodec_find_best_pix_fmt_of_list(codec->pix_fmts, AV_PIX_FMT_BGRA, 1, nullptr)};
}

// Pictures: PNG files keep the alpha channel, JPEG names get JPEG. Containers with a
// codec of their own get it (GIF, y4m, raw BGRA). Video takes H.264 in 4:2:0 unless asked
// for lossless, else VP9, else FFV1 or PNG, both lossless with alpha, whichever the
// container accepts first.
CodecChoice chooseCodec(const AVOutputFormat& format, const std::string& name, bool lossless)
{
    if (named(format, "image2")) {
        if (hasExtension(name, {"jpg", "jpeg"})) return {avcodec_find_encoder(AV_CODEC_ID_MJPEG), AV_PIX_FMT_YUVJ444P};
        return {avcodec_find_encoder(AV_CODEC_ID_PNG), AV_PIX_FMT_RGBA};
    }
    if (named(format, "gif")) return {avcodec_find_encoder(AV_CODEC_ID_GIF), AV_PIX_FMT_RGB8};
    if (named(format, "yuv4mpegpipe")) return {avcodec_find_encoder(AV_CODEC_ID_WRAPPED_AVFRAME), AV_PIX_FMT_YUV420P};
    if (named(format, "rawvideo")) return {avcodec_find_encoder(AV_CODEC_ID_RAWVIDEO), AV_PIX_FMT_BGRA};
    const std::array<CodecChoice, 4> candidates = {{
        {avcodec_find_encoder(AV_CODEC_ID_H264), AV_PIX_FMT_YUV420P},
        {avcodec_find_encoder(AV_CODEC_ID_VP9), AV_PIX_FMT_YUV420P},
        {avcodec_find_encoder(AV_CODEC_ID_FFV1), AV_PIX_FMT_BGRA},
        {avcodec_find_encoder(AV_CODEC_ID_PNG), AV_PIX_FMT_RGBA},
    }};
    for (const auto& candidate : candidates) {
        if (!candidate.codec) continue;
        const bool lossy = candidate.codec->id == AV_CODEC_ID_H264 || candidate.codec->id == AV_CODEC_ID_VP9;
        if (lossless && lossy) continue;
        if (avformat_query_codec(&format, candidate.codec->id, FF_COMPLIANCE_NORMAL) == 1) return candidate;
    }
    return {};
}

EncodeSettings constantRate(AVRational frameRate, int threads, bool lossless)
{
    EncodeSettings settings;
    settings.frameRate = frameRate;
    settings.threads = threads;
    settings.lossless = lossless;
    return settings;
}

bool subsampled(AVPixelFormat format)
{
    const AVPixFmtDescriptor* d = av_pix_fmt_desc_get(format);
    return d && !(d->flags & AV_PIX_FMT_FLAG_RGB) && (d->log2_chroma_w > 0 || d->log2_chroma_h > 0);
}

}  // namespace

VideoWriter::VideoWriter(const std::string& path, int width, int height, AVRational frameRate, int threads,
                         bool lossless)
    : VideoWriter(path, width, height, constantRate(frameRate, threads, lossless))
{}

VideoWriter::VideoWriter(const std::string& path, int width, int height, const EncodeSettings& settings)
    : path_(settings.nameForFormat.empty() ? path : settings.nameForFormat), width_(width), height_(height),
      encodedWidth_(width), encodedHeight_(height), picture_(av_frame_alloc()), packet_(av_packet_alloc())
{
    if (!picture_ || !packet_) throw CommandError("out of memory");
    const std::string& name = settings.nameForFormat.empty() ? path : settings.nameForFormat;
    const AVOutputFormat* guessed = settings.format.empty()
                                        ? av_guess_format(nullptr, name.c_str(), nullptr)
                                        : av_guess_format(settings.format.c_str(), nullptr, nullptr);
    if (!guessed) {
        throw writeError(path_, settings.format.empty()
                                    ? "no output format for this file name (try .mp4, .mkv, .webm or frame-%04d.png)"
                                    : "no output format '" + settings.format + "'");
    }
    AVFormatContext* context = nullptr;
    if (avformat_alloc_output_context2(&context, guessed, nullptr, path.c_str()) < 0 || !context)
        throw CommandError("out of memory");
    output_.reset(context);
    if (named(*guessed, "image2") && name.find('%') == std::string::npos)
        throw writeError(path_, "picture files need a numbered name such as frame-%04d.png");
    const CodecChoice choice =
        settings.codec.empty() ? chooseCodec(*guessed, name, settings.lossless) : namedCodec(settings.codec, path_);
    if (!choice.codec) throw writeError(path_, "no encoder for this container");
    // 4:2:0 holds colour for pairs of samples: an odd side gets one more sample, a copy of
    // the last row or column, rather than a 4:4:4 stream that browsers refuse.
    if (subsampled(choice.format)) {
        encodedWidth_ = (width + 1) & ~1;
        encodedHeight_ = (height + 1) & ~1;
    }
    openEncoder(*choice.codec, choice.format, settings);
    if (!(output_->oformat->flags & AVFMT_NOFILE)) {
        if (const int rc = avio_open(&output_->pb, path.c_str(), AVIO_FLAG_WRITE); rc < 0)
            throw writeError(path_, "cannot write (" + av::errorText(rc) + ")");
    }
}

void VideoWriter::openEncoder(const AVCodec& codec, AVPixelFormat format, const EncodeSettings& settings)
{
    encoder_.reset(avcodec_alloc_context3(&codec));
    stream_ = avformat_new_stream(output_.get(), nullptr);
    if (!encoder_ || !stream_) throw CommandError("out of memory");
    encoder_->width = encodedWidth_;
    encoder_->height = encodedHeight_;
    encoder_->pix_fmt = format;
    const bool timed = !(output_->oformat->flags & AVFMT_NOTIMESTAMPS) && settings.timeBase.num > 0;
    encoder_->time_base = timed ? settings.timeBase : av_inv_q(settings.frameRate);
    frameTicks_ = std::max<int64_t>(1, av_rescale_q(1, av_inv_q(settings.frameRate), encoder_->time_base));
    encoder_->framerate = settings.frameRate;
    encoder_->thread_count = settings.threads;
    if (output_->oformat->flags & AVFMT_GLOBALHEADER) encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    const std::string crf = std::to_string(settings.crf >= 0 ? settings.crf : codec.id == AV_CODEC_ID_VP9 ? 32 : 18);
    if (codec.id == AV_CODEC_ID_H264) {
        av_opt_set(encoder_->priv_data, "preset", settings.preset.empty() ? "veryfast" : settings.preset.c_str(), 0);
        av_opt_set(encoder_->priv_data, "crf", crf.c_str(), 0);
    } else if (codec.id == AV_CODEC_ID_VP9) {
        av_opt_set(encoder_->priv_data, "crf", crf.c_str(), 0);
        av_opt_set(encoder_->priv_data, "deadline", "realtime", 0);
        av_opt_set(encoder_->priv_data, "cpu-used", "8", 0);
        encoder_->bit_rate = 0;
    }
    setColour(settings, format);
    if (const int rc = avcodec_open2(encoder_.get(), &codec, nullptr); rc < 0)
        throw writeError(path_, std::string("cannot open the ") + codec.name + " encoder (" + av::errorText(rc) + ")");
    if (avcodec_parameters_from_context(stream_->codecpar, encoder_.get()) < 0) throw CommandError("out of memory");
    stream_->time_base = encoder_->time_base;
    stream_->avg_frame_rate = settings.frameRate;
    picture_->format = format;
    picture_->width = encodedWidth_;
    picture_->height = encodedHeight_;
    if (av_frame_get_buffer(picture_.get(), 0) < 0) throw CommandError("out of memory");
}

// A YUV output carries the input's colour tags; a full-range input is written full range,
// so that untouched samples come back as they were.
void VideoWriter::setColour(const EncodeSettings& settings, AVPixelFormat format)
{
    scaler_.reset(sws_getContext(encodedWidth_, encodedHeight_, AV_PIX_FMT_BGRA, encodedWidth_, encodedHeight_, format,
                                 SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!scaler_) throw writeError(path_, "cannot convert to the encoder's pixel format");
    const AVPixFmtDescriptor* d = av_pix_fmt_desc_get(format);
    // Tags of an RGB input say nothing about a YUV output.
    if (!d || (d->flags & AV_PIX_FMT_FLAG_RGB) || d->nb_components < 3 || settings.colour.matrix == AVCOL_SPC_RGB)
        return;
    encoder_->color_primaries = AVColorPrimaries(settings.colour.primaries);
    encoder_->color_trc = AVColorTransferCharacteristic(settings.colour.transfer);
    encoder_->colorspace = AVColorSpace(settings.colour.matrix);
    encoder_->color_range = AVColorRange(settings.colour.range);
    if (settings.colour.range != AVCOL_RANGE_JPEG) return;
    int *inverse = nullptr, *table = nullptr;
    int sourceRange = 0, targetRange = 0, brightness = 0, contrast = 0, saturation = 0;
    if (sws_getColorspaceDetails(scaler_.get(), &inverse, &sourceRange, &table, &targetRange, &brightness, &contrast,
                                 &saturation) >= 0) {
        sws_setColorspaceDetails(scaler_.get(), inverse, sourceRange, table, 1, brightness, contrast, saturation);
    }
}

void VideoWriter::start()
{
    if (started_) return;
    started_ = true;
    if (const int rc = avformat_write_header(output_.get(), nullptr); rc < 0)
        throw writeError(path_, "cannot write (" + av::errorText(rc) + ")");
}

void VideoWriter::write(const Frame& frame) { encode(frame, lastPts_ < 0 ? 0 : lastPts_ + frameTicks_); }

void VideoWriter::write(const Frame& frame, double seconds)
{
    if (output_->oformat->flags & AVFMT_NOTIMESTAMPS) return write(frame);
    encode(frame, std::llround(seconds / av_q2d(encoder_->time_base)));
}

void VideoWriter::encode(const Frame& frame, int64_t pts)
{
    start();
    if (av_frame_make_writable(picture_.get()) < 0) throw CommandError("out of memory");
    const Frame* source = &frame;
    if (encodedWidth_ != width_ || encodedHeight_ != height_) {
        if (padded_.samples.empty()) padded_ = makeFrame(encodedWidth_, encodedHeight_);
        for (int y = 0; y < encodedHeight_; ++y) {
            const uint32_t* row = frame.samples.data() + size_t(std::min(y, height_ - 1)) * size_t(width_);
            uint32_t* target = padded_.samples.data() + size_t(y) * size_t(encodedWidth_);
            std::memcpy(target, row, size_t(width_) * 4);
            if (encodedWidth_ > width_) target[width_] = row[width_ - 1];
        }
        source = &padded_;
    }
    const uint8_t* planes[4] = {reinterpret_cast<const uint8_t*>(source->samples.data()), nullptr, nullptr, nullptr};
    const int strides[4] = {source->width * 4, 0, 0, 0};
    sws_scale(scaler_.get(), planes, strides, 0, source->height, picture_->data, picture_->linesize);
    picture_->pts = std::max(pts, lastPts_ + 1);
    lastPts_ = picture_->pts;
    if (const int rc = avcodec_send_frame(encoder_.get(), picture_.get()); rc < 0)
        throw writeError(path_, "cannot encode (" + av::errorText(rc) + ")");
    drainPackets();
}

void VideoWriter::drainPackets()
{
    while (avcodec_receive_packet(encoder_.get(), packet_.get()) == 0) {
        // Every frame lasts at least a frame of the declared rate; without a duration MP4
        // gives the last frame no time and players drop it.
        if (packet_->duration == 0) packet_->duration = frameTicks_;
        av_packet_rescale_ts(packet_.get(), encoder_->time_base, stream_->time_base);
        packet_->stream_index = stream_->index;
        const int rc = av_interleaved_write_frame(output_.get(), packet_.get());
        av_packet_unref(packet_.get());
        if (rc < 0) throw writeError(path_, "cannot write (" + av::errorText(rc) + ")");
    }
}

void VideoWriter::writePacket(AVPacket& packet)
{
    start();
    if (const int rc = av_interleaved_write_frame(output_.get(), &packet); rc < 0)
        throw writeError(path_, "cannot write (" + av::errorText(rc) + ")");
}

void VideoWriter::finish()
{
    if (finished_) return;
    finished_ = true;
    start();
    avcodec_send_frame(encoder_.get(), nullptr);
    drainPackets();
    if (const int rc = av_write_trailer(output_.get()); rc < 0)
        throw writeError(path_, "cannot write (" + av::errorText(rc) + ")");
    if (output_->pb && !(output_->oformat->flags & AVFMT_NOFILE)) {
        if (const int rc = avio_closep(&output_->pb); rc < 0)
            throw writeError(path_, "cannot write (" + av::errorText(rc) + ")");
    }
}

}  // namespace qx::qxfx
