#include "apps/qxfx/EditCommand.h"

#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/CommandRun.h"
#include "apps/qxfx/TestPattern.h"
#include "apps/qxfx/VideoReader.h"
#include "apps/session/ContentPack.h"
#include "effects/dialogs/DialogRequest.h"
#include "host/DynamicEffect.h"
#include "host/EffectParams.h"
#include "platform/com/Bstr.h"
#include "platform/imaging/BitmapHandle.h"
#include "platform/os/WideText.h"

#include <algorithm>
#include <cstdio>

namespace qx::qxfx {

namespace {

constexpr const char* kUsage =
    "usage: qxfx edit -e ID [options]\n"
    "Opens the properties dialog of an effect and prints the parameter text it gives back\n"
    "on OK, for 'qxfx render -p' or the frei0r filters. Cancel prints nothing (exit 1).\n"
    "  -e, --effect ID      effect id, as 'qxfx list' shows it (0 to 9, 2001, 5000, 5002\n"
    "                       have a dialog)\n"
    "  -p, --params TEXT    the text to start from (default: the effect's defaults)\n"
    "  -i, --input PATH     the picture the dialog shows (an image or the first frame of a\n"
    "                       video); default: the test pattern\n"
    "      --size WxH       size of the test pattern (default 640x360)\n"
    "      --aspect RATIO   frame shape for the rectangles (default: the picture's)\n"
    "      --data PATH      data path of the content pack, for the 3D previews\n";

struct EditOptions {
    std::optional<LONG> effectId;
    std::optional<std::string> params;
    std::string input;
    int width = 640;
    int height = 360;
    float aspect = 0.0f;
    std::string dataPath;
    bool help = false;
};

EditOptions parseOptions(std::span<const std::string_view> arguments)
{
    EditOptions o;
    o.dataPath = findDataPath("/proc/self/exe");
    ArgReader args(arguments);
    while (!args.done()) {
        const std::string_view option = args.take();
        if (option == "-e" || option == "--effect")
            o.effectId = LONG(args.integer(option, INT32_MIN, INT32_MAX));
        else if (option == "-p" || option == "--params")
            o.params = args.value(option);
        else if (option == "-i" || option == "--input")
            o.input = args.value(option);
        else if (option == "--size")
            std::tie(o.width, o.height) = args.size(option, kMaxFrameSide);
        else if (option == "--aspect")
            o.aspect = float(args.number(option, 0.01, 100.0));
        else if (option == "--data")
            o.dataPath = args.value(option);
        else if (option == "-h" || option == "--help")
            o.help = true;
        else
            throw CommandError("unknown option '" + std::string(option) + "' (see 'qxfx edit --help')");
    }
    if (!o.help && !o.effectId) throw CommandError("give the effect with -e ID (see 'qxfx edit --help')");
    return o;
}

Frame readPicture(const EditOptions& o)
{
    if (o.input.empty()) {
        Frame frame = makeFrame(o.width, o.height);
        drawTestPattern(frame, 0, 1);
        return frame;
    }
    VideoReader reader(o.input, 0);
    Frame frame = makeFrame(reader.width(), reader.height());
    if (!reader.read(frame)) throw CommandError("'" + o.input + "': no frame could be decoded");
    return frame;
}

imaging::BitmapHandle toBitmap(const Frame& frame)
{
    imaging::DibHeader header;
    header.width = frame.width;
    header.height = -frame.height;  // the frame is top-down
    imaging::BitmapHandle bitmap;
    bitmap.loadDib(header, std::span(reinterpret_cast<const uint8_t*>(frame.samples.data()), frame.samples.size() * 4));
    return bitmap;
}

// The starting list: the text given, or the effect's defaults as the host reports them.
ParamList startingList(CQXDynamicEffect& host, LONG index, const std::optional<std::string>& text)
{
    ParamList list;
    if (!text) {
        host.GetEffectDefaults(index, list.values.data(), &list.count);
        return list;
    }
    const auto parsed = parseParams(os::fromUtf8(*text));
    if (!parsed) throw CommandError("'" + *text + "': more than 16 values");
    return *parsed;
}

int edit(const EditOptions& o)
{
    const auto host = CQXDynamicEffect::Create();
    LONG index = -1;
    if (host->GetIndexFromID(*o.effectId, &index) != S_OK)
        throw CommandError("no effect with id " + std::to_string(*o.effectId) + " (see 'qxfx list')");
    if (!o.dataPath.empty() && needsPack(*o.effectId)) host->SetGlobalDataPath(Bstr(os::fromUtf8(o.dataPath)).get());
    const Frame frame = readPicture(o);
    imaging::BitmapHandle picture = toBitmap(frame);
    host->put_AspectRatio(o.aspect > 0.0f ? o.aspect : float(double(frame.width) / double(frame.height)));

    ParamList list = startingList(*host.get(), index, o.params);
    const LONG given = list.count;
    if (dialogs::dialogResource(*o.effectId) == 0)
        std::fprintf(stderr, "qxfx edit: effect %d has no dialog; its text is unchanged\n", int(*o.effectId));
    const HRESULT hr = host->ShowPropertiesDialog(index, list.values.data(), &list.count, &picture);
    if (hr == S_FALSE) {
        std::fputs("qxfx edit: cancelled\n", stderr);
        return 1;
    }
    if (hr == E_FAIL) throw CommandError("the dialogs can't be shown here (no display, or no Qt)");
    if (hr != S_OK) throw CommandError("the dialog failed (" + std::to_string(hr) + ")");
    // The dialog edits every value of the effect, whatever count the text had.
    const EffectDescriptor& effect = EffectTable[size_t(index)];
    const LONG count = std::max({list.count, given, LONG(effect.params.size())});
    std::printf("%s\n", os::toUtf8(formatParams(std::span(list.values).first(size_t(count)))).c_str());
    return 0;
}

}  // namespace

int runEdit(std::span<const std::string_view> args)
{
    return runCommand("edit", args, {kUsage}, parseOptions, [](auto& options) { return edit(options); });
}

}  // namespace qx::qxfx
