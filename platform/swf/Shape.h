#pragma once
// Shapes as their definitions give them: fill and line styles, and edges that name the
// fill on each side and the line along them. A shape is a list of style groups, since a
// record can bring a new set of styles half-way; indices into a group's styles start at
// 1, and 0 means none.
#include "platform/swf/Types.h"

#include <cstdint>
#include <vector>

namespace qx::swf {

enum class FillKind : uint8_t { Solid, Linear, Radial, Focal, Bitmap };

/// How a gradient continues past its ends.
enum class Spread : uint8_t { Pad = 0, Reflect = 1, Repeat = 2 };

struct GradientStop {
    uint8_t ratio = 0;  // 0..255 along the gradient
    Rgba color;
};

struct Gradient {
    Spread spread = Spread::Pad;
    std::vector<GradientStop> stops;
    double focalPoint = 0.0;  // -1..1 of the radius, for focal gradients
};

/// The bitmap id that stands for "no bitmap" in fills.
inline constexpr uint16_t kNoBitmap = 0xFFFF;

struct FillStyle {
    FillKind kind = FillKind::Solid;
    Rgba color;
    /// Gradient square (32768 twips wide, centred on 0) or bitmap pixels to shape twips.
    Matrix matrix;
    Gradient gradient;
    uint16_t bitmapId = kNoBitmap;
    bool repeat = true;  // bitmap fills: tiled, or the edge pixels extended
    bool smooth = true;  // bitmap fills: bilinear, or nearest pixel
};

enum class CapStyle : uint8_t { Round = 0, None = 1, Square = 2 };
enum class JoinStyle : uint8_t { Round = 0, Bevel = 1, Miter = 2 };

struct LineStyle {
    uint16_t width = 0;  // twips; 0 is a hairline
    Rgba color;
    bool hasFill = false;  // strokes with `fill` instead of `color`
    FillStyle fill;
    CapStyle cap = CapStyle::Round;
    JoinStyle join = JoinStyle::Round;
    double miterLimit = 3.0;
};

/// A straight or quadratic edge, in twips of the shape.
struct Edge {
    Point from;
    Point control;  // curved edges only
    Point to;
    bool curved = false;
    uint32_t fill0 = 0;  // style indices within the group, 1-based; 0: none
    uint32_t fill1 = 0;
    uint32_t line = 0;
};

struct StyleGroup {
    std::vector<FillStyle> fills;
    std::vector<LineStyle> lines;
    std::vector<Edge> edges;
};

struct Shape {
    Rect bounds;
    std::vector<StyleGroup> groups;
    bool nonZeroWinding = false;  // DefineShape4 may ask for the non-zero rule; even-odd otherwise
};

}  // namespace qx::swf
