#include "platform/draw2d/AffineDraw.h"

#include "platform/draw2d/Blend.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace qx::draw2d {

namespace {

constexpr double kFixedOne = 65536.0;  // 16.16 fixed point of source positions

// a and b mixed with `w` (0..256) of b, four channels at once in two lanes each.
inline uint32_t lerp(uint32_t a, uint32_t b, uint32_t w)
{
    const uint32_t rb = ((((a & 0x00FF00FFu) * (256 - w) + (b & 0x00FF00FFu) * w) >> 8) & 0x00FF00FFu);
    const uint32_t ag = ((((a >> 8) & 0x00FF00FFu) * (256 - w) + ((b >> 8) & 0x00FF00FFu) * w) & 0xFF00FF00u);
    return rb | ag;
}

// Every channel times `scale` / 256.
inline uint32_t scaled(uint32_t s, uint32_t scale)
{
    const uint32_t rb = (((s & 0x00FF00FFu) * scale) >> 8) & 0x00FF00FFu;
    const uint32_t ag = (((s >> 8) & 0x00FF00FFu) * scale) & 0xFF00FF00u;
    return rb | ag;
}

inline uint32_t premultiplied(uint32_t s)
{
    const uint32_t a = s >> 24;
    const uint32_t rb = (s & 0x00FF00FFu) * a + 0x00800080u;
    const uint32_t g = (s & 0x0000FF00u) * a + 0x00008000u;
    return (s & 0xFF000000u) | (((rb + ((rb >> 8) & 0x00FF00FFu)) >> 8) & 0x00FF00FFu) |
           (((g + ((g >> 8) & 0x0000FF00u)) >> 8) & 0x0000FF00u);
}

// Samples of the source, keyed and premultiplied as they are read.
class TexelReader {
public:
    TexelReader(const TransformedDraw& draw)
        : grid_(draw.source), opaque_(draw.sourceOpaque)
    {
        const ImageAttributes* a = draw.attributes;
        keyed_ = a && a->colorKeyEnabled;
        if (!keyed_) return;
        for (int shift : {0, 8, 16}) {
            const uint32_t low = (a->keyLow.argb >> shift) & 0xFF;
            const uint32_t high = (a->keyHigh.argb >> shift) & 0xFF;
            low_[shift / 8] = low;
            span_[shift / 8] = high >= low ? high - low : 0;
            empty_ |= high < low;  // a range that holds nothing keys nothing
        }
    }

    uint32_t at(int x, int y) const
    {
        const uint32_t s = grid_.samples[size_t(y) * size_t(grid_.pitch) + size_t(x)];
        if (keyed_ && !empty_ && inRange(s, 0) && inRange(s, 1) && inRange(s, 2)) return 0;
        return opaque_ ? s : premultiplied(s);
    }

    /// The bilinear sample at source position (u, v) in 16.16 fixed point, the edge
    /// samples repeated beyond the image.
    uint32_t sample(int32_t u, int32_t v) const
    {
        const int x = u >> 16;
        const int y = v >> 16;
        uint32_t fx = (uint32_t(u) >> 8) & 0xFF;
        uint32_t fy = (uint32_t(v) >> 8) & 0xFF;
        const int x0 = std::clamp(x, 0, grid_.width - 1);
        const int y0 = std::clamp(y, 0, grid_.height - 1);
        const int x1 = std::clamp(x + 1, 0, grid_.width - 1);
        const int y1 = std::clamp(y + 1, 0, grid_.height - 1);
        if (fy == 0 || y0 == y1) return fx == 0 || x0 == x1 ? at(x0, y0) : lerp(at(x0, y0), at(x1, y0), fx);
        if (fx == 0 || x0 == x1) return lerp(at(x0, y0), at(x0, y1), fy);
        return lerp(lerp(at(x0, y0), at(x1, y0), fx), lerp(at(x0, y1), at(x1, y1), fx), fy);
    }

private:
    bool inRange(uint32_t s, int channel) const { return ((s >> (channel * 8)) & 0xFF) - low_[channel] <= span_[channel]; }

    SampleGrid grid_;
    bool opaque_;
    bool keyed_ = false;
    bool empty_ = false;
    uint32_t low_[3] = {};
    uint32_t span_[3] = {};
};

// The colour matrix on premultiplied samples: a plain scale of alpha is a scale of every
// channel; any other matrix works on straight colours.
class ColorMapper {
public:
    explicit ColorMapper(const ImageAttributes* attributes)
    {
        if (!attributes || !attributes->colorMatrixEnabled) return;
        matrix_ = attributes->colorMatrix;
        for (auto& row : matrix_.m) {
            for (float& v : row) v = std::isfinite(v) ? v : 0.0f;  // a value that is no number adds nothing
        }
        const ColorMatrix identity;
        bool onlyAlpha = true;
        for (int r = 0; r < 5; ++r) {
            for (int c = 0; c < 5; ++c) onlyAlpha &= (r == 3 && c == 3) || matrix_.m[r][c] == identity.m[r][c];
        }
        if (onlyAlpha) {
            alphaScale_ = uint32_t(std::lround(std::clamp(double(matrix_.m[3][3]), 0.0, 1.0) * 256.0));
            general_ = false;
            active_ = alphaScale_ != 256;
        } else {
            general_ = active_ = true;
        }
    }

    bool active() const { return active_; }
    uint32_t apply(uint32_t s) const { return general_ ? applyGeneral(s) : scaled(s, alphaScale_); }

private:
    uint32_t applyGeneral(uint32_t s) const
    {
        const double a = (s >> 24) / 255.0;
        const double straight[4] = {a > 0 ? ((s >> 16) & 0xFF) / 255.0 / a : 0.0, a > 0 ? ((s >> 8) & 0xFF) / 255.0 / a : 0.0,
                                    a > 0 ? (s & 0xFF) / 255.0 / a : 0.0, a};
        double out[4];
        for (int c = 0; c < 4; ++c) {
            double v = matrix_.m[4][c];
            for (int r = 0; r < 4; ++r) v += straight[r] * matrix_.m[r][c];
            out[c] = std::clamp(v, 0.0, 1.0);
        }
        const auto channel = [&](double v) { return uint32_t(std::lround(v * out[3] * 255.0)); };
        return uint32_t(std::lround(out[3] * 255.0)) << 24 | channel(out[0]) << 16 | channel(out[1]) << 8 | channel(out[2]);
    }

    ColorMatrix matrix_;
    bool active_ = false;
    bool general_ = false;
    uint32_t alphaScale_ = 256;
};

// The destination as a parallelogram of the target: its corner and sides, and the maps
// from target positions to the fractions s (across) and t (down) of the destination.
struct Placement {
    double sx, sy, s0;  // s = sx * x + sy * y + s0
    double tx, ty, t0;
    double acrossPixels;  // target pixels per unit of s, measured across the sides
    double downPixels;
    bool valid = false;

    explicit Placement(const TransformedDraw& d)
    {
        const PointF p0 = d.world.apply({d.destination.X, d.destination.Y});
        const PointF p1 = d.world.apply({d.destination.X + d.destination.Width, d.destination.Y});
        const PointF p3 = d.world.apply({d.destination.X, d.destination.Y + d.destination.Height});
        const double e1x = double(p1.X) - p0.X, e1y = double(p1.Y) - p0.Y;
        const double e2x = double(p3.X) - p0.X, e2y = double(p3.Y) - p0.Y;
        const double det = e1x * e2y - e1y * e2x;
        if (!std::isfinite(det) || std::abs(det) < 1e-9) return;
        sx = e2y / det;
        sy = -e2x / det;
        s0 = -(sx * p0.X + sy * p0.Y);
        tx = -e1y / det;
        ty = e1x / det;
        t0 = -(tx * p0.X + ty * p0.Y);
        acrossPixels = std::abs(det) / std::hypot(e2x, e2y);
        downPixels = std::abs(det) / std::hypot(e1x, e1y);
        valid = std::isfinite(acrossPixels) && std::isfinite(downPixels);
    }
};

// Pixel centres x + 0.5 of row `y` whose fraction f = a x + b (y) lies in [low, high].
void narrow(double a, double b, double low, double high, double& from, double& to)
{
    if (a == 0.0) {
        if (b < low || b > high) to = from - 1.0;
        return;
    }
    double x0 = (low - b) / a;
    double x1 = (high - b) / a;
    if (x0 > x1) std::swap(x0, x1);
    from = std::max(from, x0);
    to = std::min(to, x1);
}

// The part of a pixel at fraction f (0..1 across a side `pixels` long) that lies inside.
inline double sideCover(double f, double pixels)
{
    const double near = std::clamp(f * pixels + 0.5, 0.0, 1.0);
    const double far = std::clamp((1.0 - f) * pixels + 0.5, 0.0, 1.0);
    return std::max(0.0, near + far - 1.0);
}

}  // namespace

void drawTransformed(Bitmap& target, const TransformedDraw& draw)
{
    const Placement place(draw);
    if (!place.valid || draw.source.width <= 0 || draw.source.height <= 0) return;
    const TexelReader texels(draw);
    const ColorMapper colors(draw.attributes);
    const double marginS = 0.5 / place.acrossPixels;
    const double marginT = 0.5 / place.downPixels;
    // Source position (texel centres at integers) from the fractions.
    const RectF& src = draw.sourceRect;
    const auto sourceU = [&](double s) { return src.X + s * src.Width - 0.5; };
    const auto sourceV = [&](double t) { return src.Y + t * src.Height - 0.5; };
    const double limitU = draw.source.width;
    const double limitV = draw.source.height;
    std::vector<uint32_t> samples(size_t(target.width()));
    std::vector<uint8_t> cover(size_t(target.width()));
    for (int y = 0; y < target.height(); ++y) {
        const double cy = y + 0.5;
        double from = 0.5;
        double to = target.width() - 0.5;
        narrow(place.sx, place.sy * cy + place.s0, -marginS, 1.0 + marginS, from, to);
        narrow(place.tx, place.ty * cy + place.t0, -marginT, 1.0 + marginT, from, to);
        const int first = int(std::ceil(from - 0.5));
        const int last = int(std::floor(to - 0.5));
        if (last < first) continue;
        const size_t count = size_t(last - first + 1);
        const double s = place.sx * (first + 0.5) + place.sy * cy + place.s0;
        const double t = place.tx * (first + 0.5) + place.ty * cy + place.t0;
        for (size_t i = 0; i < count; ++i) {
            const double si = s + place.sx * double(i);
            const double ti = t + place.tx * double(i);
            // Positions beyond the image read its edge samples, so they are held just
            // past it before they become 16.16 fixed point.
            // Rounded, so that a position a hair short of a sample (a quarter turn's
            // cosine is not quite 0) reads that sample.
            const int32_t u = int32_t(std::lrint(std::clamp(sourceU(si), -1.0, limitU) * kFixedOne));
            const int32_t v = int32_t(std::lrint(std::clamp(sourceV(ti), -1.0, limitV) * kFixedOne));
            const uint32_t sample = texels.sample(u, v);
            samples[i] = colors.active() ? colors.apply(sample) : sample;
            const double c = sideCover(si, place.acrossPixels) * sideCover(ti, place.downPixels);
            cover[i] = uint8_t(c * 255.0 + 0.5);
        }
        blendSamples(target.row(y).subspan(size_t(first), count), std::span(samples).first(count),
                     std::span(cover).first(count), draw.copy);
    }
}

}  // namespace qx::draw2d
