#include "platform/draw2d/AffineDraw.h"

#include "platform/draw2d/Blend.h"
#include "platform/draw2d/SampleRun.h"
#include "platform/pixel/Alpha.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>
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

// Samples of the source, keyed and premultiplied as they are read. The checks are
// template parameters, so that the inner loop of an opaque, unkeyed picture has none.
struct TexelKey {
    bool enabled = false;
    uint32_t low[3] = {};
    uint32_t span[3] = {};

    explicit TexelKey(const ImageAttributes* a)
    {
        if (!a || !a->colorKeyEnabled) return;
        enabled = true;
        for (int channel = 0; channel < 3; ++channel) {
            const uint32_t lo = (a->keyLow.argb >> (channel * 8)) & 0xFF;
            const uint32_t hi = (a->keyHigh.argb >> (channel * 8)) & 0xFF;
            enabled &= hi >= lo;  // a range that holds nothing keys nothing
            low[channel] = lo;
            span[channel] = hi - lo;
        }
    }
    bool keys(uint32_t s) const
    {
        return ((s & 0xFF) - low[0] <= span[0]) & (((s >> 8) & 0xFF) - low[1] <= span[1]) &
               (((s >> 16) & 0xFF) - low[2] <= span[2]);
    }
};

template <bool Keyed, bool Premultiplied>
class TexelReader {
public:
    TexelReader(const SampleGrid& grid, const TexelKey& key) : grid_(grid), key_(key) {}

    /// The bilinear sample at source position (u, v) in 16.16 fixed point, the edge
    /// samples repeated beyond the image.
    uint32_t sample(int32_t u, int32_t v) const
    {
        const int x = u >> 16;
        const int y = v >> 16;
        const uint32_t fx = (uint32_t(u) >> 8) & 0xFF;
        const uint32_t fy = (uint32_t(v) >> 8) & 0xFF;
        const int x0 = std::clamp(x, 0, grid_.width - 1);
        const int x1 = std::clamp(x + 1, 0, grid_.width - 1);
        const uint32_t* top = grid_.samples + size_t(std::clamp(y, 0, grid_.height - 1)) * size_t(grid_.pitch);
        const uint32_t* bottom = grid_.samples + size_t(std::clamp(y + 1, 0, grid_.height - 1)) * size_t(grid_.pitch);
        return lerp(lerp(read(top[x0]), read(top[x1]), fx), lerp(read(bottom[x0]), read(bottom[x1]), fx), fy);
    }

private:
    uint32_t read(uint32_t s) const
    {
        if constexpr (Keyed) {
            if (key_.keys(s)) return 0;
        }
        if constexpr (Premultiplied) return s;
        // Opaque samples, the common case, are the same premultiplied.
        return s >= 0xFF000000u ? s : premultiplied(s);
    }

    SampleGrid grid_;
    TexelKey key_;
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
    void apply(std::span<uint32_t> samples) const
    {
        if (general_) {
            for (uint32_t& s : samples) s = applyGeneral(s);
        } else {
            for (uint32_t& s : samples) s = scaled(s, alphaScale_);
        }
    }

private:
    uint32_t applyGeneral(uint32_t s) const
    {
        const double a = (s >> 24) / 255.0;
        const double straight[4] = {a > 0 ? ((s >> 16) & 0xFF) / 255.0 / a : 0.0,
                                    a > 0 ? ((s >> 8) & 0xFF) / 255.0 / a : 0.0, a > 0 ? (s & 0xFF) / 255.0 / a : 0.0,
                                    a};
        double out[4];
        for (int c = 0; c < 4; ++c) {
            double v = matrix_.m[4][c];
            for (int r = 0; r < 4; ++r) v += straight[r] * matrix_.m[r][c];
            out[c] = std::clamp(v, 0.0, 1.0);
        }
        const auto channel = [&](double v) { return uint32_t(std::lround(v * out[3] * 255.0)); };
        return uint32_t(std::lround(out[3] * 255.0)) << 24 | channel(out[0]) << 16 | channel(out[1]) << 8 |
               channel(out[2]);
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

// Where one row meets the destination: the pixels it touches, and those wholly inside.
struct RowSpan {
    int first = 0;
    int last = -1;
    int innerFirst = 0;
    int innerLast = -1;
};

RowSpan rowSpan(const Placement& place, int y, int width)
{
    const double cy = y + 0.5;
    const double marginS = 0.5 / place.acrossPixels;
    const double marginT = 0.5 / place.downPixels;
    const auto span = [&](double low, double high, double lowT, double highT) {
        double from = 0.5;
        double to = width - 0.5;
        narrow(place.sx, place.sy * cy + place.s0, low, high, from, to);
        narrow(place.tx, place.ty * cy + place.t0, lowT, highT, from, to);
        return std::pair{int(std::ceil(from - 0.5)), int(std::floor(to - 0.5))};
    };
    RowSpan row;
    std::tie(row.first, row.last) = span(-marginS, 1.0 + marginS, -marginT, 1.0 + marginT);
    std::tie(row.innerFirst, row.innerLast) = span(marginS, 1.0 - marginS, marginT, 1.0 - marginT);
    return row;
}

// Blends one row segment. A straight-alpha target is converted around the blend, and
// only where it is not opaque: opaque samples are the same in both forms.
void blendSegment(std::span<uint32_t> target, std::span<const uint32_t> samples, std::span<const uint8_t> cover,
                  bool copy, bool straightTarget)
{
    const bool convert = straightTarget && !pixel::allOpaque(target);
    if (convert) pixel::premultiply(target);
    blendSamples(target, samples, cover, copy);
    if (convert) pixel::unpremultiply(target);
}

// The part of each pixel of a row segment that the destination covers: whole inside,
// measured at the edges.
void coverSegment(const Placement& place, const RowSpan& row, int first, size_t count, double s, double t,
                  uint8_t* cover)
{
    for (size_t i = 0; i < count; ++i) {
        const int x = first + int(i);
        if (x >= row.innerFirst && x <= row.innerLast) {
            // The rest of the inside, up to the far edge, at once.
            const size_t end = std::min(count, size_t(row.innerLast - first + 1));
            std::fill(cover + i, cover + end, uint8_t(255));
            i = end - 1;
            continue;
        }
        const double c = sideCover(s + place.sx * double(i), place.acrossPixels) *
                         sideCover(t + place.tx * double(i), place.downPixels);
        cover[i] = uint8_t(c * 255.0 + 0.5);
    }
}

// Target columns drawn at a time: the rows of a strip read neighbouring source samples,
// which stay in the cache from one row to the next, where whole rows of a turned picture
// would walk across hundreds of source rows each.
constexpr int kStripWidth = 64;

// The samples a draw reads: the picture itself, or one of its smaller copies, with the
// source rectangle in that copy's samples.
struct SourceLevel {
    SampleGrid grid;
    RectF rect;
};

template <bool Keyed, bool Premultiplied>
void drawRows(Bitmap& target, const TransformedDraw& draw, const Placement& place, const SourceLevel& source)
{
    const TexelReader<Keyed, Premultiplied> texels(source.grid, TexelKey(draw.attributes));
    const ColorMapper colors(draw.attributes);
    const RectF& src = source.rect;
    const int32_t du = int32_t(std::lrint(place.sx * src.Width * kFixedOne));
    const int32_t dv = int32_t(std::lrint(place.tx * src.Height * kFixedOne));
    std::vector<RowSpan> rows(size_t(target.height()));
    for (int y = 0; y < target.height(); ++y) rows[size_t(y)] = rowSpan(place, y, target.width());
    std::array<uint32_t, kStripWidth> samples;
    std::array<uint8_t, kStripWidth> cover;
    for (int strip = 0; strip < target.width(); strip += kStripWidth) {
        for (int y = 0; y < target.height(); ++y) {
            const RowSpan& row = rows[size_t(y)];
            const int first = std::max(row.first, strip);
            const int last = std::min(row.last, strip + kStripWidth - 1);
            if (last < first) continue;
            const size_t count = size_t(last - first + 1);
            const double s = place.sx * (first + 0.5) + place.sy * (y + 0.5) + place.s0;
            const double t = place.tx * (first + 0.5) + place.ty * (y + 0.5) + place.t0;
            // Source positions, sample centres at integers, stepping along the row.
            int32_t u = int32_t(std::lrint((src.X + s * src.Width - 0.5) * kFixedOne));
            int32_t v = int32_t(std::lrint((src.Y + t * src.Height - 0.5) * kFixedOne));
            if constexpr (!Keyed && Premultiplied) {
                sampleRun(source.grid, u, v, du, dv, samples.data(), count);
            } else {
                for (size_t i = 0; i < count; ++i, u += du, v += dv) samples[i] = texels.sample(u, v);
            }
            if (colors.active()) colors.apply(std::span(samples).first(count));
            coverSegment(place, row, first, count, s, t, cover.data());
            blendSegment(target.row(y).subspan(size_t(first), count), std::span(samples).first(count),
                         std::span(cover).first(count), draw.copy, draw.straightTarget);
        }
    }
}

// Source positions must stay within 16.16 fixed point over the destination and the
// margin of its edge pixels.
bool withinFixedRange(const TransformedDraw& draw, const Placement& place)
{
    const RectF& r = draw.sourceRect;
    const double marginS = 0.5 / place.acrossPixels;
    const double marginT = 0.5 / place.downPixels;
    const double reach = std::max({std::abs(r.X - marginS * r.Width), std::abs(r.X + (1.0 + marginS) * r.Width),
                                   std::abs(r.Y - marginT * r.Height), std::abs(r.Y + (1.0 + marginT) * r.Height)});
    return reach < 30000.0;
}

// The level of smaller copies to read: the largest that still gives at least one
// sample per target pixel along both of the target's axes.
int levelFor(const TransformedDraw& draw, const Placement& place)
{
    const RectF& src = draw.sourceRect;
    const double alongX = std::hypot(place.sx * src.Width, place.tx * src.Height);
    const double alongY = std::hypot(place.sy * src.Width, place.ty * src.Height);
    const double shrink = std::min(alongX, alongY);
    if (!(shrink >= 2.0)) return 0;
    int level = int(std::floor(std::log2(shrink)));
    while (level > 0 && (draw.image->width() >> level) < 1 && (draw.image->height() >> level) < 1) --level;
    return level;
}

}  // namespace

void drawTransformed(Bitmap& target, const TransformedDraw& draw)
{
    const Placement place(draw);
    if (!place.valid || !draw.image || draw.image->status() != Status::Ok || !withinFixedRange(draw, place)) return;
    const TexelKey key(draw.attributes);
    const int level = levelFor(draw, place);
    const SampleGrid* reduced = nullptr;
    if (level > 0) {
        const KeyRange range{key.enabled, key.enabled ? draw.attributes->keyLow.argb : 0u,
                             key.enabled ? draw.attributes->keyHigh.argb : 0u};
        reduced = draw.image->reduced().level(*draw.image, level, range);
    }
    if (reduced) {
        // Sample centres of the copy lie at the centres of the blocks they stand for.
        const double scale = 1.0 / double(1 << level);
        const RectF& r = draw.sourceRect;
        const SourceLevel source{
            *reduced, {float(r.X * scale), float(r.Y * scale), float(r.Width * scale), float(r.Height * scale)}};
        drawRows<false, true>(target, draw, place, source);
        return;
    }
    const Bitmap& image = *draw.image;
    const SourceLevel source{{image.data(), image.width(), image.height(), image.pitch()}, draw.sourceRect};
    if (key.enabled)
        drawRows<true, false>(target, draw, place, source);
    else
        drawRows<false, false>(target, draw, place, source);
}

}  // namespace qx::draw2d
