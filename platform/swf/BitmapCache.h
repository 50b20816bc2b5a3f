#pragma once
// Decoded bitmaps of a movie, kept while they fit a budget: a movie of ffmpeg's writer
// defines a new picture for every frame, so decoding must not keep them all.
#include "platform/swf/Dictionary.h"

#include <list>
#include <memory>
#include <unordered_map>

namespace qx::swf {

class BitmapCache {
public:
    explicit BitmapCache(size_t budgetBytes) : budget_(budgetBytes) {}

    /// The decoded picture of `bitmap`, decoded on first use; null when it cannot be.
    std::shared_ptr<const DecodedBitmap> get(const BitmapCharacter& bitmap);

private:
    struct Entry {
        const BitmapCharacter* key;
        std::shared_ptr<const DecodedBitmap> picture;  // null: the data could not be decoded
        size_t bytes;
    };

    std::list<Entry> entries_;  // most recently used first
    std::unordered_map<const BitmapCharacter*, std::list<Entry>::iterator> index_;
    size_t used_ = 0;
    size_t budget_;
};

}  // namespace qx::swf
