#include "apps/qxfx/VideoWriter.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <array>

namespace qx::qxfx {

namespace {

CommandError writeError(const std::string& path, const std::string& what)
{
    return CommandError("'" + path + "': " + what);
}

bool isImageSequence(const AVOutputFormat& format) { return std::string(format.name) == "image2"; }

struct CodecChoice {
    const AVCodec* codec = nullptr;
    AVPixelFormat format = AV_PIX_FMT_NONE;
};

// PNG files keep the alpha channel. Video takes H.264 (4:2:0, or 4:4:4 when a side is
// odd, which 4:2:0 cannot hold) unless asked for lossless, else FFV1 or PNG, both
// lossless with alpha, whichever the container accepts first.
CodecChoice chooseCodec(const AVOutputFormat& format, int width, int height, bool lossless)
{
    if (isImageSequence(format)) return {avcodec_find_encoder(AV_CODEC_ID_PNG), AV_PIX_FMT_RGBA};
    const bool even = width % 2 == 0 && height % 2 == 0;
    const std::array<CodecChoice, 3> candidates = {{
        {avcodec_find_encoder(AV_CODEC_ID_H264), even ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_YUV444P},
        {avcodec_find_encoder(AV_CODEC_ID_FFV1), AV_PIX_FMT_BGRA},
        {avcodec_find_encoder(AV_CODEC_ID_PNG), AV_PIX_FMT_RGBA},
    }};
    for (const auto& candidate : candidates) {
        if (lossless && candidate.codec && candidate.codec->id == AV_CODEC_ID_H264) continue;
        if (candidate.codec && avformat_query_codec(&format, candidate.codec->id, FF_COMPLIANCE_NORMAL) == 1) {
            return candidate;
        }
    }
    return {};
}

}  // namespace

VideoWriter::VideoWriter(const std::string& path, int width, int height, AVRational frameRate, int threads,
                         bool lossless)
    : path_(path), width_(width), height_(height), picture_(av_frame_alloc()), packet_(av_packet_alloc())
{
    if (!picture_ || !packet_) throw CommandError("out of memory");
    AVFormatContext* context = nullptr;
    if (avformat_alloc_output_context2(&context, nullptr, nullptr, path.c_str()) < 0 || !context) {
        throw writeError(path, "no output format for this file name (try .mp4, .mkv or frame-%04d.png)");
    }
    output_.reset(context);
    const bool sequence = isImageSequence(*output_->oformat);
    if (sequence && path.find('%') == std::string::npos) {
        throw writeError(path, "PNG frames need a numbered name such as frame-%04d.png");
    }
    const CodecChoice choice = chooseCodec(*output_->oformat, width, height, lossless);
    if (!choice.codec) throw writeError(path, "no encoder for this container");
    openEncoder(*choice.codec, choice.format, frameRate, threads);
    if (!(output_->oformat->flags & AVFMT_NOFILE)) {
        if (const int rc = avio_open(&output_->pb, path.c_str(), AVIO_FLAG_WRITE); rc < 0) {
            throw writeError(path, "cannot write (" + av::errorText(rc) + ")");
        }
    }
    if (const int rc = avformat_write_header(output_.get(), nullptr); rc < 0) {
        throw writeError(path, "cannot write (" + av::errorText(rc) + ")");
    }
}

void VideoWriter::openEncoder(const AVCodec& codec, AVPixelFormat format, AVRational frameRate, int threads)
{
    encoder_.reset(avcodec_alloc_context3(&codec));
    stream_ = avformat_new_stream(output_.get(), nullptr);
    if (!encoder_ || !stream_) throw CommandError("out of memory");
    encoder_->width = width_;
    encoder_->height = height_;
    encoder_->pix_fmt = format;
    encoder_->time_base = av_inv_q(frameRate);
    encoder_->framerate = frameRate;
    encoder_->thread_count = threads;
    if (output_->oformat->flags & AVFMT_GLOBALHEADER) encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (codec.id == AV_CODEC_ID_H264) {
        av_opt_set(encoder_->priv_data, "preset", "veryfast", 0);
        av_opt_set(encoder_->priv_data, "crf", "18", 0);
    }
    if (const int rc = avcodec_open2(encoder_.get(), &codec, nullptr); rc < 0) {
        throw writeError(path_, std::string("cannot open the ") + codec.name + " encoder (" + av::errorText(rc) + ")");
    }
    if (avcodec_parameters_from_context(stream_->codecpar, encoder_.get()) < 0) throw CommandError("out of memory");
    stream_->time_base = encoder_->time_base;
    stream_->avg_frame_rate = frameRate;
    picture_->format = format;
    picture_->width = width_;
    picture_->height = height_;
    if (av_frame_get_buffer(picture_.get(), 0) < 0) throw CommandError("out of memory");
    scaler_.reset(sws_getContext(width_, height_, AV_PIX_FMT_BGRA, width_, height_, format, SWS_BILINEAR, nullptr,
                                 nullptr, nullptr));
    if (!scaler_) throw writeError(path_, "cannot convert to the encoder's pixel format");
}

void VideoWriter::write(const Frame& frame)
{
    if (av_frame_make_writable(picture_.get()) < 0) throw CommandError("out of memory");
    const uint8_t* planes[4] = {reinterpret_cast<const uint8_t*>(frame.samples.data()), nullptr, nullptr, nullptr};
    const int strides[4] = {frame.width * 4, 0, 0, 0};
    sws_scale(scaler_.get(), planes, strides, 0, frame.height, picture_->data, picture_->linesize);
    picture_->pts = nextPts_++;
    if (const int rc = avcodec_send_frame(encoder_.get(), picture_.get()); rc < 0) {
        throw writeError(path_, "cannot encode (" + av::errorText(rc) + ")");
    }
    drainPackets();
}

void VideoWriter::drainPackets()
{
    while (avcodec_receive_packet(encoder_.get(), packet_.get()) == 0) {
        // Every frame lasts one tick; without it MP4 gives the last frame no time and
        // players drop it.
        if (packet_->duration == 0) packet_->duration = 1;
        av_packet_rescale_ts(packet_.get(), encoder_->time_base, stream_->time_base);
        packet_->stream_index = stream_->index;
        const int rc = av_interleaved_write_frame(output_.get(), packet_.get());
        av_packet_unref(packet_.get());
        if (rc < 0) throw writeError(path_, "cannot write (" + av::errorText(rc) + ")");
    }
}

void VideoWriter::finish()
{
    if (finished_) return;
    finished_ = true;
    avcodec_send_frame(encoder_.get(), nullptr);
    drainPackets();
    if (const int rc = av_write_trailer(output_.get()); rc < 0) {
        throw writeError(path_, "cannot write (" + av::errorText(rc) + ")");
    }
}

}  // namespace qx::qxfx
