#include "apps/qxfx/CropCommand.h"

#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/CommandRun.h"
#include "apps/qxfx/Messages.h"
#include "apps/qxfx/OutputOptions.h"
#include "apps/qxfx/ProgressBar.h"
#include "apps/qxfx/VideoReader.h"
#include "filters/CropTransform.h"
#include "platform/media/HostFilters.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>

namespace qx::qxfx {

namespace {

constexpr const char* kUsage =
    "usage: qxfx crop -i INPUT (-o OUTPUT | --discard) [options]\n"
    "Puts every frame in the centre of a black frame of a fixed size, as the crop\n"
    "transform does: frames are padded, or cut to their middle, never scaled.\n"
    "  -i, --input PATH       video or image (anything FFmpeg reads)\n"
    "      --size WxH         size of the output frames (default: the input's)\n"
    "      --anti-flicker N   blur along the columns against interlace flicker, over\n"
    "                         height / 100 * N / 10 rows (default 0: none)\n"
    "      --frames N         crop at most N frames (default: all)\n";

constexpr long kMaxFrames = 10'000'000;

struct CropOptions {
    std::string input;
    OutputOptions output;
    int width = 0;  // 0: the input's
    int height = 0;
    int antiFlicker = 0;
    long frames = kMaxFrames;
    bool help = false;
};

void readOption(ArgReader& args, std::string_view option, CropOptions& o)
{
    if (readOutputOption(args, option, o.output)) return;
    if (option == "-i" || option == "--input")
        o.input = args.value(option);
    else if (option == "--size")
        std::tie(o.width, o.height) = args.size(option, kMaxFrameSide);
    else if (option == "--anti-flicker")
        o.antiFlicker = int(args.integer(option, 0, INT16_MAX));
    else if (option == "--frames")
        o.frames = args.integer(option, 1, kMaxFrames);
    else if (option == "-h" || option == "--help")
        o.help = true;
    else
        throw CommandError("unknown option '" + std::string(option) + "' (see 'qxfx crop --help')");
}

CropOptions parseOptions(std::span<const std::string_view> arguments)
{
    CropOptions options;
    ArgReader args(arguments);
    while (!args.done()) readOption(args, args.take(), options);
    if (options.help) return options;
    if (options.input.empty()) throw CommandError("give the video with -i (see 'qxfx crop --help')");
    checkOutputOptions(options.output, "crop");
    return options;
}

/// 32-bit frames as qxfx holds them, declared with a positive height as the filter's
/// frames are: top-down rows taken as a bottom-up DIB, as the effect host hands its
/// frames to image routines. The blur reaches down the picture rather than up.
media::CMediaType rgb32Type(int width, int height)
{
    media::CMediaType type;
    type.majortype = media::MEDIATYPE_Video;
    type.subtype = media::MEDIASUBTYPE_ARGB32;
    media::VIDEOINFOHEADER info;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = height;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biSizeImage = DWORD(size_t(width) * size_t(height) * 4);
    type.SetVideoInfo(info);
    type.lSampleSize = info.bmiHeader.biSizeImage;
    return type;
}

/// Writes what comes out of the filter. A failure of the writer is kept and reported
/// once the frame is back from the filter, so that no exception crosses the filter.
class OutputFrames {
public:
    OutputFrames(const CropOptions& o, int width, int height, AVRational rate) : frame_(makeFrame(width, height))
    {
        if (!o.output.discard) {
            const std::string inputs[] = {o.input};
            out_ = std::make_unique<VideoOutput>(o.output, inputs, width, height,
                                                 constantRate(o.output.encode, av_q2d(rate)));
        }
    }

    HRESULT receive(media::IMediaSample& sample)
    {
        BYTE* bytes = nullptr;
        if (FAILED(sample.GetPointer(&bytes)) || size_t(sample.GetSize()) < frame_.samples.size() * 4) return E_FAIL;
        std::memcpy(frame_.samples.data(), bytes, frame_.samples.size() * 4);
        try {
            if (out_) out_->writer().write(frame_);
        } catch (const CommandError&) {
            failure_ = std::current_exception();
            return E_FAIL;
        }
        ++written_;
        return S_OK;
    }
    void rethrowFailure() const
    {
        if (failure_) std::rethrow_exception(failure_);
    }
    void finish()
    {
        if (out_) out_->finish();
    }
    long written() const { return written_; }

private:
    Frame frame_;
    std::unique_ptr<VideoOutput> out_;
    std::exception_ptr failure_;
    long written_ = 0;
};

struct CropGraph {
    com::ComPtr<CQXCropTransform> crop = CQXCropTransform::Create();
    com::ComPtr<media::CHostSource> source;
    com::ComPtr<media::CHostSink> sink;
    std::unique_ptr<OutputFrames> output;

    CropGraph(const CropOptions& o, const VideoReader& reader)
        : source(media::CHostSource::Create(rgb32Type(reader.width(), reader.height()), 0, 0)),
          sink(media::CHostSink::Create([](const media::CMediaType&) { return S_OK; },
                                        [this](media::IMediaSample& s) { return output->receive(s); }))
    {
        if (!crop || !source || !sink) throw CommandError("out of memory");
        crop->PutSize(o.width, o.height);
        crop->SetAntiFlickeringLevel(int16_t(o.antiFlicker));
        if (FAILED(source->Output().Connect(&crop->InputPin(), nullptr)) ||
            FAILED(crop->OutputPin().Connect(&sink->Input(), nullptr))) {
            throw CommandError("the crop transform refused " + std::to_string(reader.width()) + "x" +
                               std::to_string(reader.height()) + " to " + std::to_string(crop->Width()) + "x" +
                               std::to_string(crop->Height()));
        }
        output = std::make_unique<OutputFrames>(o, crop->Width(), crop->Height(), reader.frameRateRational());
        sink->Run(0);
        crop->Run(0);
        source->Run(0);
    }
};

int crop(const CropOptions& o)
{
    VideoReader reader(o.input, o.output.encode.threads);
    CropGraph graph(o, reader);
    Frame input = makeFrame(reader.width(), reader.height());
    const auto sample =
        media::CMediaSample::Wrap({reinterpret_cast<uint8_t*>(input.samples.data()), input.samples.size() * 4});
    const long total = std::min(o.frames, std::max<long>(1, long(VideoReader::countFrames(o.input))));
    ProgressBar bar("crop", total);
    long frames = 0;
    const InterruptGuard interruption;
    for (; frames < o.frames && !InterruptGuard::raised() && reader.read(input); ++frames) {
        if (FAILED(graph.source->Deliver(sample.get()))) {
            graph.output->rethrowFailure();
            throw CommandError("the crop transform failed on frame " + std::to_string(frames));
        }
        bar.update(frames + 1);
    }
    if (frames == 0) throw CommandError("'" + o.input + "': no frame could be decoded");
    graph.output->finish();
    return 0;
}

}  // namespace

int runCrop(std::span<const std::string_view> args)
{
    return runCommand("crop", args, {kUsage, kOutputOptionsHelp}, parseOptions,
                      [](auto& options) { return crop(options); });
}

}  // namespace qx::qxfx
