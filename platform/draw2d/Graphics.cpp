#include "platform/draw2d/Graphics.h"

#include "platform/draw2d/Resample.h"
#include "platform/pixel/Alpha.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace qx::draw2d {

namespace {

bool finite(const RectF& r)
{
    return std::isfinite(r.X) && std::isfinite(r.Y) && std::isfinite(r.Width) && std::isfinite(r.Height);
}

uint32_t premultipliedColor(Color color)
{
    uint32_t sample = color.argb;
    pixel::premultiply(std::span(&sample, 1));
    return sample;
}

void fill(Bitmap& bitmap, uint32_t sample)
{
    for (int y = 0; y < bitmap.height(); ++y) std::ranges::fill(bitmap.row(y), sample);
}

// x * a / 255 for the four channels of a sample at once, two per 32-bit lane pair.
inline uint32_t scaleSample(uint32_t s, uint32_t a)
{
    const auto half = [a](uint32_t lanes) {
        const uint32_t t = lanes * a + 0x00800080u;
        return ((t + ((t >> 8) & 0x00FF00FFu)) >> 8) & 0x00FF00FFu;
    };
    return half(s & 0x00FF00FFu) | half((s >> 8) & 0x00FF00FFu) << 8;
}

// Source-over of a premultiplied sample with coverage `cover` (0..255).
inline uint32_t over(uint32_t destination, uint32_t source, uint32_t cover)
{
    if (cover != 255) source = scaleSample(source, cover);
    return source + scaleSample(destination, 255 - (source >> 24));
}

// Where an edge of the destination cuts pixels, the part of each pixel it covers.
struct Coverage {
    int first = 0;
    int end = 0;  // one past the last pixel touched
    double from = 0.0;
    double to = 0.0;

    Coverage(double a, double b, int limit)
        : from(std::min(a, b)), to(std::max(a, b))
    {
        first = int(std::clamp(std::floor(from), 0.0, double(limit)));
        end = int(std::clamp(std::ceil(to), 0.0, double(limit)));
    }
    bool coversAll(int limit) const { return from <= 0.0 && to >= limit; }
    uint32_t at(int i) const
    {
        const double part = std::min<double>(i + 1, to) - std::max<double>(i, from);
        return uint32_t(std::lround(std::clamp(part, 0.0, 1.0) * 255.0));
    }
};

// The premultiplied samples of an image draw: an opaque image is used in place.
class PremultipliedSource {
public:
    explicit PremultipliedSource(const Bitmap& image)
        : grid_{image.data(), image.width(), image.height(), image.pitch()}
    {
        if (image.opaque()) return;
        copy_.resize(size_t(image.width()) * size_t(image.height()));
        for (int y = 0; y < image.height(); ++y) {
            pixel::premultiply(image.row(y), std::span(copy_).subspan(size_t(y) * size_t(image.width())));
        }
        grid_ = {copy_.data(), image.width(), image.height(), image.width()};
    }
    const SampleGrid& grid() const { return grid_; }

private:
    std::vector<uint32_t> copy_;
    SampleGrid grid_;
};

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
    case Content::Cleared:
        fill(target_, clearColor_.argb);
        break;
    case Content::Premultiplied:
        for (int y = 0; y < target_.height(); ++y) pixel::unpremultiply(target_.row(y));
        break;
    case Content::Straight:
    case Content::Opaque:
        break;
    }
}

void Graphics::premultiplyContent()
{
    switch (content_) {
    case Content::Straight:
        for (int y = 0; y < target_.height(); ++y) pixel::premultiply(target_.row(y));
        break;
    case Content::Cleared:
        fill(target_, premultipliedColor(clearColor_));
        break;
    case Content::Premultiplied:
    case Content::Opaque:
        break;
    }
    content_ = Content::Premultiplied;
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
    if (status_ != Status::Ok) return status_;
    if (image.status() != Status::Ok || !finite(destination) || !finite(source)) return Status::InvalidParameter;
    if (destination.Width == 0.0f || destination.Height == 0.0f || source.Width == 0.0f || source.Height == 0.0f) {
        return Status::Ok;  // nothing to cover
    }
    const int width = target_.width();
    const int height = target_.height();
    const Coverage across(destination.X, double(destination.X) + destination.Width, width);
    const Coverage down(destination.Y, double(destination.Y) + destination.Height, height);
    if (across.first >= across.end || down.first >= down.end) return Status::Ok;

    // The maps take destination pixels to source pixels; a negative size mirrors.
    const double scaleX = double(source.Width) / destination.Width;
    const double scaleY = double(source.Height) / destination.Height;
    const AxisMap mapX{scaleX, source.X - destination.X * scaleX};
    const AxisMap mapY{scaleY, source.Y - destination.Y * scaleY};
    flushCairo();

    if (image.opaque() && across.coversAll(width) && down.coversAll(height)) {
        // Every pixel gets an opaque sample: the old contents, cleared or not, go.
        Resampler resampler({image.data(), image.width(), image.height(), image.pitch()}, mapX, mapY,
                            {0, width, 0, height});
        for (int y = 0; y < height; ++y) resampler.row(y, target_.row(y));
        content_ = Content::Opaque;
        return Status::Ok;
    }

    premultiplyContent();
    const PremultipliedSource premultiplied(image);
    Resampler resampler(premultiplied.grid(), mapX, mapY, {across.first, across.end, down.first, down.end});
    std::vector<uint32_t> samples(size_t(across.end - across.first));
    for (int y = down.first; y < down.end; ++y) {
        resampler.row(y, samples);
        const uint32_t rowCover = down.at(y);
        auto targetRow = target_.row(y).subspan(size_t(across.first));
        for (int x = across.first; x < across.end; ++x) {
            const uint32_t cover = (rowCover * across.at(x) + 127) / 255;
            uint32_t& pixel = targetRow[size_t(x - across.first)];
            pixel = over(pixel, samples[size_t(x - across.first)], cover);
        }
    }
    return Status::Ok;
}

Status Graphics::drawImage(const Bitmap& image, const RectF& destination)
{
    return drawImage(image, destination, RectF{0.0f, 0.0f, float(image.width()), float(image.height())});
}

}  // namespace qx::draw2d
