#include "platform/swf/Dictionary.h"

#include <algorithm>

namespace qx::swf {

void Dictionary::define(uint16_t id, size_t position, Character character)
{
    definitions_[id].push_back({position, std::make_unique<const Character>(std::move(character))});
}

const Character* Dictionary::find(uint16_t id, size_t position) const
{
    const auto found = definitions_.find(id);
    if (found == definitions_.end()) return nullptr;
    const auto& list = found->second;
    // The first definition at or after `position`; the one before it is in force.
    const auto after = std::lower_bound(list.begin(), list.end(), position,
                                        [](const Definition& d, size_t p) { return d.position < p; });
    if (after == list.begin()) return nullptr;
    return std::prev(after)->character.get();
}

}  // namespace qx::swf
