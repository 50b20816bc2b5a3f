#include "apps/qxfx/AudioTrack.h"

#include "apps/qxfx/AudioEncoder.h"
#include "apps/qxfx/Messages.h"
#include "apps/qxfx/VideoWriter.h"

namespace qx::qxfx {

namespace {

// Copies packets as they are, their times moved to the output's clock.
class AudioCopy : public AudioTrack {
public:
    AudioCopy(av::Input input, int stream, double offset, const Trim& trim, VideoWriter& writer)
        : AudioTrack(std::move(input), stream, offset, trim, writer)
    {
        output_ = avformat_new_stream(&writer.container(), nullptr);
        if (!output_ || avcodec_parameters_copy(output_->codecpar, inputStream().codecpar) < 0)
            throw CommandError("out of memory");
        output_->codecpar->codec_tag = 0;
        output_->time_base = inputStream().time_base;
    }
    std::string how() const override { return "copied"; }

private:
    void carry(AVPacket& packet) override
    {
        const int64_t shift = outputTicks(0);
        if (packet.pts != AV_NOPTS_VALUE) packet.pts += shift;
        if (packet.dts != AV_NOPTS_VALUE) packet.dts += shift;
        av_packet_rescale_ts(&packet, inputStream().time_base, output_->time_base);
        packet.stream_index = output_->index;
        packet.pos = -1;
        writer_.writePacket(packet);
    }
    void drain() override {}
};

// Decodes and encodes again with the container's own audio codec.
class AudioRecode : public AudioTrack {
public:
    AudioRecode(av::Input input, int stream, double offset, const Trim& trim, VideoWriter& writer, AVCodecID codec)
        : AudioTrack(std::move(input), stream, offset, trim, writer),
          encoder_(*inputStream().codecpar, codec, writer.container())
    {
        output_ = encoder_.stream();
    }
    std::string how() const override { return std::string("encoded as ") + encoder_.codecName(); }

private:
    void carry(AVPacket& packet) override
    {
        for (AVPacket* encoded : encoder_.push(&packet, inputStream().time_base, outputTicks(0)))
            writer_.writePacket(*encoded);
    }
    void drain() override
    {
        for (AVPacket* encoded : encoder_.push(nullptr, inputStream().time_base, outputTicks(0)))
            writer_.writePacket(*encoded);
    }
    AudioEncoder encoder_;
};

// The video stream's first time, in seconds: the output's zero before any trim.
double videoStart(const AVFormatContext& input)
{
    const int video = av_find_best_stream(const_cast<AVFormatContext*>(&input), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (video < 0) return 0.0;
    const AVStream& stream = *input.streams[video];
    return stream.start_time == AV_NOPTS_VALUE ? 0.0 : double(stream.start_time) * av_q2d(stream.time_base);
}

}  // namespace

std::unique_ptr<AudioTrack> AudioTrack::open(const std::string& path, const Trim& trim, VideoWriter& writer)
{
    AVFormatContext* opened = nullptr;
    if (path == "-" || avformat_open_input(&opened, mediaUrl(path, false).c_str(), nullptr, nullptr) < 0)
        return nullptr;
    av::Input input(opened);
    if (avformat_find_stream_info(input.get(), nullptr) < 0) return nullptr;
    const int stream = av_find_best_stream(input.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (stream < 0) return nullptr;
    const double offset = videoStart(*input) + trim.start;
    const AVOutputFormat& format = *writer.container().oformat;
    const AVCodecID codec = input->streams[stream]->codecpar->codec_id;
    if (avformat_query_codec(&format, codec, FF_COMPLIANCE_NORMAL) == 1)
        return std::make_unique<AudioCopy>(std::move(input), stream, offset, trim, writer);
    if (format.audio_codec == AV_CODEC_ID_NONE || !avcodec_find_encoder(format.audio_codec) ||
        !avcodec_find_decoder(codec)) {
        warn("the input's audio is not kept: " + std::string(format.long_name ? format.long_name : format.name) +
             " output takes no audio that can be made from it");
        return nullptr;
    }
    return std::make_unique<AudioRecode>(std::move(input), stream, offset, trim, writer, format.audio_codec);
}

AudioTrack::AudioTrack(av::Input input, int streamIndex, double offsetSeconds, const Trim& trim, VideoWriter& writer)
    : writer_(writer), input_(std::move(input)), streamIndex_(streamIndex), offsetSeconds_(offsetSeconds), trim_(trim),
      pending_(av_packet_alloc())
{
    if (!pending_) throw CommandError("out of memory");
}

AudioTrack::~AudioTrack() = default;

int64_t AudioTrack::outputTicks(int64_t inputTicks) const
{
    return inputTicks -
           av_rescale_q(int64_t(offsetSeconds_ * AV_TIME_BASE), AVRational{1, AV_TIME_BASE}, inputStream().time_base);
}

bool AudioTrack::readPending()
{
    while (!hasPending_ && !ended_) {
        if (av_read_frame(input_.get(), pending_.get()) < 0) {
            ended_ = true;
            break;
        }
        if (pending_->stream_index == streamIndex_ && pending_->pts != AV_NOPTS_VALUE)
            hasPending_ = true;
        else
            av_packet_unref(pending_.get());
    }
    return hasPending_;
}

double AudioTrack::pendingSeconds() const
{
    return double(pending_->pts) * av_q2d(inputStream().time_base) - offsetSeconds_;
}

void AudioTrack::writeUntil(double seconds)
{
    while (readPending() && pendingSeconds() < seconds) {
        const double time = pendingSeconds();
        const double lasts = double(pending_->duration) * av_q2d(inputStream().time_base);
        // Sound before the trim's start is left out, but for a codec's priming packet that
        // ends where the clip starts; sound past its end ends the track.
        const bool kept = trim_.start > 0.0 ? time >= -1e-6 : time + lasts >= 0.0;
        if (time >= trim_.length) ended_ = true;
        if (kept && !ended_) carry(*pending_);
        av_packet_unref(pending_.get());
        hasPending_ = false;
    }
}

void AudioTrack::finish(double seconds)
{
    writeUntil(seconds);
    drain();
}

}  // namespace qx::qxfx
