#include "platform/swf/MorphShape.h"

#include "platform/swf/ShapeParser.h"
#include "platform/swf/ShapeRecords.h"

namespace qx::swf {

namespace {

bool readMorphGradient(ByteReader& reader, MorphFill& fill)
{
    // The count byte has the layout of a gradient's: spread, interpolation, count.
    const uint8_t header = reader.u8();
    const Spread spread = (header >> 6) <= 2 ? Spread(header >> 6) : Spread::Pad;
    fill.start.gradient.spread = fill.end.gradient.spread = spread;
    for (unsigned i = 0; i < (header & 0x0Fu) && !reader.failed(); ++i) {
        GradientStop start;
        GradientStop end;
        start.ratio = reader.u8();
        start.color = reader.rgba();
        end.ratio = reader.u8();
        end.color = reader.rgba();
        fill.start.gradient.stops.push_back(start);
        fill.end.gradient.stops.push_back(end);
    }
    return !reader.failed();
}

bool readMorphFill(ByteReader& reader, MorphFill& fill)
{
    const uint8_t type = reader.u8();
    switch (type) {
    case 0x00:
        fill.start.kind = fill.end.kind = FillKind::Solid;
        fill.start.color = reader.rgba();
        fill.end.color = reader.rgba();
        break;
    case 0x10:
    case 0x12:
        fill.start.kind = fill.end.kind = type == 0x10 ? FillKind::Linear : FillKind::Radial;
        fill.start.matrix = reader.matrix();
        fill.end.matrix = reader.matrix();
        return readMorphGradient(reader, fill);
    case 0x40:
    case 0x41:
    case 0x42:
    case 0x43:
        fill.start.kind = fill.end.kind = FillKind::Bitmap;
        fill.start.bitmapId = fill.end.bitmapId = reader.u16();
        fill.start.matrix = reader.matrix();
        fill.end.matrix = reader.matrix();
        fill.start.repeat = fill.end.repeat = type == 0x40 || type == 0x42;
        fill.start.smooth = fill.end.smooth = type == 0x40 || type == 0x41;
        break;
    default: return false;  // focal gradients and unknown types have no known layout in morphs
    }
    return !reader.failed();
}

bool readMorphStyles(ByteReader& reader, int version, MorphShape& morph)
{
    size_t count = reader.u8();
    if (count == 0xFF) count = reader.u16();
    for (size_t i = 0; i < count; ++i) {
        MorphFill fill;
        if (!readMorphFill(reader, fill)) return false;
        morph.fills.push_back(std::move(fill));
    }
    count = reader.u8();
    if (count == 0xFF) count = reader.u16();
    for (size_t i = 0; i < count; ++i) {
        MorphLine line;
        line.start.width = reader.u16();
        line.end.width = reader.u16();
        if (version >= 2) {
            line.start.hasFill = line.end.hasFill = readLineStyle2Flags(reader, line.start);
            line.end.cap = line.start.cap;
            line.end.join = line.start.join;
            line.end.miterLimit = line.start.miterLimit;
        }
        if (line.start.hasFill) {
            MorphFill fill;
            if (!readMorphFill(reader, fill)) return false;
            line.start.fill = std::move(fill.start);
            line.end.fill = std::move(fill.end);
        } else {
            line.start.color = reader.rgba();
            line.end.color = reader.rgba();
        }
        if (reader.failed()) return false;
        morph.lines.push_back(std::move(line));
    }
    return true;
}

std::vector<ShapeRecord> readRecords(ByteReader& reader)
{
    std::vector<ShapeRecord> records;
    const unsigned fillBits = reader.ub(4);
    const unsigned lineBits = reader.ub(4);
    readShapeRecords(reader, fillBits, lineBits, {}, [&](const ShapeRecord& r) { records.push_back(r); });
    return records;
}

// Pairs each start edge with the next end edge; the end shape's own moves place its pen.
void pairEdges(const std::vector<ShapeRecord>& start, const std::vector<ShapeRecord>& end, MorphShape& morph)
{
    Edge styles;
    size_t next = 0;
    for (const ShapeRecord& record : start) {
        if (record.kind == ShapeRecord::Kind::StyleChange) {
            if (record.setsFill0) styles.fill0 = record.fill0;
            if (record.setsFill1) styles.fill1 = record.fill1;
            if (record.setsLine) styles.line = record.line;
            continue;
        }
        while (next < end.size() && end[next].kind != ShapeRecord::Kind::Edge) ++next;
        if (next == end.size()) return;
        const ShapeRecord& partner = end[next++];
        MorphEdge edge;
        edge.start = styles;
        edge.start.from = record.from;
        edge.start.control = record.control;
        edge.start.to = record.to;
        edge.start.curved = record.curved || partner.curved;
        edge.end = edge.start;
        edge.end.from = partner.from;
        edge.end.control = partner.control;
        edge.end.to = partner.to;
        morph.edges.push_back(edge);
    }
}

Point mix(Point p, Point q, double t) { return {p.x + (q.x - p.x) * t, p.y + (q.y - p.y) * t}; }

FillStyle mixFill(const FillStyle& start, const FillStyle& end, double t)
{
    FillStyle fill = start;
    fill.color = Rgba::interpolate(start.color, end.color, t);
    fill.matrix = Matrix::interpolate(start.matrix, end.matrix, t);
    const size_t stops = std::min(start.gradient.stops.size(), end.gradient.stops.size());
    fill.gradient.stops.resize(stops);
    for (size_t i = 0; i < stops; ++i) {
        const GradientStop& a = start.gradient.stops[i];
        const GradientStop& b = end.gradient.stops[i];
        fill.gradient.stops[i] = {uint8_t(a.ratio + (b.ratio - a.ratio) * t + 0.5),
                                  Rgba::interpolate(a.color, b.color, t)};
    }
    return fill;
}

}  // namespace

std::optional<MorphShape> parseMorphShape(std::span<const uint8_t> body, int version)
{
    ByteReader reader(body);
    MorphShape morph;
    morph.id = reader.u16();
    reader.rect();  // start bounds
    reader.rect();  // end bounds
    if (version >= 2) {
        reader.rect();  // start edge bounds
        reader.rect();  // end edge bounds
        reader.u8();    // stroke scaling flags
    }
    const uint32_t offset = reader.u32();
    const size_t afterOffset = reader.position();
    if (reader.failed() || !readMorphStyles(reader, version, morph)) return std::nullopt;
    const auto start = readRecords(reader);
    // The end edges start where the offset says; a bad offset falls back on the end of
    // the start edges, where writers put them.
    const size_t endAt = offset <= body.size() - afterOffset ? afterOffset + offset : reader.position();
    ByteReader endReader(body.subspan(std::min(endAt, body.size())));
    pairEdges(start, readRecords(endReader), morph);
    return morph;
}

Shape MorphShape::at(uint16_t ratio) const
{
    const double t = ratio / 65535.0;
    Shape shape;
    StyleGroup& group = shape.groups.emplace_back();
    for (const MorphFill& fill : fills) group.fills.push_back(mixFill(fill.start, fill.end, t));
    for (const MorphLine& line : lines) {
        LineStyle mixed = line.start;
        mixed.width = uint16_t(line.start.width + (line.end.width - line.start.width) * t + 0.5);
        mixed.color = Rgba::interpolate(line.start.color, line.end.color, t);
        if (line.start.hasFill) mixed.fill = mixFill(line.start.fill, line.end.fill, t);
        group.lines.push_back(std::move(mixed));
    }
    group.edges.reserve(edges.size());
    for (const MorphEdge& edge : edges) {
        Edge mixed = edge.start;
        mixed.from = mix(edge.start.from, edge.end.from, t);
        mixed.control = mix(edge.start.control, edge.end.control, t);
        mixed.to = mix(edge.start.to, edge.end.to, t);
        group.edges.push_back(mixed);
    }
    return shape;
}

}  // namespace qx::swf
