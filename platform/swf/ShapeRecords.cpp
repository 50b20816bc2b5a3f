#include "platform/swf/ShapeRecords.h"

namespace qx::swf {

namespace {

// Upper bound on records in one shape: the data bounds them already, this bounds the
// time spent on a shape whose records are all tiny.
constexpr size_t kMaxRecords = size_t(1) << 22;

bool readStyleChange(ByteReader& reader, uint32_t flags, unsigned& fillBits, unsigned& lineBits,
                     const NewStylesReader& newStyles, ShapeRecord& record)
{
    record.kind = ShapeRecord::Kind::StyleChange;
    record.newStyles = flags & 0x10;
    record.setsLine = flags & 0x08;
    record.setsFill1 = flags & 0x04;
    record.setsFill0 = flags & 0x02;
    record.moves = flags & 0x01;
    if (record.moves) {
        const unsigned bits = reader.ub(5);
        record.to.x = reader.sb(bits);
        record.to.y = reader.sb(bits);
    }
    if (record.setsFill0) record.fill0 = reader.ub(fillBits);
    if (record.setsFill1) record.fill1 = reader.ub(fillBits);
    if (record.setsLine) record.line = reader.ub(lineBits);
    if (record.newStyles) {
        // Without a reader for them (morph shapes), new styles cannot be skipped.
        if (!newStyles || !newStyles(reader, fillBits, lineBits)) return false;
    }
    return !reader.failed();
}

void readEdge(ByteReader& reader, ShapeRecord& record)
{
    record.kind = ShapeRecord::Kind::Edge;
    const bool straight = reader.ub(1);
    const unsigned bits = reader.ub(4) + 2;
    record.from = record.to;
    if (straight) {
        record.curved = false;
        double dx = 0.0;
        double dy = 0.0;
        if (reader.ub(1)) {  // general line
            dx = reader.sb(bits);
            dy = reader.sb(bits);
        } else if (reader.ub(1)) {  // vertical
            dy = reader.sb(bits);
        } else {
            dx = reader.sb(bits);
        }
        record.to = {record.from.x + dx, record.from.y + dy};
        record.control = {(record.from.x + record.to.x) / 2.0, (record.from.y + record.to.y) / 2.0};
    } else {
        record.curved = true;
        record.control.x = record.from.x + reader.sb(bits);
        record.control.y = record.from.y + reader.sb(bits);
        record.to.x = record.control.x + reader.sb(bits);
        record.to.y = record.control.y + reader.sb(bits);
    }
}

}  // namespace

bool readShapeRecords(ByteReader& reader, unsigned fillBits, unsigned lineBits, const NewStylesReader& newStyles,
                      const std::function<void(const ShapeRecord&)>& onRecord)
{
    Point pen;
    for (size_t count = 0; count < kMaxRecords; ++count) {
        ShapeRecord record;
        record.to = pen;
        if (reader.ub(1)) {
            readEdge(reader, record);
        } else {
            const uint32_t flags = reader.ub(5);
            if (reader.failed()) return false;
            if (flags == 0) {
                reader.align();
                return true;
            }
            if (!readStyleChange(reader, flags, fillBits, lineBits, newStyles, record)) return false;
        }
        if (reader.failed()) return false;
        pen = record.to;
        onRecord(record);
    }
    return false;
}

}  // namespace qx::swf
