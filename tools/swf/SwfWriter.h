#pragma once
// A writer of SWF movies, the project's own producer of test content: shapes with solid,
// gradient and bitmap fills and lines, morph shapes, lossless and JPEG bitmaps, sprites,
// and the display list tags, in plain, zlib or LZMA files. It writes what the reader
// reads, field by field, so that tests can state the picture a file must give.
#include "platform/swf/Shape.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qx::swftool {

using swf::ColorTransform;
using swf::FillStyle;
using swf::LineStyle;
using swf::Matrix;
using swf::Rect;
using swf::Rgba;

/// Bits written from the high bit down, and the compound records of the format.
class BitWriter {
public:
    void ub(uint32_t value, unsigned bits);
    void sb(int32_t value, unsigned bits);
    void align();
    void u8(uint8_t value);
    void u16(uint16_t value);
    void u32(uint32_t value);
    void bytes(std::span<const uint8_t> data);
    void rect(const Rect& r);
    void matrix(const Matrix& m);
    void colorTransform(const ColorTransform& cx, bool withAlpha);
    void color(Rgba c, bool withAlpha);

    std::vector<uint8_t> take();
    size_t size() const { return data_.size(); }

private:
    std::vector<uint8_t> data_;
    unsigned bitsUsed_ = 0;  // bits of the last byte already written
};

/// Bits needed for `value` as a signed field, and for `value` as an unsigned one.
unsigned signedBits(int64_t value);
unsigned unsignedBits(uint64_t value);

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

/// Writes the style arrays of a shape of `version`.
void writeFillStyles(BitWriter& out, const std::vector<FillStyle>& fills, int version);
void writeLineStyles(BitWriter& out, const std::vector<LineStyle>& lines, int version);

/// A sequence of tags: a movie's or a sprite's.
class TagList {
public:
    void tag(uint16_t code, std::span<const uint8_t> body, bool longForm = false);

    void showFrame();
    /// PlaceObject2 of a new character (or, with `move`, a change to the one at `depth`).
    void place(uint16_t depth, std::optional<uint16_t> id, const Matrix& matrix = {},
               std::optional<ColorTransform> colors = std::nullopt, std::optional<uint16_t> ratio = std::nullopt,
               std::optional<uint16_t> clipDepth = std::nullopt, bool move = false);
    /// PlaceObject (the first version): character, depth, matrix, optional CXFORM.
    void placeObject1(uint16_t id, uint16_t depth, const Matrix& matrix,
                      std::optional<ColorTransform> colors = std::nullopt);
    void remove(uint16_t depth);
    void removeObject1(uint16_t id, uint16_t depth);
    void frameLabel(const char* label);

    const std::vector<uint8_t>& bytes() const { return data_; }
    int frames() const { return frames_; }

private:
    std::vector<uint8_t> data_;
    int frames_ = 0;
};

enum class Compression { None, Zlib, Lzma };

class SwfWriter : public TagList {
public:
    SwfWriter(int version, Rect stage, double frameRate);

    void background(Rgba color);
    void defineShape(uint16_t id, const ShapeBuilder& shape, int version = 3);
    /// DefineMorphShape (`version` 1) or DefineMorphShape2 (2): `start` carries the
    /// styles' start values and the edges; `end` the end values and the end edges.
    void defineMorph(uint16_t id, const ShapeBuilder& start, const ShapeBuilder& end, int version = 1);
    /// DefineBitsLossless (`alpha` false: 24-bit) or 2 (32-bit premultiplied) from
    /// straight ARGB words.
    void defineLossless(uint16_t id, int width, int height, std::span<const uint32_t> argb, bool alpha);
    /// DefineBitsLossless with a palette (format 3) of straight ARGB words.
    void defineLosslessPalette(uint16_t id, int width, int height, std::span<const uint32_t> palette,
                               std::span<const uint8_t> indices, bool alpha);
    /// DefineBitsJPEG2 of a JPEG made from straight ARGB words (alpha dropped); with
    /// `alpha`, DefineBitsJPEG3 with the words' alpha as its plane.
    void defineJpeg(uint16_t id, int width, int height, std::span<const uint32_t> argb, bool alpha = false);
    /// JPEGTables and DefineBits: the same JPEG split into its tables and its image.
    void defineJpegWithTables(uint16_t id, int width, int height, std::span<const uint32_t> argb);
    void defineSprite(uint16_t id, const TagList& sprite);

    /// The file. `declaredFrames` goes in the header as written (a real writer may lie).
    std::vector<uint8_t> finish(Compression compression = Compression::None,
                                std::optional<uint16_t> declaredFrames = std::nullopt) const;

private:
    int version_;
    Rect stage_;
    double frameRate_;
};

/// A baseline JPEG of straight ARGB words (alpha dropped), at quality 95.
std::vector<uint8_t> encodeJpeg(int width, int height, std::span<const uint32_t> argb);

}  // namespace qx::swftool
