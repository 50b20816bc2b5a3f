#pragma once
// A writer of SWF movies, the project's own producer of test content: shapes with solid,
// gradient and bitmap fills and lines, morph shapes, lossless and JPEG bitmaps, sprites,
// and the display list tags, in plain, zlib or LZMA files. It writes what the reader
// reads, field by field, so that tests can state the picture a file must give.
#include "tools/swf/ShapeBuilder.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qx::swftool {

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
