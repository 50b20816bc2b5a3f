#pragma once
// Smaller copies of a bitmap for draws that shrink it: each level half the size of the
// one before, every sample the mean of the four it covers. Levels are premultiplied and
// have the draw's colour key applied before the means are taken, so that keyed samples
// mix as transparent, as they do at full size. A draw that shrinks a picture threefold
// then reads a quarter of the samples, from memory that stays in the cache, and mixes
// them instead of skipping two samples in three.
#include "platform/draw2d/Resample.h"

#include <cstdint>
#include <vector>

namespace qx::draw2d {

class Bitmap;

/// The inclusive ranges of a colour key, red, green and blue in the bytes of the words.
struct KeyRange {
    bool enabled = false;
    uint32_t low = 0;
    uint32_t high = 0;

    bool keys(uint32_t s) const
    {
        for (const int shift : {0, 8, 16}) {
            const uint32_t c = (s >> shift) & 0xFF;
            if (c < ((low >> shift) & 0xFF) || c > ((high >> shift) & 0xFF)) return false;
        }
        return true;
    }
    friend bool operator==(const KeyRange&, const KeyRange&) = default;
};

class Pyramid {
public:
    /// Level `level` (1: half size, 2: a quarter...) of `image` with `key` applied,
    /// premultiplied; made on first use and kept while the key stays the same. Null when
    /// the image is too small for that level or memory runs out.
    const SampleGrid* level(const Bitmap& image, int level, const KeyRange& key);

private:
    struct Level {
        std::vector<uint32_t> samples;
        SampleGrid grid;
    };

    std::vector<Level> levels_;  // levels_[0] is level 1
    KeyRange key_;
};

}  // namespace qx::draw2d
