#include "apps/qxfx/OutputOptions.h"

#include "apps/qxfx/Messages.h"
#include "apps/qxfx/VideoReader.h"

namespace qx::qxfx {

const char* const kOutputOptionsHelp =
    "  -o, --output PATH    video file (.mp4, .mkv, .mov: H.264; .webm: VP9; .gif), PNG or\n"
    "                       JPEG frames with a number pattern (frames/f-%04d.png), or '-'\n"
    "                       for standard output with -f\n"
    "      --discard        render and drop the frames (for timing)\n"
    "  -f, --format NAME    container, as FFmpeg names it (needed for '-': yuv4mpegpipe,\n"
    "                       nut, rawvideo (BGRA samples), matroska...)\n"
    "  -y                   overwrite an existing output (never an input)\n"
    "  -n                   never overwrite: an existing output is an error\n"
    "      --lossless       a lossless codec with alpha (FFV1 or PNG) instead of H.264\n"
    "  -c, --codec NAME     FFmpeg's video encoder (libx264, libvpx-vp9, ffv1, prores_ks...)\n"
    "      --crf N          constant quality of H.264 and VP9 (default 18 and 32; lower\n"
    "                       is better)\n"
    "      --preset NAME    H.264 speed preset (default veryfast)\n"
    "      --threads N      threads of FFmpeg's decoding and encoding and, for render,\n"
    "                       of the effect's rows; render reads, applies the effect and\n"
    "                       writes at once unless N is 1 (default 0: every core)\n"
    "  -q, --quiet          no warnings\n"
    "  -v, --verbose        FFmpeg's own messages too\n"
    "      --loglevel NAME  FFmpeg's messages from this level on: quiet, error, warning,\n"
    "                       info, verbose, debug\n";

bool readOutputOption(ArgReader& args, std::string_view option, OutputOptions& o)
{
    if (option == "-o" || option == "--output")
        o.output = args.value(option);
    else if (option == "--discard")
        o.discard = true;
    else if (option == "-f" || option == "--format")
        o.encode.format = args.value(option);
    else if (option == "-y")
        o.overwrite = o.overwrite == Overwrite::Never ? Overwrite::Never : Overwrite::Always;
    else if (option == "-n")
        o.overwrite = Overwrite::Never;
    else if (option == "--lossless")
        o.encode.lossless = true;
    else if (option == "-c" || option == "--codec")
        o.encode.codec = args.value(option);
    else if (option == "--crf")
        o.encode.crf = int(args.integer(option, 0, 63));
    else if (option == "--preset")
        o.encode.preset = args.value(option);
    else if (option == "--threads")
        o.encode.threads = int(args.integer(option, 0, 64));
    else if (option == "-q" || option == "--quiet")
        setVerbosity(Verbosity::Quiet);
    else if (option == "-v" || option == "--verbose")
        setVerbosity(Verbosity::Verbose);
    else if (option == "--loglevel")
        setFfmpegLogLevel(args.value(option));
    else
        return false;
    return true;
}

EncodeSettings constantRate(EncodeSettings encode, double fps)
{
    encode.frameRate = av_d2q(fps, 100000);
    encode.timeBase = {0, 0};
    return encode;
}

void checkOutputOptions(const OutputOptions& o, const char* command)
{
    if (o.discard == !o.output.empty())
        throw CommandError(std::string("give either -o OUTPUT or --discard (see 'qxfx ") + command + " --help')");
    if (o.output == "-" && o.encode.format.empty())
        throw CommandError("standard output needs a format: -f yuv4mpegpipe, -f nut or -f rawvideo");
}

}  // namespace qx::qxfx

namespace qx::qxfx {

namespace {

EncodeSettings forTarget(EncodeSettings encode, const std::string& target)
{
    encode.nameForFormat = target == "-" ? std::string() : target;
    return encode;
}

}  // namespace

VideoOutput::VideoOutput(const OutputOptions& o, std::span<const std::string> inputs, int width, int height,
                         const EncodeSettings& encode)
    : target_(o.output, inputs, o.overwrite),
      writer_(target_.isPipe() ? mediaUrl("-", true) : target_.writePath(), width, height, forTarget(encode, o.output))
{}

void VideoOutput::finish()
{
    writer_.finish();
    target_.commit();
}

}  // namespace qx::qxfx
