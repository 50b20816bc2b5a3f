#include "tools/swf/ShapeBuilder.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace qx::swftool {

ShapeBuilder& ShapeBuilder::moveTo(int32_t x, int32_t y)
{
    records_.push_back({Record::Kind::Move, x, y});
    return *this;
}

ShapeBuilder& ShapeBuilder::fill0(uint32_t index)
{
    records_.push_back({Record::Kind::Fill0, 0, 0, 0, 0, index});
    return *this;
}

ShapeBuilder& ShapeBuilder::fill1(uint32_t index)
{
    records_.push_back({Record::Kind::Fill1, 0, 0, 0, 0, index});
    return *this;
}

ShapeBuilder& ShapeBuilder::line(uint32_t index)
{
    records_.push_back({Record::Kind::Line, 0, 0, 0, 0, index});
    return *this;
}

ShapeBuilder& ShapeBuilder::lineTo(int32_t x, int32_t y)
{
    records_.push_back({Record::Kind::Straight, x, y});
    return *this;
}

ShapeBuilder& ShapeBuilder::curveTo(int32_t controlX, int32_t controlY, int32_t x, int32_t y)
{
    records_.push_back({Record::Kind::Curve, x, y, controlX, controlY});
    return *this;
}

ShapeBuilder& ShapeBuilder::rectangle(int32_t left, int32_t top, int32_t right, int32_t bottom, uint32_t fill)
{
    return moveTo(left, top)
        .fill0(0)
        .fill1(fill)
        .lineTo(right, top)
        .lineTo(right, bottom)
        .lineTo(left, bottom)
        .lineTo(left, top);
}

ShapeBuilder& ShapeBuilder::circle(int32_t centreX, int32_t centreY, int32_t radius, uint32_t fill)
{
    const double step = 3.14159265358979323846 / 4.0;
    const double controlRadius = radius / std::cos(step / 2.0);
    const auto at = [&](double angle, double r, bool x) {
        return int32_t(std::lround(x ? centreX + r * std::cos(angle) : centreY + r * std::sin(angle)));
    };
    moveTo(centreX + radius, centreY).fill0(0).fill1(fill);
    for (int k = 0; k < 8; ++k) {
        const double mid = (k + 0.5) * step;
        const double end = (k + 1) * step;
        curveTo(at(mid, controlRadius, true), at(mid, controlRadius, false), at(end, radius, true),
                at(end, radius, false));
    }
    return *this;
}

ShapeBuilder& ShapeBuilder::newStyles(std::vector<FillStyle> newFills, std::vector<LineStyle> newLines)
{
    laterSets_.push_back({std::move(newFills), std::move(newLines)});
    records_.push_back({Record::Kind::NewStyles, 0, 0, 0, 0, 0, laterSets_.size() - 1});
    return *this;
}

std::vector<uint8_t> ShapeBuilder::encode(int version) const
{
    BitWriter out;
    writeFillStyles(out, fills, version);
    writeLineStyles(out, lines, version);
    encodeRecords(out, version);
    return out.take();
}

void ShapeBuilder::encodeRecords(BitWriter& out, int version) const
{
    const unsigned fillBits = unsignedBits(fills.size());
    const unsigned lineBits = unsignedBits(lines.size());
    out.ub(fillBits, 4);
    out.ub(lineBits, 4);
    encodeRecordList(out, version, fillBits, lineBits);
}

void ShapeBuilder::encodeRecordList(BitWriter& out, int version, unsigned fillBits, unsigned lineBits) const
{
    int32_t penX = 0;
    int32_t penY = 0;
    for (size_t i = 0; i < records_.size();) {
        const Record& r = records_[i];
        if (r.kind == Record::Kind::Straight || r.kind == Record::Kind::Curve) {
            out.ub(1, 1);
            const bool straight = r.kind == Record::Kind::Straight;
            out.ub(straight, 1);
            const int32_t cx = r.controlX - penX;
            const int32_t cy = r.controlY - penY;
            const int32_t ax = straight ? r.x - penX : r.x - r.controlX;
            const int32_t ay = straight ? r.y - penY : r.y - r.controlY;
            unsigned bits = std::max({2u, signedBits(ax), signedBits(ay)});
            if (!straight) bits = std::max({bits, signedBits(cx), signedBits(cy)});
            out.ub(bits - 2, 4);
            if (straight) out.ub(1, 1);  // general line
            if (!straight) {
                out.sb(cx, bits);
                out.sb(cy, bits);
            }
            out.sb(ax, bits);
            out.sb(ay, bits);
            penX = r.x;
            penY = r.y;
            ++i;
            continue;
        }
        // Consecutive style records make one style change record.
        std::optional<Record> move;
        std::optional<uint32_t> f0, f1, ln;
        std::optional<size_t> set;
        for (; i < records_.size(); ++i) {
            const Record& s = records_[i];
            if (s.kind == Record::Kind::Move)
                move = s;
            else if (s.kind == Record::Kind::Fill0)
                f0 = s.index;
            else if (s.kind == Record::Kind::Fill1)
                f1 = s.index;
            else if (s.kind == Record::Kind::Line)
                ln = s.index;
            else if (s.kind == Record::Kind::NewStyles)
                set = s.styleSet;
            else
                break;
        }
        out.ub(0, 1);
        out.ub(set.has_value(), 1);
        out.ub(ln.has_value(), 1);
        out.ub(f1.has_value(), 1);
        out.ub(f0.has_value(), 1);
        out.ub(move.has_value(), 1);
        if (move) {
            const unsigned bits = std::max(signedBits(move->x), signedBits(move->y));
            out.ub(bits, 5);
            out.sb(move->x, bits);
            out.sb(move->y, bits);
            penX = move->x;
            penY = move->y;
        }
        if (f0) out.ub(*f0, fillBits);
        if (f1) out.ub(*f1, fillBits);
        if (ln) out.ub(*ln, lineBits);
        if (set) {
            const StyleSet& styles = laterSets_[*set];
            writeFillStyles(out, styles.fills, version);
            writeLineStyles(out, styles.lines, version);
            fillBits = unsignedBits(styles.fills.size());
            lineBits = unsignedBits(styles.lines.size());
            out.ub(fillBits, 4);
            out.ub(lineBits, 4);
        }
    }
    out.ub(0, 6);  // end of shape
    out.align();
}

}  // namespace qx::swftool
