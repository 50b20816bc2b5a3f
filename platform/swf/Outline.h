#pragma once
// Outlines of a shape, ready to draw: for each fill style, closed contours rebuilt from
// the edges that have that style on either side; for each line style, the runs of
// connected edges it strokes. An edge with the style on its left side is turned around,
// so that every contour of a style keeps the style on the same side, and contours are
// found by joining each edge to one that starts where it ends. Edges that never meet up
// again leave an open contour, which is closed by a straight line when filled.
#include "platform/swf/Shape.h"

#include <vector>

namespace qx::swf {

struct Segment {
    Point from;
    Point control;
    Point to;
    bool curved = false;
};

using Contour = std::vector<Segment>;

struct GroupOutline {
    std::vector<std::vector<Contour>> fills;  // by fill style index - 1
    std::vector<std::vector<Contour>> lines;  // by line style index - 1
};

/// The outlines of every style group of `shape`.
std::vector<GroupOutline> buildOutlines(const Shape& shape);

}  // namespace qx::swf
