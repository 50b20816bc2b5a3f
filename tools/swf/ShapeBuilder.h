#pragma once
// The edges and style changes of a shape as the SWF writer builds them.
#include "tools/swf/BitWriter.h"

namespace qx::swftool {

/// The edges and style changes of a shape, in twips, with absolute pen positions.
class ShapeBuilder {
public:
    std::vector<FillStyle> fills;
    std::vector<LineStyle> lines;
    bool nonZeroWinding = false;  // DefineShape4's fill rule flag

    ShapeBuilder& moveTo(int32_t x, int32_t y);
    ShapeBuilder& fill0(uint32_t index);
    ShapeBuilder& fill1(uint32_t index);
    ShapeBuilder& line(uint32_t index);
    ShapeBuilder& lineTo(int32_t x, int32_t y);
    ShapeBuilder& curveTo(int32_t controlX, int32_t controlY, int32_t x, int32_t y);
    /// A closed rectangle with `fill` on its inside (drawn clockwise, fill on the right).
    ShapeBuilder& rectangle(int32_t left, int32_t top, int32_t right, int32_t bottom, uint32_t fill);
    /// A closed circle of eight quadratic curves with `fill` on its inside.
    ShapeBuilder& circle(int32_t centreX, int32_t centreY, int32_t radius, uint32_t fill);
    /// A new set of styles from here on; indices then count in the new set.
    ShapeBuilder& newStyles(std::vector<FillStyle> newFills, std::vector<LineStyle> newLines);

    /// SHAPEWITHSTYLE (with the style arrays) for a shape of `version` 1 to 4.
    std::vector<uint8_t> encode(int version) const;
    /// SHAPE (the records only, index bits from this builder's styles) as morph shapes
    /// store their edges; `version` chooses the colour size of any new styles.
    void encodeRecords(BitWriter& out, int version) const;

private:
    struct Record {
        enum class Kind { Move, Fill0, Fill1, Line, Straight, Curve, NewStyles } kind;
        int32_t x = 0;
        int32_t y = 0;
        int32_t controlX = 0;
        int32_t controlY = 0;
        uint32_t index = 0;
        size_t styleSet = 0;
    };
    struct StyleSet {
        std::vector<FillStyle> fills;
        std::vector<LineStyle> lines;
    };
    void encodeRecordList(BitWriter& out, int version, unsigned fillBits, unsigned lineBits) const;

    std::vector<Record> records_;
    std::vector<StyleSet> laterSets_;
};

}  // namespace qx::swftool
