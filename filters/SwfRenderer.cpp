#include "filters/SwfRenderer.h"

#include "platform/draw2d/Graphics.h"
#include "platform/os/FilePath.h"
#include "platform/swf/FileBytes.h"
#include "wrap3d/DataPath.h"

#include <cmath>

namespace qx {

namespace {

// The largest frame drawn: 16384 samples a side, 2^26 in all.
constexpr LONG kMaxSide = 16384;
constexpr int64_t kMaxSamples = int64_t(1) << 26;

constexpr uint32_t kMagentaSample = 0xFFFF00FFu;  // B, G, R, A bytes: 255, 0, 255, 255

bool sizeAllowed(LONG width, LONG height)
{
    return width > 0 && height > 0 && width <= kMaxSide && height <= kMaxSide && int64_t(width) * height <= kMaxSamples;
}

// The frame rate of the movie's header, as the header library gave it; 0 when the
// header cannot be read.
float headerFps(const std::string& file)
{
    const auto bytes = swf::readWholeFile(file);
    const auto header = bytes ? swf::readHeader(*bytes) : std::nullopt;
    return header ? float(header->frameRate) : 0.0f;
}

}  // namespace

CSwfRenderer::~CSwfRenderer()
{
    if (!thread.joinable()) return;
    queue.post({kQuitMessage});
    thread.join();
}

int CSwfRenderer::Load(std::u16string_view file, LONG frameWidth, LONG frameHeight, int fit)
{
    if (thread.joinable()) return 0;  // loaded once in the renderer's life
    width = frameWidth;
    height = frameHeight;
    path = DataPath() + u"\\" + std::u16string(file);
    if (!os::pathExists(path)) return 0;
    exactFit = fit;
    fps = headerFps(os::findPath(path));
    try {
        thread = std::thread([this] { Run(); });
    } catch (const std::system_error&) {
        return 0;
    }
    doneEvent.wait();
    return 1;
}

void CSwfRenderer::Run()
{
    Host();
    doneEvent.set();
    for (;;) {
        const os::ThreadMessage message = queue.get();
        if (message.message == kQuitMessage) break;
        if (message.message == kDrawMessage) {
            DrawFrame();
            doneEvent.set();
        }
    }
    host.reset();
    bits = {};
}

// The set-up of the player: the movie, its frame count, and the bitmap it draws into.
// What fails here leaves no frames, and later draws leave the bitmap as it is.
void CSwfRenderer::Host()
{
    if (!sizeAllowed(width, height)) return;
    bits.assign(size_t(width) * size_t(height), kMagentaSample);
    host = swf::Movie::loadFile(os::findPath(path));
    if (host) totalFrames = LONG(std::min<size_t>(host->frameCount(), INT32_MAX));
}

int64_t CSwfRenderer::FrameIndex() const
{
    // With a rate and a span the movie plays at its own pace and loops over a long clip;
    // without, its frames are spread over the clip.
    const bool paced = fps != 0.0f && duration != 0.0f;
    const double frame = std::trunc(paced ? double(progress) * duration * fps : double(totalFrames) * progress);
    if (!std::isfinite(frame) || std::abs(frame) > 1e15) return -1;
    const int64_t index = paced ? int64_t(frame) % totalFrames : int64_t(frame);
    // Past the last frame (a progress of 1 without a span) the jump fails, as the
    // player's does, and the bitmap keeps the frame before.
    return index >= 0 && index < totalFrames ? index : -1;
}

void CSwfRenderer::DrawFrame()
{
    if (totalFrames == 0 || !host) return;
    const int64_t index = FrameIndex();
    if (index < 0) return;
    draw2d::Bitmap target(width, height, width * 4, bits.data());
    const swf::RenderOptions options{exactFit ? swf::ScaleMode::ExactFit : swf::ScaleMode::ShowAll, false, kMagenta};
    host->render(size_t(index), target, options);
}

void CSwfRenderer::Draw(uint32_t* pixels, float frameProgress, int keyed, float x, float y, float scaleX, float scaleY)
{
    if (!thread.joinable()) return;  // nothing loaded
    progress = frameProgress;
    queue.post({kDrawMessage});
    doneEvent.wait();
    if (!pixels || bits.empty()) return;
    if (x == 0.0f && y == 0.0f && scaleX == 1.0f && scaleY == 1.0f) {
        // The whole frame onto the whole target, sample for sample: copied, keyed
        // samples skipped, the target's own samples untouched, whatever their alpha.
        for (size_t i = 0; i < bits.size(); ++i) {
            if (!keyed || bits[i] != kMagentaSample) pixels[i] = bits[i];
        }
        return;
    }
    draw2d::Bitmap frame(width, height, width * 4, bits.data());
    draw2d::Bitmap target(width, height, width * 4, pixels);
    // The frame's samples are all opaque, so drawing them over the target copies them;
    // keyed samples become transparent and leave the target's own samples in place.
    draw2d::Graphics graphics(target);
    graphics.setCompositingMode(draw2d::CompositingMode::SourceOver);
    draw2d::ImageAttributes attributes;
    const draw2d::Color magenta = draw2d::Color::fromArgb(255, 255, 0, 255);
    attributes.SetColorKey(magenta, magenta);
    const draw2d::RectF destination{float(width) * x, float(height) * y, float(width) * scaleX, float(height) * scaleY};
    graphics.drawImage(frame, destination, {0.0f, 0.0f, float(width), float(height)}, keyed ? &attributes : nullptr);
}

}  // namespace qx
