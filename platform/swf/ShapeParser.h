#pragma once
// DefineShape 1 to 4: the character id, the styles and the edges, grouped by style set.
// Shape versions differ in colour size (RGB up to 2), style counts beyond 255 (from 2),
// and line styles with caps, joins and fills (4).
#include "platform/swf/ByteReader.h"
#include "platform/swf/Shape.h"

#include <optional>

namespace qx::swf {

struct ShapeDefinition {
    uint16_t id = 0;
    Shape shape;
};

/// Parses the body of a DefineShape tag of `version` 1 to 4. Nothing when its styles
/// cannot be read; edges that run past the data are dropped from that point on.
std::optional<ShapeDefinition> parseShape(std::span<const uint8_t> body, int version);

/// The style arrays as shapes store them; false when they cannot be read.
bool readFillStyles(ByteReader& reader, int version, std::vector<FillStyle>& fills);
bool readLineStyles(ByteReader& reader, int version, std::vector<LineStyle>& lines);
/// One fill style; false for an unknown type, whose size cannot be known.
bool readFillStyle(ByteReader& reader, int version, FillStyle& fill);

/// Reads the cap and join fields of a version 4 line style (shapes and morph shapes share
/// them) up to, not including, the colour or fill. Returns the "has fill" flag.
bool readLineStyle2Flags(ByteReader& reader, LineStyle& line);

}  // namespace qx::swf
