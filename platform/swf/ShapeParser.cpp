#include "platform/swf/ShapeParser.h"

#include "platform/swf/ShapeRecords.h"

namespace qx::swf {

namespace {

Rgba readColor(ByteReader& reader, int version) { return version >= 3 ? reader.rgba() : reader.rgb(); }

size_t readCount(ByteReader& reader, int version)
{
    size_t count = reader.u8();
    if (count == 0xFF && version >= 2) count = reader.u16();
    return count;
}

void readGradient(ByteReader& reader, int version, bool focal, Gradient& gradient)
{
    reader.align();
    gradient.spread = Spread(reader.ub(2));
    if (gradient.spread > Spread::Repeat) gradient.spread = Spread::Pad;  // 3 is reserved
    reader.ub(2);  // interpolation mode: colours are mixed in sRGB here, linear RGB is not drawn
    const unsigned count = reader.ub(4);
    for (unsigned i = 0; i < count && !reader.failed(); ++i) {
        GradientStop stop;
        stop.ratio = reader.u8();
        stop.color = readColor(reader, version);
        gradient.stops.push_back(stop);
    }
    if (focal) gradient.focalPoint = reader.fixed8();
}

}  // namespace

bool readFillStyle(ByteReader& reader, int version, FillStyle& fill)
{
    const uint8_t type = reader.u8();
    switch (type) {
    case 0x00:
        fill.kind = FillKind::Solid;
        fill.color = readColor(reader, version);
        break;
    case 0x10:
    case 0x12:
    case 0x13:
        fill.kind = type == 0x10 ? FillKind::Linear : type == 0x12 ? FillKind::Radial : FillKind::Focal;
        fill.matrix = reader.matrix();
        readGradient(reader, version, type == 0x13, fill.gradient);
        break;
    case 0x40:
    case 0x41:
    case 0x42:
    case 0x43:
        fill.kind = FillKind::Bitmap;
        fill.bitmapId = reader.u16();
        fill.matrix = reader.matrix();
        fill.repeat = type == 0x40 || type == 0x42;
        fill.smooth = type == 0x40 || type == 0x41;
        break;
    default: return false;
    }
    return !reader.failed();
}

bool readFillStyles(ByteReader& reader, int version, std::vector<FillStyle>& fills)
{
    const size_t count = readCount(reader, version);
    for (size_t i = 0; i < count; ++i) {
        FillStyle fill;
        if (!readFillStyle(reader, version, fill)) return false;
        fills.push_back(std::move(fill));
    }
    return !reader.failed();
}

bool readLineStyle2Flags(ByteReader& reader, LineStyle& line)
{
    reader.align();
    line.cap = CapStyle(reader.ub(2));
    line.join = JoinStyle(reader.ub(2));
    const bool hasFill = reader.ub(1);
    reader.ub(3);  // no horizontal scale, no vertical scale, pixel hinting: strokes always scale here
    reader.ub(5);  // reserved
    reader.ub(1);  // no close
    reader.ub(2);  // end cap: one cap style serves both ends here
    if (line.cap > CapStyle::Square) line.cap = CapStyle::Round;
    if (line.join > JoinStyle::Miter) line.join = JoinStyle::Round;
    if (line.join == JoinStyle::Miter) line.miterLimit = reader.fixed8();
    return hasFill;
}

bool readLineStyles(ByteReader& reader, int version, std::vector<LineStyle>& lines)
{
    const size_t count = readCount(reader, version);
    for (size_t i = 0; i < count; ++i) {
        LineStyle line;
        line.width = reader.u16();
        if (version >= 4) {
            line.hasFill = readLineStyle2Flags(reader, line);
            if (line.hasFill && !readFillStyle(reader, version, line.fill)) return false;
            if (!line.hasFill) line.color = reader.rgba();
        } else {
            line.color = readColor(reader, version);
        }
        if (reader.failed()) return false;
        lines.push_back(std::move(line));
    }
    return true;
}

std::optional<ShapeDefinition> parseShape(std::span<const uint8_t> body, int version)
{
    ByteReader reader(body);
    ShapeDefinition result;
    result.id = reader.u16();
    result.shape.bounds = reader.rect();
    if (version >= 4) {
        reader.rect();  // edge bounds
        const uint8_t flags = reader.u8();
        result.shape.nonZeroWinding = flags & 0x04;
    }
    auto& groups = result.shape.groups;
    groups.emplace_back();
    if (!readFillStyles(reader, version, groups.back().fills) ||
        !readLineStyles(reader, version, groups.back().lines)) {
        return std::nullopt;
    }
    const auto newStyles = [&](ByteReader& r, unsigned& fillBits, unsigned& lineBits) {
        StyleGroup group;
        if (!readFillStyles(r, version, group.fills) || !readLineStyles(r, version, group.lines)) return false;
        fillBits = r.ub(4);
        lineBits = r.ub(4);
        groups.push_back(std::move(group));
        return !r.failed();
    };
    const unsigned fillBits = reader.ub(4);
    const unsigned lineBits = reader.ub(4);
    Edge current;
    readShapeRecords(reader, fillBits, lineBits, newStyles, [&](const ShapeRecord& record) {
        if (record.kind == ShapeRecord::Kind::StyleChange) {
            if (record.newStyles) current = Edge{};  // indices start over with the new set
            if (record.setsFill0) current.fill0 = record.fill0;
            if (record.setsFill1) current.fill1 = record.fill1;
            if (record.setsLine) current.line = record.line;
            return;
        }
        Edge edge = current;
        edge.from = record.from;
        edge.control = record.control;
        edge.to = record.to;
        edge.curved = record.curved;
        groups.back().edges.push_back(edge);
    });
    return result;
}

}  // namespace qx::swf
