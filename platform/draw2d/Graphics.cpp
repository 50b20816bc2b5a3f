#include "platform/draw2d/Graphics.h"

#include "platform/pixel/Alpha.h"

#include <cmath>
#include <vector>

namespace qx::draw2d {

namespace {

void convertRows(Bitmap& bitmap, void (*convert)(std::span<uint32_t>))
{
    for (int y = 0; y < bitmap.height(); ++y) convert(bitmap.row(y));
}

CairoSurface surfaceOver(uint32_t* samples, cairo_format_t format, int width, int height, int pitch)
{
    return CairoSurface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(samples), format, width,
                                                            height, pitch * 4));
}

bool finite(const RectF& r)
{
    return std::isfinite(r.X) && std::isfinite(r.Y) && std::isfinite(r.Width) && std::isfinite(r.Height);
}

// The source of an image draw: an opaque image is read in place as RGB24, which also
// lets the compositor skip blending; any other image goes through a premultiplied copy.
class ImageSource {
public:
    explicit ImageSource(const Bitmap& image)
    {
        auto* samples = const_cast<uint32_t*>(image.data());  // a source surface is only read
        if (image.opaque()) {
            surface_ = surfaceOver(samples, CAIRO_FORMAT_RGB24, image.width(), image.height(), image.pitch());
            return;
        }
        copy_.resize(size_t(image.width()) * size_t(image.height()));
        for (int y = 0; y < image.height(); ++y) {
            pixel::premultiply(image.row(y), std::span(copy_).subspan(size_t(y) * size_t(image.width())));
        }
        surface_ = surfaceOver(copy_.data(), CAIRO_FORMAT_ARGB32, image.width(), image.height(), image.width());
    }
    cairo_surface_t* get() const { return surface_.get(); }

private:
    std::vector<uint32_t> copy_;
    CairoSurface surface_;
};

}  // namespace

Graphics::Graphics(Bitmap& target) : target_(target)
{
    if (target.status() != Status::Ok) return;
    convertRows(target_, pixel::premultiply);
    surface_ = surfaceOver(target.data(), CAIRO_FORMAT_ARGB32, target.width(), target.height(), target.pitch());
    context_.reset(cairo_create(surface_.get()));
    status_ = cairo_status(context_.get()) == CAIRO_STATUS_SUCCESS ? Status::Ok : Status::OutOfMemory;
}

Graphics::~Graphics()
{
    if (!surface_) return;
    context_.reset();
    cairo_surface_flush(surface_.get());
    surface_.reset();
    convertRows(target_, pixel::unpremultiply);
}

Status Graphics::clear(Color color)
{
    if (status_ != Status::Ok) return status_;
    cairo_t* cr = context_.get();
    cairo_save(cr);
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_rgba(cr, color.red() / 255.0, color.green() / 255.0, color.blue() / 255.0, color.alpha() / 255.0);
    cairo_paint(cr);
    cairo_restore(cr);
    return Status::Ok;
}

Status Graphics::drawImage(const Bitmap& image, const RectF& destination, const RectF& source)
{
    if (status_ != Status::Ok) return status_;
    if (image.status() != Status::Ok || !finite(destination) || !finite(source)) return Status::InvalidParameter;
    if (destination.Width == 0.0f || destination.Height == 0.0f || source.Width == 0.0f || source.Height == 0.0f) {
        return Status::Ok;  // nothing to cover
    }
    const ImageSource sourceSurface(image);
    CairoPattern pattern(cairo_pattern_create_for_surface(sourceSurface.get()));
    // The pattern matrix maps the destination (user space) onto the image.
    const double sx = double(source.Width) / destination.Width;
    const double sy = double(source.Height) / destination.Height;
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, sx, 0.0, 0.0, sy, source.X - destination.X * sx, source.Y - destination.Y * sy);
    cairo_pattern_set_matrix(pattern.get(), &matrix);
    cairo_pattern_set_filter(pattern.get(), CAIRO_FILTER_BILINEAR);
    cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);

    cairo_t* cr = context_.get();
    cairo_save(cr);
    cairo_set_source(cr, pattern.get());
    cairo_rectangle(cr, destination.X, destination.Y, destination.Width, destination.Height);
    cairo_fill(cr);
    cairo_restore(cr);
    return Status::Ok;
}

Status Graphics::drawImage(const Bitmap& image, const RectF& destination)
{
    return drawImage(image, destination, RectF{0.0f, 0.0f, float(image.width()), float(image.height())});
}

}  // namespace qx::draw2d
