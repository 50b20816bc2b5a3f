#pragma once
// DefineMorphShape 1 and 2: a shape given at its start and at its end, with styles in
// pairs and edges in pairs, drawn at a ratio between them (0 the start, 65535 the end).
// Edges pair in order; a straight edge paired with a curve becomes a curve whose control
// lies half-way along it.
#include "platform/swf/Shape.h"

#include <optional>
#include <span>

namespace qx::swf {

struct MorphFill {
    FillStyle start;
    FillStyle end;
};

struct MorphLine {
    LineStyle start;
    LineStyle end;
};

struct MorphEdge {
    Edge start;  // carries the style indices
    Edge end;
};

struct MorphShape {
    uint16_t id = 0;
    std::vector<MorphFill> fills;
    std::vector<MorphLine> lines;
    std::vector<MorphEdge> edges;

    /// The shape at `ratio` (0..65535).
    Shape at(uint16_t ratio) const;
};

/// Parses the body of DefineMorphShape (`version` 1) or DefineMorphShape2 (2). Nothing
/// when the styles cannot be read; edges without a partner at the end are dropped.
std::optional<MorphShape> parseMorphShape(std::span<const uint8_t> body, int version);

}  // namespace qx::swf
