#include "apps/qxfx/ContactSheet.h"

#include "apps/qxfx/FrameCanvas.h"

namespace qx::qxfx {

namespace {

constexpr int kColumns = 2;
constexpr int kGap = 8;
constexpr int kCaptionHeight = 26;
constexpr int kHeaderHeight = 34;
constexpr int kCellWidth = 3 * ContactSheet::kThumbWidth + 4 * kGap;
constexpr int kCellHeight = kCaptionHeight + ContactSheet::kThumbHeight + 2 * kGap;
constexpr double kFontSize = 14.0;

Frame thumbnail(Frame& frame)
{
    Frame small = makeFrame(ContactSheet::kThumbWidth, ContactSheet::kThumbHeight);
    const auto surface = surfaceOver(small);
    const draw2d::CairoContext cr(cairo_create(surface.get()));
    makeOpaque(frame);
    drawScaled(cr.get(), frame, 0, 0, ContactSheet::kThumbWidth, ContactSheet::kThumbHeight);
    cairo_surface_flush(surface.get());
    return small;
}

}  // namespace

void ContactSheet::add(const std::string& caption, std::array<Frame, 3>& frames)
{
    Cell cell{caption, {}, {}};
    for (auto& frame : frames) cell.thumbnails.push_back(thumbnail(frame));
    cells_.push_back(std::move(cell));
}

void ContactSheet::addSkipped(const std::string& caption, const std::string& note)
{
    cells_.push_back(Cell{caption, {}, note});
}

void ContactSheet::write(const std::string& path) const
{
    const int rows = (int(cells_.size()) + kColumns - 1) / kColumns;
    const draw2d::CairoSurface sheet(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, kColumns * kCellWidth, kHeaderHeight + rows * kCellHeight));
    const draw2d::CairoContext cr(cairo_create(sheet.get()));
    cairo_set_source_rgb(cr.get(), 0.18, 0.18, 0.2);
    cairo_paint(cr.get());
    drawCaption(cr.get(), kGap, kGap, "qxfx demo: each effect at progress 0, 0.5 and 1", kFontSize);
    for (size_t i = 0; i < cells_.size(); ++i) {
        const Cell& cell = cells_[i];
        const double x = double(i % kColumns) * kCellWidth + kGap;
        const double y = kHeaderHeight + double(i / kColumns) * kCellHeight;
        drawCaption(cr.get(), x, y, cell.caption, kFontSize);
        for (size_t t = 0; t < cell.thumbnails.size(); ++t) {
            Frame copy = cell.thumbnails[t];
            drawScaled(cr.get(), copy, x + double(t) * (kThumbWidth + kGap), y + kCaptionHeight, kThumbWidth,
                       kThumbHeight);
        }
        if (cell.thumbnails.empty()) drawCaption(cr.get(), x, y + kCaptionHeight + kGap, cell.note, kFontSize * 0.85);
    }
    if (cairo_surface_write_to_png(sheet.get(), path.c_str()) != CAIRO_STATUS_SUCCESS) {
        throw CommandError("'" + path + "': cannot write");
    }
}

}  // namespace qx::qxfx
