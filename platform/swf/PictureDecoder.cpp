#include "platform/swf/PictureDecoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <cstring>

namespace qx::swf {

namespace {

struct CodecFree {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameFree {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketFree {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct ScalerFree {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};

uint32_t premultiplied(uint32_t s)
{
    const uint32_t a = s >> 24;
    const auto scale = [a](uint32_t c) { return (c * a + 127) / 255; };
    return a << 24 | scale((s >> 16) & 0xFF) << 16 | scale((s >> 8) & 0xFF) << 8 | scale(s & 0xFF);
}

// JPEG pictures decode to the full-range ("J") formats, which the converter takes only
// as their plain forms with the full range set.
AVPixelFormat plainFormat(AVPixelFormat format, bool& fullRange)
{
    fullRange = true;
    switch (format) {
    case AV_PIX_FMT_YUVJ420P: return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P: return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P: return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P: return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ411P: return AV_PIX_FMT_YUV411P;
    default: fullRange = false; return format;
    }
}

std::unique_ptr<SwsContext, ScalerFree> converter(const AVFrame& frame)
{
    bool fullRange = false;
    const AVPixelFormat format = plainFormat(AVPixelFormat(frame.format), fullRange);
    std::unique_ptr<SwsContext, ScalerFree> scaler(sws_getContext(frame.width, frame.height, format, frame.width,
                                                                  frame.height, AV_PIX_FMT_BGRA, SWS_POINT, nullptr,
                                                                  nullptr, nullptr));
    if (scaler && fullRange) {
        int* inverse = nullptr;
        int* table = nullptr;
        int sourceRange = 0;
        int targetRange = 0;
        int brightness = 0;
        int contrast = 0;
        int saturation = 0;
        sws_getColorspaceDetails(scaler.get(), &inverse, &sourceRange, &table, &targetRange, &brightness, &contrast,
                                 &saturation);
        sws_setColorspaceDetails(scaler.get(), inverse, 1, table, targetRange, brightness, contrast, saturation);
    }
    return scaler;
}

AVCodecID codecOf(std::span<const uint8_t> data)
{
    if (data.size() >= 2 && data[0] == 0xFF && data[1] == 0xD8) return AV_CODEC_ID_MJPEG;
    if (data.size() >= 8 && std::memcmp(data.data(), "\x89PNG\r\n\x1a\n", 8) == 0) return AV_CODEC_ID_PNG;
    if (data.size() >= 6 &&
        (std::memcmp(data.data(), "GIF87a", 6) == 0 || std::memcmp(data.data(), "GIF89a", 6) == 0)) {
        return AV_CODEC_ID_GIF;
    }
    return AV_CODEC_ID_NONE;
}

// The first picture the decoder gives for `data`.
std::unique_ptr<AVFrame, FrameFree> decodeFrame(AVCodecID id, std::span<const uint8_t> data)
{
    const AVCodec* codec = avcodec_find_decoder(id);
    if (!codec || data.size() > size_t(INT32_MAX) - AV_INPUT_BUFFER_PADDING_SIZE) return nullptr;
    const std::unique_ptr<AVCodecContext, CodecFree> context(avcodec_alloc_context3(codec));
    const std::unique_ptr<AVPacket, PacketFree> packet(av_packet_alloc());
    std::unique_ptr<AVFrame, FrameFree> frame(av_frame_alloc());
    if (!context || !packet || !frame) return nullptr;
    context->thread_count = 1;
    context->max_pixels = kMaxBitmapSamples;  // the decoder refuses larger pictures before allocating
    if (avcodec_open2(context.get(), codec, nullptr) < 0 || av_new_packet(packet.get(), int(data.size())) < 0) {
        return nullptr;
    }
    std::memcpy(packet->data, data.data(), data.size());  // the packet's padding is zeroed
    if (avcodec_send_packet(context.get(), packet.get()) < 0) return nullptr;
    avcodec_send_packet(context.get(), nullptr);
    if (avcodec_receive_frame(context.get(), frame.get()) < 0) return nullptr;
    return frame;
}

}  // namespace

std::optional<DecodedBitmap> decodePicture(std::span<const uint8_t> data)
{
    const AVCodecID id = codecOf(data);
    if (id == AV_CODEC_ID_NONE) return std::nullopt;
    const auto frame = decodeFrame(id, data);
    if (!frame) return std::nullopt;
    const int width = frame->width;
    const int height = frame->height;
    if (width <= 0 || height <= 0 || width > kMaxBitmapSide || height > kMaxBitmapSide ||
        int64_t(width) * height > kMaxBitmapSamples) {
        return std::nullopt;
    }
    const auto scaler = converter(*frame);
    // The converter's vector loops may write past the end of a row: it writes into a
    // padded picture, whose rows are then copied out.
    const std::unique_ptr<AVFrame, FrameFree> converted(av_frame_alloc());
    if (!scaler || !converted) return std::nullopt;
    converted->format = AV_PIX_FMT_BGRA;
    converted->width = width;
    converted->height = height;
    if (av_frame_get_buffer(converted.get(), 64) < 0 || sws_scale(scaler.get(), frame->data, frame->linesize, 0, height,
                                                                  converted->data, converted->linesize) != height) {
        return std::nullopt;
    }
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(AVPixelFormat(frame->format));
    const bool hasAlpha = format && (format->flags & (AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_PAL));
    DecodedBitmap bitmap{width, height, std::vector<uint32_t>(size_t(width) * size_t(height))};
    for (int y = 0; y < height; ++y) {
        const auto* row = reinterpret_cast<const uint32_t*>(converted->data[0] + ptrdiff_t(y) * converted->linesize[0]);
        uint32_t* out = bitmap.samples.data() + size_t(y) * size_t(width);
        for (int x = 0; x < width; ++x) out[x] = hasAlpha ? premultiplied(row[x]) : row[x] | 0xFF000000u;
    }
    return bitmap;
}

}  // namespace qx::swf
