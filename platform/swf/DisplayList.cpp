#include "platform/swf/DisplayList.h"

#include "platform/swf/ByteReader.h"

namespace qx::swf {

namespace {

// PlaceObject2 and 3 flag bits, first byte.
constexpr uint8_t kHasClipDepth = 0x40;
constexpr uint8_t kHasName = 0x20;
constexpr uint8_t kHasRatio = 0x10;
constexpr uint8_t kHasColorTransform = 0x08;
constexpr uint8_t kHasMatrix = 0x04;
constexpr uint8_t kHasCharacter = 0x02;
constexpr uint8_t kMove = 0x01;
// PlaceObject3, second byte.
constexpr uint8_t kHasVisible = 0x20;
constexpr uint8_t kHasImage = 0x10;
constexpr uint8_t kHasClassName = 0x08;
constexpr uint8_t kHasCacheAsBitmap = 0x04;
constexpr uint8_t kHasBlendMode = 0x02;
constexpr uint8_t kHasFilterList = 0x01;

std::optional<PlaceOp> parsePlaceObject1(ByteReader& reader)
{
    PlaceOp op;
    op.characterId = reader.u16();
    op.depth = reader.u16();
    op.matrix = reader.matrix();
    if (reader.failed()) return std::nullopt;
    if (reader.remaining() > 0) {
        const ColorTransform cx = reader.colorTransform(false);
        if (!reader.failed()) op.colorTransform = cx;
    }
    return op;
}

}  // namespace

std::optional<PlaceOp> parsePlaceObject(std::span<const uint8_t> body, int version)
{
    ByteReader reader(body);
    if (version == 1) return parsePlaceObject1(reader);
    const uint8_t flags = reader.u8();
    const uint8_t flags3 = version == 3 ? reader.u8() : 0;
    PlaceOp op;
    op.move = flags & kMove;
    op.depth = reader.u16();
    if ((flags3 & kHasClassName) || ((flags3 & kHasImage) && (flags & kHasCharacter))) reader.string();
    if (flags & kHasCharacter) op.characterId = reader.u16();
    if (flags & kHasMatrix) op.matrix = reader.matrix();
    if (flags & kHasColorTransform) op.colorTransform = reader.colorTransform(true);
    if (flags & kHasRatio) op.ratio = reader.u16();
    if (flags & kHasName) reader.string();
    if (flags & kHasClipDepth) op.clipDepth = reader.u16();
    // Filters, the blend mode and bitmap caching follow; they are not drawn. The
    // visibility byte comes after them, so it is read only when no filter list (whose
    // records differ in size by kind) stands before it.
    if ((flags3 & kHasVisible) && !(flags3 & kHasFilterList)) {
        if (flags3 & kHasBlendMode) reader.u8();
        if (flags3 & kHasCacheAsBitmap) reader.u8();
        op.visible = reader.u8() != 0;
    }
    if (reader.failed()) return std::nullopt;
    return op;
}

std::optional<RemoveOp> parseRemoveObject(std::span<const uint8_t> body, int version)
{
    ByteReader reader(body);
    if (version == 1) reader.u16();  // character id
    RemoveOp op{reader.u16()};
    if (reader.failed()) return std::nullopt;
    return op;
}

void DisplayList::apply(const ControlOp& op, uint32_t frame)
{
    if (const auto* remove = std::get_if<RemoveOp>(&op)) {
        objects_.erase(remove->depth);
        return;
    }
    place(std::get<PlaceOp>(op), frame);
}

void DisplayList::place(const PlaceOp& op, uint32_t frame)
{
    const auto existing = objects_.find(op.depth);
    DisplayObject object;
    if (op.move) {
        if (existing == objects_.end()) return;  // nothing there to change
        object = existing->second;
        if (op.characterId && *op.characterId != object.characterId) {
            object.characterId = *op.characterId;
            object.birth = frame;  // a replaced sprite starts from its first frame
        }
    } else {
        if (!op.characterId) return;
        object.characterId = *op.characterId;
        object.birth = frame;
    }
    if (op.matrix) object.matrix = *op.matrix;
    if (op.colorTransform) object.colorTransform = *op.colorTransform;
    if (op.ratio) object.ratio = *op.ratio;
    if (op.clipDepth) object.clipDepth = *op.clipDepth;
    if (op.visible) object.visible = *op.visible;
    objects_[op.depth] = object;
}

}  // namespace qx::swf
