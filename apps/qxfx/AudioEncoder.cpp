#include "apps/qxfx/AudioEncoder.h"

#include "apps/session/CommandError.h"

#include <algorithm>

namespace qx::qxfx {

namespace {

// The input's rate when the encoder takes it, else the nearest it takes.
int chooseRate(const AVCodec& codec, int wanted)
{
    if (!codec.supported_samplerates) return wanted;
    int best = codec.supported_samplerates[0];
    for (const int* r = codec.supported_samplerates; *r; ++r) {
        if (*r == wanted) return wanted;
        if (std::abs(*r - wanted) < std::abs(best - wanted)) best = *r;
    }
    return best;
}

}  // namespace

AudioEncoder::AudioEncoder(const AVCodecParameters& input, AVCodecID codec, AVFormatContext& container)
    : decoded_(av_frame_alloc()), converted_(av_frame_alloc()), chunk_(av_frame_alloc())
{
    const AVCodec* decoder = avcodec_find_decoder(input.codec_id);
    const AVCodec* encoder = avcodec_find_encoder(codec);
    if (!decoder || !encoder) throw CommandError("no codec for the input's audio");
    decoder_.reset(avcodec_alloc_context3(decoder));
    encoder_.reset(avcodec_alloc_context3(encoder));
    if (!decoder_ || !encoder_ || !decoded_ || !converted_ || !chunk_ ||
        avcodec_parameters_to_context(decoder_.get(), &input) < 0)
        throw CommandError("out of memory");
    if (avcodec_open2(decoder_.get(), decoder, nullptr) < 0) throw CommandError("cannot decode the input's audio");
    encoder_->sample_fmt = encoder->sample_fmts ? encoder->sample_fmts[0] : decoder_->sample_fmt;
    encoder_->sample_rate = chooseRate(*encoder, decoder_->sample_rate);
    if (av_channel_layout_copy(&encoder_->ch_layout, &decoder_->ch_layout) < 0) throw CommandError("out of memory");
    if (encoder_->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&encoder_->ch_layout, encoder_->ch_layout.nb_channels);
    encoder_->time_base = AVRational{1, encoder_->sample_rate};
    if (container.oformat->flags & AVFMT_GLOBALHEADER) encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (const int rc = avcodec_open2(encoder_.get(), encoder, nullptr); rc < 0)
        throw CommandError(std::string("cannot open the ") + encoder->name + " encoder (" + av::errorText(rc) + ")");
    stream_ = avformat_new_stream(&container, nullptr);
    if (!stream_ || avcodec_parameters_from_context(stream_->codecpar, encoder_.get()) < 0)
        throw CommandError("out of memory");
    stream_->time_base = encoder_->time_base;
    SwrContext* resampler = nullptr;
    if (swr_alloc_set_opts2(&resampler, &encoder_->ch_layout, encoder_->sample_fmt, encoder_->sample_rate,
                            &decoder_->ch_layout, decoder_->sample_fmt, decoder_->sample_rate, 0, nullptr) < 0 ||
        swr_init(resampler) < 0) {
        swr_free(&resampler);
        throw CommandError("cannot convert the input's audio");
    }
    resampler_.reset(resampler);
    fifo_.reset(av_audio_fifo_alloc(encoder_->sample_fmt, encoder_->ch_layout.nb_channels, 4096));
    if (!fifo_) throw CommandError("out of memory");
}

AudioEncoder::~AudioEncoder() = default;

std::vector<AVPacket*> AudioEncoder::push(AVPacket* packet, AVRational timeBase, int64_t shift)
{
    packetsUsed_ = 0;
    // Damaged audio is skipped, as players skip it; the video goes on.
    if (avcodec_send_packet(decoder_.get(), packet) >= 0 || !packet) decodeAll(timeBase, shift);
    encodeFrames(packet == nullptr);
    std::vector<AVPacket*> ready;
    for (size_t i = 0; i < packetsUsed_; ++i) ready.push_back(packets_[i].get());
    return ready;
}

void AudioEncoder::decodeAll(AVRational timeBase, int64_t shift)
{
    while (avcodec_receive_frame(decoder_.get(), decoded_.get()) == 0) {
        if (nextPts_ == AV_NOPTS_VALUE) {
            const int64_t start =
                decoded_->best_effort_timestamp == AV_NOPTS_VALUE ? 0 : decoded_->best_effort_timestamp;
            nextPts_ = std::max<int64_t>(0, av_rescale_q(start + shift, timeBase, encoder_->time_base));
        }
        av_frame_unref(converted_.get());
        converted_->format = encoder_->sample_fmt;
        converted_->sample_rate = encoder_->sample_rate;
        if (av_channel_layout_copy(&converted_->ch_layout, &encoder_->ch_layout) < 0 ||
            swr_convert_frame(resampler_.get(), converted_.get(), decoded_.get()) < 0 ||
            av_audio_fifo_write(fifo_.get(), reinterpret_cast<void**>(converted_->extended_data),
                                converted_->nb_samples) < converted_->nb_samples) {
            av_frame_unref(decoded_.get());
            throw CommandError("cannot convert the input's audio");
        }
        av_frame_unref(decoded_.get());
    }
}

// Frames of the encoder's size from the samples gathered; at the end, the rest in a
// shorter frame and the encoder drained.
void AudioEncoder::encodeFrames(bool last)
{
    const int size = encoder_->frame_size > 0 ? encoder_->frame_size : 1024;
    while (av_audio_fifo_size(fifo_.get()) >= size || (last && av_audio_fifo_size(fifo_.get()) > 0)) {
        const int samples = std::min(size, av_audio_fifo_size(fifo_.get()));
        av_frame_unref(chunk_.get());
        chunk_->nb_samples = samples;
        chunk_->format = encoder_->sample_fmt;
        chunk_->sample_rate = encoder_->sample_rate;
        if (av_channel_layout_copy(&chunk_->ch_layout, &encoder_->ch_layout) < 0 ||
            av_frame_get_buffer(chunk_.get(), 0) < 0)
            throw CommandError("out of memory");
        av_audio_fifo_read(fifo_.get(), reinterpret_cast<void**>(chunk_->data), samples);
        chunk_->pts = nextPts_ == AV_NOPTS_VALUE ? 0 : nextPts_;
        nextPts_ = chunk_->pts + samples;
        if (avcodec_send_frame(encoder_.get(), chunk_.get()) < 0) throw CommandError("cannot encode the audio");
        receivePackets();
    }
    if (last) {
        avcodec_send_frame(encoder_.get(), nullptr);
        receivePackets();
    }
}

void AudioEncoder::receivePackets()
{
    while (true) {
        if (packetsUsed_ == packets_.size()) packets_.emplace_back(av_packet_alloc());
        AVPacket* packet = packets_[packetsUsed_].get();
        if (!packet) throw CommandError("out of memory");
        av_packet_unref(packet);
        if (avcodec_receive_packet(encoder_.get(), packet) != 0) return;
        av_packet_rescale_ts(packet, encoder_->time_base, stream_->time_base);
        packet->stream_index = stream_->index;
        ++packetsUsed_;
    }
}

}  // namespace qx::qxfx
