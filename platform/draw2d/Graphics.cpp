#include "platform/draw2d/Graphics.h"

#include "platform/draw2d/AffineDraw.h"
#include "platform/draw2d/Blend.h"
#include "platform/os/WorkerPool.h"
#include "platform/pixel/Alpha.h"
#include "platform/pixel/FrameMemory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace qx::draw2d {

namespace {

bool finite(const RectF& r)
{
    return std::isfinite(r.X) && std::isfinite(r.Y) && std::isfinite(r.Width) && std::isfinite(r.Height);
}

bool finite(const PointF& p) { return std::isfinite(p.X) && std::isfinite(p.Y); }

uint32_t premultipliedColor(Color color)
{
    uint32_t sample = color.argb;
    pixel::premultiply(std::span(&sample, 1));
    return sample;
}

// Rows of a bitmap are independent in every loop here: they are cut into slices for the
// shared worker threads, and the result is the same however they are cut.
using os::parallelRows;

void fill(Bitmap& bitmap, uint32_t sample)
{
    parallelRows(bitmap.height(), [&](int begin, int end) {
        for (int y = begin; y < end; ++y) std::ranges::fill(bitmap.row(y), sample);
    });
}

void premultiplyRows(Bitmap& bitmap)
{
    parallelRows(bitmap.height(), [&](int begin, int end) {
        for (int y = begin; y < end; ++y) pixel::premultiply(bitmap.row(y));
    });
}

void unpremultiplyRows(Bitmap& bitmap)
{
    parallelRows(bitmap.height(), [&](int begin, int end) {
        for (int y = begin; y < end; ++y) pixel::unpremultiply(bitmap.row(y));
    });
}

/// Premultiplies a row of an image draw into `out`, clearing the samples that `key` catches.
/// Rows of an image known to be opaque are already premultiplied: copied and keyed at once.
void premultiplyKeyed(std::span<const uint32_t> in, std::span<uint32_t> out, const ImageAttributes* key,
                      bool opaqueImage)
{
    if (key && opaqueImage) {
        copyUnkeyed(in, out, key->keyLow.argb, key->keyHigh.argb);
        return;
    }
    pixel::premultiply(in, out);
    if (key) clearKeyed(in, out, key->keyLow.argb, key->keyHigh.argb);
}

/// Fills the rows of `target` from a resampler of its whole width, one per slice.
void resampleRows(const SampleGrid& source, const AxisMap& mapX, const AxisMap& mapY, Bitmap& target)
{
    parallelRows(target.height(), [&](int begin, int end) {
        Resampler resampler(source, mapX, mapY, {0, target.width(), begin, end});
        for (int y = begin; y < end; ++y) resampler.row(y, target.row(y));
    });
}

// Where the edges of a destination cut pixels along one axis: the pixels touched and the
// part of each that is covered, 0..255.
struct Coverage {
    int first = 0;
    int end = 0;  // one past the last pixel touched
    double from = 0.0;
    double to = 0.0;

    Coverage(double a, double b, int limit) : from(std::min(a, b)), to(std::max(a, b))
    {
        first = int(std::clamp(std::floor(from), 0.0, double(limit)));
        end = int(std::clamp(std::ceil(to), 0.0, double(limit)));
    }
    bool empty() const { return first >= end; }
    bool coversAll(int limit) const { return from <= 0.0 && to >= limit; }
    uint8_t at(int i) const
    {
        const double part = std::min<double>(i + 1, to) - std::max<double>(i, from);
        return uint8_t(std::lround(std::clamp(part, 0.0, 1.0) * 255.0));
    }
};

// The premultiplied samples of an image draw, with the colour key applied. An opaque image
// without a key is used in place.
class PremultipliedSource {
public:
    PremultipliedSource(const Bitmap& image, const ImageAttributes* key)
        : grid_{image.data(), image.width(), image.height(), image.pitch()}
    {
        if (!key && image.opaque()) return;
        copy_ = pixel::allocateFrameMemory(size_t(image.width()) * size_t(image.height()));
        if (!copy_) return;  // out of memory: the image is drawn without its key
        const bool opaque = image.opaque();
        parallelRows(image.height(), [&](int begin, int end) {
            for (int y = begin; y < end; ++y) {
                const auto in = image.row(y);
                premultiplyKeyed(in, {copy_.get() + size_t(y) * size_t(image.width()), in.size()}, key, opaque);
            }
        });
        grid_ = {copy_.get(), image.width(), image.height(), image.width()};
    }
    const SampleGrid& grid() const { return grid_; }

private:
    pixel::FrameMemory copy_;
    SampleGrid grid_;
};

// The 8 by 8 pattern of a hatch style, a row a byte, the top bit the left pixel. Dashed
// upward diagonal: the rising diagonal of each cell, drawn over half its length.
constexpr std::array<uint8_t, 8> kDashedUpwardDiagonal = {0x00, 0x00, 0x00, 0x00, 0x10, 0x20, 0x40, 0x80};

CairoPattern hatchPattern(const HatchBrush& brush)
{
    CairoSurface cell(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 8, 8));
    cairo_surface_flush(cell.get());
    auto* data = reinterpret_cast<uint32_t*>(cairo_image_surface_get_data(cell.get()));
    const int pitch = cairo_image_surface_get_stride(cell.get()) / 4;
    const uint32_t fore = premultipliedColor(brush.foreground);
    const uint32_t back = premultipliedColor(brush.background);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x)
            data[y * pitch + x] = (kDashedUpwardDiagonal[size_t(y)] >> (7 - x)) & 1 ? fore : back;
    }
    cairo_surface_mark_dirty(cell.get());
    CairoPattern pattern(cairo_pattern_create_for_surface(cell.get()));
    cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_REPEAT);
    cairo_pattern_set_filter(pattern.get(), CAIRO_FILTER_NEAREST);
    return pattern;
}

}  // namespace

Graphics::Graphics(Bitmap& target) : target_(target)
{
    status_ = target.status() == Status::Ok ? Status::Ok : Status::InvalidParameter;
}

Graphics::~Graphics()
{
    if (status_ != Status::Ok) return;
    flushCairo();
    switch (content_) {
    case Content::Cleared: fill(target_, clearColor_.argb); break;
    case Content::Premultiplied: unpremultiplyRows(target_); break;
    case Content::Straight:
    case Content::Opaque:
    case Content::OpaqueOrClear: break;
    }
}

void Graphics::premultiplyContent()
{
    switch (content_) {
    case Content::Straight:
        if (target_.opaque()) {
            content_ = Content::Opaque;
            return;
        }
        premultiplyRows(target_);
        content_ = Content::Premultiplied;
        return;
    case Content::Cleared:
        fill(target_, premultipliedColor(clearColor_));
        content_ = clearColor_.alpha() == 255 ? Content::Opaque : Content::Premultiplied;
        return;
    case Content::Premultiplied:
    case Content::Opaque:
    case Content::OpaqueOrClear: return;
    }
}

void Graphics::drewWith(bool keepsOpacity)
{
    // Source-over onto opaque samples leaves them opaque; replacing them may not, and
    // blending onto transparent samples gives translucent ones.
    if ((content_ == Content::Opaque && !keepsOpacity) || content_ == Content::OpaqueOrClear) {
        content_ = Content::Premultiplied;
    }
}

cairo_t* Graphics::cairo()
{
    premultiplyContent();
    if (!context_) {
        surface_.reset(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(target_.data()),
                                                           CAIRO_FORMAT_ARGB32, target_.width(), target_.height(),
                                                           target_.pitch() * 4));
        context_.reset(cairo_create(surface_.get()));
    }
    return context_.get();
}

void Graphics::flushCairo()
{
    if (!context_) return;
    context_.reset();
    cairo_surface_flush(surface_.get());
    surface_.reset();
}

Status Graphics::setCompositingMode(CompositingMode mode)
{
    mode_ = mode;
    return status_;
}

Status Graphics::clear(Color color)
{
    if (status_ != Status::Ok) return status_;
    flushCairo();
    content_ = Content::Cleared;
    clearColor_ = color;
    return Status::Ok;
}

Status Graphics::drawImage(const Bitmap& image, const RectF& destination, const RectF& source)
{
    return drawImage(image, destination, source, nullptr);
}

Status Graphics::drawImage(const Bitmap& image, const RectF& destination)
{
    return drawImage(image, destination, RectF{0.0f, 0.0f, float(image.width()), float(image.height())}, nullptr);
}

Status Graphics::drawImage(const Bitmap& image, const RectF& destination, const RectF& source,
                           const ImageAttributes* attributes)
{
    if (status_ != Status::Ok) return status_;
    if (image.status() != Status::Ok || !finite(destination) || !finite(source)) return Status::InvalidParameter;
    if (destination.Width == 0.0f || destination.Height == 0.0f || source.Width == 0.0f || source.Height == 0.0f) {
        return Status::Ok;  // nothing to cover
    }
    const ImageAttributes* key = attributes && attributes->colorKeyEnabled ? attributes : nullptr;
    const bool recolours = attributes && attributes->colorMatrixEnabled;
    if (transform_.axisAligned() && !recolours) {
        // Scales and moves only: the destination in pixels, for the row resampler.
        const PointF corner = transform_.apply({destination.X, destination.Y});
        const RectF pixels{corner.X, corner.Y, float(destination.Width * transform_.m11),
                           float(destination.Height * transform_.m22)};
        if (!finite(pixels)) return Status::InvalidParameter;
        return drawAxisAligned(image, pixels, source, key);
    }
    flushCairo();
    // Samples still as the caller left them are converted only where the picture lands.
    const bool straight = content_ == Content::Straight;
    if (!straight) premultiplyContent();
    TransformedDraw draw;
    draw.image = &image;
    draw.sourceRect = source;
    draw.destination = destination;
    draw.world = transform_;
    draw.attributes = attributes;
    draw.copy = mode_ == CompositingMode::SourceCopy;
    draw.straightTarget = straight;
    drawTransformed(target_, draw);
    if (!straight) drewWith(mode_ == CompositingMode::SourceOver);
    return Status::Ok;
}

Status Graphics::drawAxisAligned(const Bitmap& image, const RectF& destination, const RectF& source,
                                 const ImageAttributes* key)
{
    if (destination.Width == 0.0f || destination.Height == 0.0f) return Status::Ok;
    // The maps take destination pixels to source pixels; a negative size mirrors.
    const double scaleX = double(source.Width) / destination.Width;
    const double scaleY = double(source.Height) / destination.Height;
    const AxisMap mapX{scaleX, source.X - destination.X * scaleX};
    const AxisMap mapY{scaleY, source.Y - destination.Y * scaleY};
    const int width = target_.width();
    const int height = target_.height();
    const bool coversAll =
        Coverage(destination.X, double(destination.X) + destination.Width, width).coversAll(width) &&
        Coverage(destination.Y, double(destination.Y) + destination.Height, height).coversAll(height);
    flushCairo();

    if (coversAll && !key && image.opaque()) {
        // Every pixel gets an opaque sample: the old contents, cleared or not, go.
        resampleRows({image.data(), image.width(), image.height(), image.pitch()}, mapX, mapY, target_);
        content_ = Content::Opaque;
        return Status::Ok;
    }
    const bool overNothing = content_ == Content::Cleared && clearColor_.alpha() == 0;
    if (coversAll && (mode_ == CompositingMode::SourceCopy || overNothing) && transferRows(image, mapX, mapY, key)) {
        // An opaque picture with keyed samples cleared holds nothing to convert back.
        content_ = image.opaque() ? Content::OpaqueOrClear : Content::Premultiplied;
        return Status::Ok;
    }
    const PremultipliedSource premultiplied(image, key);
    if (coversAll && (mode_ == CompositingMode::SourceCopy || overNothing)) {
        // Every pixel takes the source sample as it stands.
        resampleRows(premultiplied.grid(), mapX, mapY, target_);
        content_ = Content::Premultiplied;
        return Status::Ok;
    }
    premultiplyContent();
    compositeImage(premultiplied.grid(), mapX, mapY, destination);
    drewWith(mode_ == CompositingMode::SourceOver);
    return Status::Ok;
}

bool Graphics::transferRows(const Bitmap& image, const AxisMap& mapX, const AxisMap& mapY, const ImageAttributes* key)
{
    // A shift by whole samples at scale 1 that stays inside the image: each target row is
    // its source row, premultiplied and keyed on the way, with no resampling.
    const int width = target_.width();
    const int height = target_.height();
    if (!isWholeSampleShift(mapX) || !isWholeSampleShift(mapY) || mapX.offset < 0 || mapY.offset < 0 ||
        mapX.offset + width > image.width() || mapY.offset + height > image.height()) {
        return false;
    }
    const bool opaque = image.opaque();
    parallelRows(height, [&](int begin, int end) {
        for (int y = begin; y < end; ++y) {
            const auto source = image.row(y + int(mapY.offset)).subspan(size_t(mapX.offset), size_t(width));
            premultiplyKeyed(source, target_.row(y), key, opaque);
        }
    });
    return true;
}

void Graphics::compositeImage(const SampleGrid& source, const AxisMap& mapX, const AxisMap& mapY,
                              const RectF& destination)
{
    const Coverage across(destination.X, double(destination.X) + destination.Width, target_.width());
    const Coverage down(destination.Y, double(destination.Y) + destination.Height, target_.height());
    if (across.empty() || down.empty()) return;
    const size_t columns = size_t(across.end - across.first);
    std::vector<uint8_t> columnCover(columns);
    for (size_t i = 0; i < columns; ++i) columnCover[i] = across.at(across.first + int(i));
    const bool copy = mode_ == CompositingMode::SourceCopy;
    parallelRows(down.end - down.first, [&](int begin, int end) {
        std::vector<uint8_t> cover(columns);
        std::vector<uint32_t> samples(columns);
        Resampler resampler(source, mapX, mapY, {across.first, across.end, down.first + begin, down.first + end});
        for (int y = down.first + begin; y < down.first + end; ++y) {
            resampler.row(y, samples);
            const uint32_t rowCover = down.at(y);
            if (rowCover != 255) {
                for (size_t i = 0; i < columns; ++i) cover[i] = uint8_t((rowCover * columnCover[i] + 127) / 255);
            }
            blendSamples(target_.row(y).subspan(size_t(across.first), columns), samples,
                         rowCover == 255 ? columnCover : cover, copy);
        }
    });
}

Status Graphics::combineTransform(const Matrix& change, MatrixOrder order)
{
    if (status_ != Status::Ok) return status_;
    const Matrix combined =
        order == MatrixOrder::Prepend ? Matrix::product(change, transform_) : Matrix::product(transform_, change);
    for (const double v : {combined.m11, combined.m12, combined.m21, combined.m22, combined.dx, combined.dy}) {
        if (!std::isfinite(v)) return Status::InvalidParameter;
    }
    transform_ = combined;
    return Status::Ok;
}

Status Graphics::ScaleTransform(double sx, double sy, MatrixOrder order)
{
    return combineTransform({sx, 0, 0, sy, 0, 0}, order);
}

Status Graphics::TranslateTransform(double dx, double dy, MatrixOrder order)
{
    return combineTransform({1, 0, 0, 1, dx, dy}, order);
}

Status Graphics::RotateTransform(double angle, MatrixOrder order)
{
    const double radians = angle * 3.14159265358979323846 / 180.0;
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    return combineTransform({c, s, -s, c, 0, 0}, order);
}

Status Graphics::ResetTransform()
{
    if (status_ != Status::Ok) return status_;
    transform_ = Matrix{};
    return Status::Ok;
}

Status Graphics::SetTransform(const Matrix& matrix)
{
    if (status_ != Status::Ok) return status_;
    for (const double v : {matrix.m11, matrix.m12, matrix.m21, matrix.m22, matrix.dx, matrix.dy}) {
        if (!std::isfinite(v)) return Status::InvalidParameter;
    }
    transform_ = matrix;
    return Status::Ok;
}

Status Graphics::MultiplyTransform(const Matrix& matrix, MatrixOrder order) { return combineTransform(matrix, order); }

Status Graphics::fillRectangle(Color color, int x, int y, int width, int height)
{
    if (status_ != Status::Ok) return status_;
    const int x0 = std::clamp(x, 0, target_.width());
    const int x1 = std::clamp(int(std::min<int64_t>(int64_t(x) + width, target_.width())), x0, target_.width());
    const int y0 = std::clamp(y, 0, target_.height());
    const int y1 = std::clamp(int(std::min<int64_t>(int64_t(y) + height, target_.height())), y0, target_.height());
    if (x0 == x1 || y0 == y1) return Status::Ok;
    flushCairo();
    premultiplyContent();
    drewWith(mode_ == CompositingMode::SourceOver || color.alpha() == 255);
    const uint32_t sample = premultipliedColor(color);
    const bool copy = mode_ == CompositingMode::SourceCopy;
    parallelRows(y1 - y0, [&](int begin, int end) {
        for (int row = y0 + begin; row < y0 + end; ++row) {
            const auto span = target_.row(row).subspan(size_t(x0), size_t(x1 - x0));
            if (copy) {
                std::ranges::fill(span, sample);
            } else {
                blendColor(span, sample);
            }
        }
    });
    return Status::Ok;
}

Status Graphics::stroke(const Pen& pen)
{
    cairo_t* cr = context_.get();
    CairoPattern hatch;
    if (pen.brush) {
        hatch = hatchPattern(*pen.brush);
        cairo_set_source(cr, hatch.get());
    } else {
        const Color c = pen.color;
        cairo_set_source_rgba(cr, c.red() / 255.0, c.green() / 255.0, c.blue() / 255.0, c.alpha() / 255.0);
    }
    cairo_set_operator(cr, mode_ == CompositingMode::SourceCopy ? CAIRO_OPERATOR_SOURCE : CAIRO_OPERATOR_OVER);
    drewWith(mode_ == CompositingMode::SourceOver);
    cairo_set_line_width(cr, pen.width);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_NONE);  // a new context draws without smoothing
    cairo_stroke(cr);
    cairo_restore(cr);
    return cairo_status(cr) == CAIRO_STATUS_SUCCESS ? Status::Ok : Status::GenericError;
}

Status Graphics::drawLine(const Pen& pen, PointF from, PointF to)
{
    if (status_ != Status::Ok) return status_;
    if (!finite(from) || !finite(to)) return Status::InvalidParameter;
    cairo_t* cr = cairo();
    cairo_save(cr);
    cairo_translate(cr, 0.5, 0.5);  // pixel centres
    cairo_move_to(cr, from.X, from.Y);
    cairo_line_to(cr, to.X, to.Y);
    return stroke(pen);
}

Status Graphics::drawCurve(const Pen& pen, std::span<const PointF> points, float tension)
{
    if (status_ != Status::Ok) return status_;
    const auto finitePoint = [](const PointF& p) { return finite(p); };
    if (points.size() < 2 || !std::isfinite(tension) || !std::ranges::all_of(points, finitePoint)) {
        return Status::InvalidParameter;
    }
    cairo_t* cr = cairo();
    cairo_save(cr);
    cairo_translate(cr, 0.5, 0.5);
    cairo_move_to(cr, points[0].X, points[0].Y);
    const double k = tension / 3.0;
    const size_t last = points.size() - 1;
    for (size_t i = 0; i < last; ++i) {
        // The ends use themselves as their missing neighbours.
        const PointF& before = points[i == 0 ? 0 : i - 1];
        const PointF& from = points[i];
        const PointF& to = points[i + 1];
        const PointF& after = points[std::min(i + 2, last)];
        cairo_curve_to(cr, from.X + k * (to.X - before.X), from.Y + k * (to.Y - before.Y),
                       to.X - k * (after.X - from.X), to.Y - k * (after.Y - from.Y), to.X, to.Y);
    }
    return stroke(pen);
}

Status Graphics::drawPolygon(const Pen& pen, std::span<const PointF> points)
{
    if (status_ != Status::Ok) return status_;
    if (points.size() < 2 || !std::isfinite(pen.width)) return Status::InvalidParameter;
    std::vector<PointF> pixels(points.size());
    for (size_t i = 0; i < points.size(); ++i) {
        pixels[i] = transform_.apply(points[i]);
        if (!finite(pixels[i])) return Status::InvalidParameter;
    }
    // The pen's width scales with the transform as the points do (by the mean of the
    // axes' stretch).
    const double stretch = std::sqrt(std::abs(transform_.m11 * transform_.m22 - transform_.m12 * transform_.m21));
    Pen widened = pen;
    widened.width = float(std::max(1.0, pen.width * stretch));
    cairo_t* cr = cairo();
    cairo_save(cr);
    cairo_translate(cr, 0.5, 0.5);
    cairo_move_to(cr, pixels[0].X, pixels[0].Y);
    for (size_t i = 1; i < pixels.size(); ++i) cairo_line_to(cr, pixels[i].X, pixels[i].Y);
    cairo_close_path(cr);
    return stroke(widened);
}

}  // namespace qx::draw2d
