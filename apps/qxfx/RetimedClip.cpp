#include "apps/qxfx/RetimedClip.h"

#include "platform/draw2d/Graphics.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace qx::qxfx {

namespace {

// Large enough for hours of video, small enough that frame counts stay exact in a double.
constexpr long kMaxFrames = 100'000'000;

}  // namespace

RetimedClip::RetimedClip(const std::string& path, double rate, int threads) : path_(path), rate_(rate)
{
    std::string error;
    reader_ = video::MovieReader::open(path, threads, &error);
    if (!reader_) throw CommandError("'" + path + "': " + error);
    const double seconds = double(video::MovieReader::countFrames(path)) / reader_->frameRate();
    frames_ = std::clamp(long(std::lround(seconds * rate)), 1L, kMaxFrames);
}

void RetimedClip::read(long index, Frame& out)
{
    const uint32_t* pixels = reader_->frameAt((double(index) + 0.5) / rate_);
    if (!pixels) throw CommandError("'" + path_ + "': no frame could be decoded");
    const int w = reader_->width();
    const int h = reader_->height();
    if (w == out.width && h == out.height) {
        std::memcpy(out.samples.data(), pixels, out.samples.size() * sizeof(uint32_t));
        return;
    }
    // The reader's picture is only read from.
    const draw2d::Bitmap picture(w, h, w * 4, const_cast<uint32_t*>(pixels));
    draw2d::Bitmap frame(out.width, out.height, out.width * 4, out.samples.data());
    draw2d::Graphics graphics(frame);
    graphics.clear(draw2d::Color::fromArgb(0, 0, 0, 0));
    graphics.drawImage(picture, {0.0f, 0.0f, float(out.width), float(out.height)});
}

}  // namespace qx::qxfx
