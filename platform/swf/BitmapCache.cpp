#include "platform/swf/BitmapCache.h"

namespace qx::swf {

std::shared_ptr<const DecodedBitmap> BitmapCache::get(const BitmapCharacter& bitmap)
{
    if (const auto found = index_.find(&bitmap); found != index_.end()) {
        entries_.splice(entries_.begin(), entries_, found->second);
        return found->second->picture;
    }
    std::shared_ptr<const DecodedBitmap> picture;
    if (auto decoded = decodeBitmap(bitmap.source))
        picture = std::make_shared<const DecodedBitmap>(std::move(*decoded));
    const size_t bytes = picture ? picture->samples.size() * sizeof(uint32_t) : 0;
    entries_.push_front({&bitmap, picture, bytes});
    index_[&bitmap] = entries_.begin();
    used_ += bytes;
    // The newest entry stays even when it alone is over the budget.
    while (used_ > budget_ && entries_.size() > 1) {
        used_ -= entries_.back().bytes;
        index_.erase(entries_.back().key);
        entries_.pop_back();
    }
    return picture;
}

}  // namespace qx::swf
