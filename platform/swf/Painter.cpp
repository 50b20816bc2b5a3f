#include "platform/swf/Painter.h"

#include <algorithm>
#include <cmath>

namespace qx::swf {

namespace {

// Sprites inside sprites deeper than this are not drawn: a sprite that places itself
// would otherwise recurse without end.
constexpr int kMaxNesting = 32;
// Objects drawn in one frame at most: nested sprites multiply their children.
constexpr size_t kMaxObjectsPerFrame = size_t(1) << 16;
// Masks open at once in one display list.
constexpr size_t kMaxOpenMasks = 16;
// Half the side of the gradient square, in twips. Patterns are made in a unit square
// scaled by it: pixman holds gradient coordinates in 16.16 fixed point, and pattern
// spaces of 16384 units under small scales run out of that range.
constexpr double kGradientHalf = 16384.0;
// Matrices whose terms grow past this are drawn no more: the coordinates mean nothing
// to any target, and products of deeper nesting would overflow.
constexpr double kMatrixLimit = 1e9;

bool usable(const Matrix& m)
{
    for (const double v : {m.a, m.b, m.c, m.d, m.tx, m.ty}) {
        if (!std::isfinite(v) || std::abs(v) > kMatrixLimit) return false;
    }
    return true;
}

// The Cairo pattern matrix for a pattern whose own space `m` takes to device space.
bool patternMatrix(const Matrix& m, cairo_matrix_t& out)
{
    if (!usable(m) || std::abs(m.determinant()) < 1e-12) return false;
    cairo_matrix_init(&out, m.a, m.b, m.c, m.d, m.tx, m.ty);
    return cairo_matrix_invert(&out) == CAIRO_STATUS_SUCCESS;
}

cairo_extend_t extendOf(Spread spread)
{
    switch (spread) {
    case Spread::Reflect: return CAIRO_EXTEND_REFLECT;
    case Spread::Repeat: return CAIRO_EXTEND_REPEAT;
    case Spread::Pad: break;
    }
    return CAIRO_EXTEND_PAD;
}

uint32_t transformSample(uint32_t sample, const ColorTransform& colors)
{
    const uint32_t a = sample >> 24;
    if (a == 0 && colors.add[3] <= 0) return 0;
    const auto straight = [a](uint32_t c) { return uint8_t(a ? std::min<uint32_t>(255, (c * 255 + a / 2) / a) : 0); };
    const Rgba out = colors.apply(
        {straight((sample >> 16) & 0xFF), straight((sample >> 8) & 0xFF), straight(sample & 0xFF), uint8_t(a)});
    const auto scale = [&](uint32_t c) { return (c * out.a + 127) / 255; };
    return uint32_t(out.a) << 24 | scale(out.r) << 16 | scale(out.g) << 8 | scale(out.b);
}

// The picture of a bitmap fill with a colour transform applied.
std::shared_ptr<const DecodedBitmap> transformed(const DecodedBitmap& picture, const ColorTransform& colors)
{
    auto copy = std::make_shared<DecodedBitmap>(picture);
    for (uint32_t& sample : copy->samples) sample = transformSample(sample, colors);
    return copy;
}

struct OpenMask {
    uint16_t clipDepth;
    draw2d::CairoPattern mask;
};

}  // namespace

Painter::Painter(cairo_t* cairo, const Dictionary& dictionary, BitmapCache& bitmaps, size_t position, bool antialias)
    : cairo_(cairo), dictionary_(dictionary), bitmaps_(bitmaps), position_(position), antialias_(antialias),
      objectsLeft_(kMaxObjectsPerFrame)
{}

void Painter::paintTimeline(const Timeline& timeline, size_t age, const Matrix& matrix, const ColorTransform& colors)
{
    paintList(timeline, age, {matrix, colors, 0, false});
}

bool Painter::budgetLeft()
{
    if (objectsLeft_ == 0 || cairo_status(cairo_) != CAIRO_STATUS_SUCCESS) return false;
    --objectsLeft_;
    return true;
}

void Painter::paintList(const Timeline& timeline, size_t age, const Context& context)
{
    if (timeline.frameCount() == 0) return;
    const size_t localFrame = age % timeline.frameCount();
    // A copy: drawing a sprite may replay this same timeline (a sprite that holds itself).
    const auto& objects = timeline.at(localFrame).objects();
    const std::vector<std::pair<uint16_t, DisplayObject>> list(objects.begin(), objects.end());
    std::vector<OpenMask> masks;
    const auto closeMask = [&] {
        cairo_pop_group_to_source(cairo_);
        cairo_mask(cairo_, masks.back().mask.get());
        cairo_set_source_rgb(cairo_, 0, 0, 0);
        masks.pop_back();
    };
    for (const auto& [depth, object] : list) {
        while (!masks.empty() && depth > masks.back().clipDepth) closeMask();
        if (object.clipDepth > 0) {
            // A mask inside a mask's own drawing adds nothing; too many open masks are
            // left out, and what they cover is drawn unmasked.
            if (context.mask || masks.size() >= kMaxOpenMasks) continue;
            Context maskContext = context;
            maskContext.mask = true;
            cairo_push_group(cairo_);
            paintObject(depth, object, timeline, age, localFrame, maskContext);
            draw2d::CairoPattern mask(cairo_pop_group(cairo_));
            cairo_push_group(cairo_);
            masks.push_back({object.clipDepth, std::move(mask)});
            continue;
        }
        if (object.visible) paintObject(depth, object, timeline, age, localFrame, context);
    }
    while (!masks.empty()) closeMask();
}

void Painter::paintObject(uint16_t depth, const DisplayObject& object, const Timeline& timeline, size_t age,
                          size_t localFrame, const Context& context)
{
    const Character* character = dictionary_.find(object.characterId, position_);
    if (!character || !budgetLeft()) return;
    Context inner = context;
    inner.matrix = context.matrix * object.matrix;
    inner.colors = context.colors * object.colorTransform;
    if (!usable(inner.matrix)) return;
    if (const auto* shape = std::get_if<ShapeCharacter>(character)) {
        paintShape(shape->shape, shape->outlines, inner);
    } else if (const auto* morph = std::get_if<MorphCharacter>(character)) {
        const Shape shapeNow = morph->morph.at(object.ratio);
        paintShape(shapeNow, buildOutlines(shapeNow), inner);
    } else if (std::holds_alternative<BitmapCharacter>(*character)) {
        // A bitmap placed by itself: its pixels from the origin, a pixel every 20 twips.
        FillStyle fill;
        fill.kind = FillKind::Bitmap;
        fill.bitmapId = object.characterId;
        fill.repeat = false;
        fill.matrix = {kTwipsPerPixel, 0, 0, kTwipsPerPixel, 0, 0};
        const auto picture = bitmaps_.get(std::get<BitmapCharacter>(*character));
        if (!picture) return;
        const Point corner{picture->width * kTwipsPerPixel, picture->height * kTwipsPerPixel};
        const Contour box{{{0, 0}, {}, {corner.x, 0}}, {{corner.x, 0}, {}, corner}, {corner, {}, {0, corner.y}}};
        fillContours({box}, fill, false, inner);
    } else if (const auto* sprite = std::get_if<SpriteCharacter>(character)) {
        if (inner.nesting >= kMaxNesting) return;
        ++inner.nesting;
        // A sprite on the timeline from its first frame to its last lives on through the
        // loop; any other starts again each time the timeline comes round.
        const size_t parentAge = timeline.persists(depth, object) ? age : localFrame;
        paintList(sprite->timeline, parentAge - std::min<size_t>(parentAge, object.birth), inner);
    }
}

void Painter::paintShape(const Shape& shape, const std::vector<GroupOutline>& outlines, const Context& context)
{
    for (size_t g = 0; g < outlines.size() && g < shape.groups.size(); ++g) {
        const StyleGroup& group = shape.groups[g];
        const GroupOutline& outline = outlines[g];
        for (size_t f = 0; f < outline.fills.size(); ++f) {
            if (!outline.fills[f].empty())
                fillContours(outline.fills[f], group.fills[f], shape.nonZeroWinding, context);
        }
        if (context.mask) continue;  // a mask is its fills
        for (size_t l = 0; l < outline.lines.size(); ++l) {
            if (!outline.lines[l].empty()) strokeRuns(outline.lines[l], group.lines[l], context);
        }
    }
}

void Painter::appendPath(const Contour& contour, const Matrix& matrix, bool close)
{
    if (contour.empty()) return;
    const Point start = matrix.apply(contour.front().from);
    cairo_move_to(cairo_, start.x, start.y);
    for (const Segment& segment : contour) {
        const Point to = matrix.apply(segment.to);
        if (!segment.curved) {
            cairo_line_to(cairo_, to.x, to.y);
            continue;
        }
        // The quadratic curve as the cubic that traces it.
        const Point from = matrix.apply(segment.from);
        const Point control = matrix.apply(segment.control);
        cairo_curve_to(cairo_, from.x + 2.0 / 3.0 * (control.x - from.x), from.y + 2.0 / 3.0 * (control.y - from.y),
                       to.x + 2.0 / 3.0 * (control.x - to.x), to.y + 2.0 / 3.0 * (control.y - to.y), to.x, to.y);
    }
    if (close) cairo_close_path(cairo_);
}

void Painter::fillContours(const std::vector<Contour>& contours, const FillStyle& fill, bool nonZero,
                           const Context& context)
{
    std::shared_ptr<const void> keep;
    if (!setSource(fill, context, keep)) return;
    cairo_new_path(cairo_);
    for (const Contour& contour : contours) appendPath(contour, context.matrix, true);
    cairo_set_fill_rule(cairo_, nonZero ? CAIRO_FILL_RULE_WINDING : CAIRO_FILL_RULE_EVEN_ODD);
    cairo_fill(cairo_);
    cairo_set_source_rgb(cairo_, 0, 0, 0);  // lets go of a bitmap source before `keep` does
}

void Painter::strokeRuns(const std::vector<Contour>& runs, const LineStyle& line, const Context& context)
{
    std::shared_ptr<const void> keep;
    FillStyle solid;
    solid.color = line.color;
    if (!setSource(line.hasFill ? line.fill : solid, context, keep)) return;
    cairo_new_path(cairo_);
    for (const Contour& run : runs) appendPath(run, context.matrix, run.front().from == run.back().to);
    // Widths scale with the drawing; a hairline, or a line thinner than a pixel, is a pixel wide.
    const double scale = std::sqrt(std::abs(context.matrix.determinant()));
    cairo_set_line_width(cairo_, std::max(1.0, line.width * scale));
    cairo_set_line_cap(cairo_, line.cap == CapStyle::None     ? CAIRO_LINE_CAP_BUTT
                               : line.cap == CapStyle::Square ? CAIRO_LINE_CAP_SQUARE
                                                              : CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cairo_, line.join == JoinStyle::Bevel   ? CAIRO_LINE_JOIN_BEVEL
                                : line.join == JoinStyle::Miter ? CAIRO_LINE_JOIN_MITER
                                                                : CAIRO_LINE_JOIN_ROUND);
    cairo_set_miter_limit(cairo_, std::max(1.0, line.miterLimit));
    cairo_stroke(cairo_);
    cairo_set_source_rgb(cairo_, 0, 0, 0);
}

bool Painter::setSource(const FillStyle& fill, const Context& context, std::shared_ptr<const void>& keep)
{
    if (context.mask) {
        cairo_set_source_rgba(cairo_, 0, 0, 0, 1);
        return true;
    }
    switch (fill.kind) {
    case FillKind::Solid: {
        const Rgba c = context.colors.apply(fill.color);
        if (c.a == 0) return false;
        cairo_set_source_rgba(cairo_, c.r / 255.0, c.g / 255.0, c.b / 255.0, c.a / 255.0);
        return true;
    }
    case FillKind::Linear:
    case FillKind::Radial:
    case FillKind::Focal: return setGradient(fill, context);
    case FillKind::Bitmap: return setBitmap(fill, context, keep);
    }
    return false;
}

bool Painter::setGradient(const FillStyle& fill, const Context& context)
{
    cairo_matrix_t toPattern;
    const Matrix unitSquare{kGradientHalf, 0, 0, kGradientHalf, 0, 0};
    if (fill.gradient.stops.empty() || !patternMatrix(context.matrix * fill.matrix * unitSquare, toPattern)) {
        return false;
    }
    draw2d::CairoPattern pattern;
    if (fill.kind == FillKind::Linear) {
        pattern.reset(cairo_pattern_create_linear(-1, 0, 1, 0));
    } else {
        // The focal point stays inside the circle, where the gradient is defined.
        const double focal = fill.kind == FillKind::Focal ? std::clamp(fill.gradient.focalPoint, -0.99, 0.99) : 0.0;
        pattern.reset(cairo_pattern_create_radial(focal, 0, 0, 0, 0, 1));
    }
    for (const GradientStop& stop : fill.gradient.stops) {
        const Rgba c = context.colors.apply(stop.color);
        cairo_pattern_add_color_stop_rgba(pattern.get(), stop.ratio / 255.0, c.r / 255.0, c.g / 255.0, c.b / 255.0,
                                          c.a / 255.0);
    }
    cairo_pattern_set_extend(pattern.get(), extendOf(fill.gradient.spread));
    cairo_pattern_set_matrix(pattern.get(), &toPattern);
    cairo_set_source(cairo_, pattern.get());
    return true;
}

bool Painter::setBitmap(const FillStyle& fill, const Context& context, std::shared_ptr<const void>& keep)
{
    cairo_matrix_t toPattern;
    if (fill.bitmapId == kNoBitmap || !patternMatrix(context.matrix * fill.matrix, toPattern)) return false;
    const auto* bitmap = std::get_if<BitmapCharacter>(dictionary_.find(fill.bitmapId, position_));
    if (!bitmap) return false;
    auto picture = bitmaps_.get(*bitmap);
    if (!picture) return false;
    if (!context.colors.identity()) picture = transformed(*picture, context.colors);
    keep = picture;
    draw2d::CairoSurface surface(cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(const_cast<uint32_t*>(picture->samples.data())), CAIRO_FORMAT_ARGB32,
        picture->width, picture->height, picture->width * 4));
    draw2d::CairoPattern pattern(cairo_pattern_create_for_surface(surface.get()));
    cairo_pattern_set_extend(pattern.get(), fill.repeat ? CAIRO_EXTEND_REPEAT : CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(pattern.get(), fill.smooth && antialias_ ? CAIRO_FILTER_GOOD : CAIRO_FILTER_NEAREST);
    cairo_pattern_set_matrix(pattern.get(), &toPattern);
    cairo_set_source(cairo_, pattern.get());
    return true;
}

}  // namespace qx::swf
