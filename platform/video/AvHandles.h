#pragma once
// Owners of the FFmpeg objects that readers and writers of video hold, so that every
// path, the error paths included, frees them exactly once.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

namespace qx::video::av {

struct InputDeleter {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct OutputDeleter {
    void operator()(AVFormatContext* context) const
    {
        if (context->pb && !(context->oformat->flags & AVFMT_NOFILE)) avio_closep(&context->pb);
        avformat_free_context(context);
    }
};
struct CodecDeleter {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct ScalerDeleter {
    void operator()(SwsContext* context) const { sws_freeContext(context); }
};

using Input = std::unique_ptr<AVFormatContext, InputDeleter>;
using Output = std::unique_ptr<AVFormatContext, OutputDeleter>;
using Codec = std::unique_ptr<AVCodecContext, CodecDeleter>;
using Frame = std::unique_ptr<AVFrame, FrameDeleter>;
using Packet = std::unique_ptr<AVPacket, PacketDeleter>;
using Scaler = std::unique_ptr<SwsContext, ScalerDeleter>;

/// FFmpeg's text for an error code.
inline std::string errorText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

}  // namespace qx::video::av
