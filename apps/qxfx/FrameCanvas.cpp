#include "apps/qxfx/FrameCanvas.h"

namespace qx::qxfx {

void makeOpaque(Frame& frame)
{
    for (auto& sample : frame.samples) sample |= 0xFF000000u;
}

draw2d::CairoSurface surfaceOver(Frame& frame)
{
    return draw2d::CairoSurface(
        cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(frame.samples.data()), CAIRO_FORMAT_ARGB32,
                                            frame.width, frame.height, frame.width * 4));
}

void drawCaption(cairo_t* cr, double x, double y, const std::string& text, double fontSize)
{
    cairo_save(cr);
    cairo_select_font_face(cr, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
    cairo_set_font_size(cr, fontSize);
    cairo_text_extents_t extents;
    cairo_text_extents(cr, text.c_str(), &extents);
    const double pad = fontSize * 0.3;
    cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, 0.7);
    cairo_rectangle(cr, x, y, extents.x_advance + 2 * pad, fontSize * 1.3 + pad);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 1.0, 1.0, 1.0);
    cairo_move_to(cr, x + pad, y + fontSize + pad * 0.5);
    cairo_show_text(cr, text.c_str());
    cairo_restore(cr);
}

void drawScaled(cairo_t* cr, Frame& frame, double x, double y, double width, double height)
{
    const auto surface = surfaceOver(frame);
    cairo_surface_mark_dirty(surface.get());
    cairo_save(cr);
    cairo_translate(cr, x, y);
    cairo_scale(cr, width / frame.width, height / frame.height);
    cairo_set_source_surface(cr, surface.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
    cairo_rectangle(cr, 0, 0, frame.width, frame.height);
    cairo_fill(cr);
    cairo_restore(cr);
}

}  // namespace qx::qxfx
