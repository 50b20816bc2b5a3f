#pragma once
// The characters a movie defines, by id. A movie may define an id again (after freeing
// it, as ffmpeg's writer does for each frame's picture), so each definition is kept with
// the place of its tag, and a frame sees the last definition before its own ShowFrame.
#include "platform/swf/BitmapDecoder.h"
#include "platform/swf/MorphShape.h"
#include "platform/swf/Outline.h"
#include "platform/swf/Timeline.h"

#include <map>
#include <memory>
#include <variant>

namespace qx::swf {

struct ShapeCharacter {
    Shape shape;
    std::vector<GroupOutline> outlines;
};

struct MorphCharacter {
    MorphShape morph;
};

struct BitmapCharacter {
    BitmapSource source;
};

struct SpriteCharacter {
    Timeline timeline;
};

using Character = std::variant<ShapeCharacter, MorphCharacter, BitmapCharacter, SpriteCharacter>;

class Dictionary {
public:
    /// Adds the definition of `id` made by the tag at `position` (positions rise).
    void define(uint16_t id, size_t position, Character character);
    /// The definition of `id` in force before `position`; null when there is none.
    const Character* find(uint16_t id, size_t position) const;

private:
    struct Definition {
        size_t position;
        std::unique_ptr<const Character> character;
    };
    std::map<uint16_t, std::vector<Definition>> definitions_;
};

}  // namespace qx::swf
