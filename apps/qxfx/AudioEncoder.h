#pragma once
// Audio decoded and encoded again, for an output whose container does not take the
// input's codec: the samples are converted to the encoder's layout and rate and cut into
// the frames it takes.
#include "apps/qxfx/AvHandles.h"

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libswresample/swresample.h>
}

#include <memory>
#include <string>
#include <vector>

namespace qx::qxfx {

class AudioEncoder {
public:
    /// An encoder of `codec` for audio like `input`, with a new stream in `container`;
    /// CommandError when either end cannot be opened.
    AudioEncoder(const AVCodecParameters& input, AVCodecID codec, AVFormatContext& container);
    ~AudioEncoder();
    AudioEncoder(const AudioEncoder&) = delete;
    AudioEncoder& operator=(const AudioEncoder&) = delete;

    AVStream* stream() const { return stream_; }
    std::string codecName() const { return encoder_->codec->name; }

    /// Decodes `packet` (null at the end, which drains everything), its times in
    /// `timeBase` and moved by `shift` ticks of it, and gives the packets encoded so far,
    /// ready for the container; they stay valid until the next call.
    std::vector<AVPacket*> push(AVPacket* packet, AVRational timeBase, int64_t shift);

private:
    void decodeAll(AVRational timeBase, int64_t shift);
    void encodeFrames(bool last);
    void receivePackets();

    av::Codec decoder_;
    av::Codec encoder_;
    AVStream* stream_ = nullptr;
    struct ResamplerDeleter {
        void operator()(SwrContext* context) const { swr_free(&context); }
    };
    struct FifoDeleter {
        void operator()(AVAudioFifo* fifo) const { av_audio_fifo_free(fifo); }
    };
    std::unique_ptr<SwrContext, ResamplerDeleter> resampler_;
    std::unique_ptr<AVAudioFifo, FifoDeleter> fifo_;
    av::Frame decoded_;
    av::Frame converted_;
    av::Frame chunk_;
    std::vector<av::Packet> packets_;
    size_t packetsUsed_ = 0;
    int64_t nextPts_ = AV_NOPTS_VALUE;  // in samples of the output
};

}  // namespace qx::qxfx
