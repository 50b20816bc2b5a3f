#include "effects/OldFilm.h"

#include "platform/draw2d/Graphics.h"
#include "platform/imaging/BitmapHandle.h"
#include "platform/imaging/ColorOps.h"
#include "platform/imaging/DeviceContext.h"
#include "platform/imaging/Filters.h"
#include "platform/os/CRuntime.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace qx {

namespace {

using draw2d::Color;
using draw2d::Graphics;
using draw2d::PointF;
using os::rand;

// A chance in percent: "at most", so that 0 still fires in one frame of 100.
bool chance(LONG percent) { return rand() % 100 <= percent; }

int randomSign() { return rand() % 2 == 0 ? 1 : -1; }

// rand() % n for a divisor that bad parameters could make zero.
int randomBelow(LONG n) { return n == 0 ? 0 : rand() % n; }

constexpr Color kBlack = Color::fromArgb(255, 0, 0, 0);

// Shake: the picture painted on itself moved by whole rows. Returns the offset, or
// nothing when this frame does not shake.
std::optional<int> shake(Graphics& graphics, const draw2d::Bitmap& picture, ParamValues params, int W, int H)
{
    if (!chance(params[OldFilmParam::kShakeLevel])) return std::nullopt;
    const int sign = randomSign();
    const int offset = sign * randomBelow(params[OldFilmParam::kShakeStrength] + 1);
    graphics.setCompositingMode(draw2d::CompositingMode::SourceCopy);
    graphics.drawImage(picture, {0.0f, float(offset), float(W), float(H)});
    graphics.setCompositingMode(draw2d::CompositingMode::SourceOver);
    return offset;
}

void hairCurves(Graphics& graphics, ParamValues params, int W, int H)
{
    const draw2d::Pen pen{kBlack, 1.0f, nullptr};
    // The bound is drawn anew before every pass, the pass that ends the loop included.
    const LONG bound = params[OldFilmParam::kHairCount];
    const auto limit = [&]() { return bound < 1 ? 0.0 : (H / 320.0) * (rand() % bound); };
    for (int i = 0; i < limit(); ++i) {
        const float x = float(rand() % W);
        const float y = float(rand() % H);
        PointF points[3] = {{x, y}, {}, {}};
        for (int n = 1; n < 3; ++n) {
            const int signX = randomSign();
            const int a = signX * (rand() % 10);
            const int signY = randomSign();
            const int b = signY * (rand() % 10);
            points[n] = {float(x + (W / 320.0) * a), float(y + (H / 240.0) * b)};
        }
        graphics.drawCurve(pen, points, float((rand() % 20) / 10.0));
    }
}

void verticalScratch(Graphics& graphics, FilmState& film, ParamValues params, int W, int H)
{
    float& position = film[0];
    float& speed = film[1];
    float& startX = film[2];
    float& endX = film[3];
    if (position == 0.0f || (position >= 1000.0f && chance(params[OldFilmParam::kScratchFactor]))) {
        position = 0.0f;
        speed = float(rand() % 950 + 50.0);
        startX = float(rand() % W);
        endX = float(rand() % W);
    }
    if (position >= 0.0f && position <= 1000.0f && speed > 0.0f) {
        const float x = float((double(endX) - startX) * position / 1000.0 + startX);
        const draw2d::HatchBrush brush{draw2d::HatchStyle::DashedUpwardDiagonal, Color::fromArgb(255, 255, 255, 255),
                                       Color::fromArgb(50, 255, 255, 255)};
        graphics.drawLine(draw2d::Pen{Color{}, 1.0f, &brush}, {x, 0.0f}, {x, float(H)});
        position += speed;
    }
}

void flash(Graphics& graphics, ParamValues params, int W, int H)
{
    const int c = rand() % 100;
    if (c <= params[OldFilmParam::kFlashStrength]) {
        graphics.fillRectangle(c % 2 == 0 ? Color::fromArgb(50, 255, 255, 255) : Color::fromArgb(50, 0, 0, 0), 0, 0, W,
                               H);
    }
}

}  // namespace

HRESULT OldFilmImage(imaging::BitmapHandle& handle, double, ParamValues params, FilmState* film)
{
    if (handle.isNull()) return S_OK;
    const int W = handle.width();
    const int H = handle.height();
    {
        imaging::DeviceContext context(handle);
        Graphics graphics(context.bitmap());
        std::optional<int> offset;
        if (const auto picture = context.bitmap().clone()) offset = shake(graphics, *picture, params, W, H);
        hairCurves(graphics, params, W, H);
        if (film) verticalScratch(graphics, *film, params, W, H);
        if (offset) {
            // The strip the shake uncovered.
            const int top = *offset < 1 ? *offset + H : 0;
            graphics.fillRectangle(kBlack, 0, top, W, std::abs(*offset));
        }
        flash(graphics, params, W, H);
    }
    imaging::posterize(handle, params[OldFilmParam::kPosterize]);
    imaging::addNoise(handle, params[OldFilmParam::kNoiseLevel], int32_t(imaging::NoiseChannel::all));
    const int64_t saturation = params[OldFilmParam::kDesaturation] * int64_t(-10);
    imaging::changeSaturation(handle, int32_t(std::clamp<int64_t>(saturation, INT32_MIN, INT32_MAX)));
    imaging::blur(handle, params[OldFilmParam::kBlur]);
    return S_OK;
}

void OldFilmRoutine::setUp(ParamValues) { film.emplace(); }

HRESULT OldFilmRoutine::apply(imaging::BitmapHandle& handle, double progress, ParamValues params)
{
    return OldFilmImage(handle, progress, params, film ? &*film : nullptr);
}

}  // namespace qx
