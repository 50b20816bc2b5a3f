#pragma once
// The shape record stream shared by shapes and morph shapes: style changes (a move, new
// fill and line indices, possibly a new set of styles) and straight or curved edges,
// each as deltas from the pen. The reader turns them into records with absolute pen
// positions and hands them to the caller one by one.
#include "platform/swf/ByteReader.h"

#include <functional>

namespace qx::swf {

struct ShapeRecord {
    enum class Kind : uint8_t { StyleChange, Edge };
    Kind kind = Kind::Edge;
    // Style change: which parts are present.
    bool moves = false;
    bool setsFill0 = false;
    bool setsFill1 = false;
    bool setsLine = false;
    bool newStyles = false;
    uint32_t fill0 = 0;
    uint32_t fill1 = 0;
    uint32_t line = 0;
    // Pen position after the record; edges also have where they began and their control.
    Point from;
    Point control;
    Point to;
    bool curved = false;
};

/// Reads the styles of a new style set at the reader (fill and line style arrays) and
/// the new index bit counts; false when they cannot be read.
using NewStylesReader = std::function<bool(ByteReader&, unsigned& fillBits, unsigned& lineBits)>;

/// Reads records from `reader` up to the end record, calling `onRecord` for each. Stops
/// quietly at the end of the data or when the reader fails; returns true only when the
/// end record was reached. `newStyles` may be empty where new styles are not allowed.
bool readShapeRecords(ByteReader& reader, unsigned fillBits, unsigned lineBits, const NewStylesReader& newStyles,
                      const std::function<void(const ShapeRecord&)>& onRecord);

}  // namespace qx::swf
