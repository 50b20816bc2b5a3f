#pragma once
// What the integers of an effect's parameter list mean. The list travels as up to 16
// signed integers ("100;100;900;900;"); an effect's table names each slot it reads, with
// its meaning, default and range. The host's defaults, the command line, the plug-ins, the
// dialogs and the scene clients read these tables; effects read their slots by the names
// of their slot enums, never by number.
#include "platform/com/HResult.h"

#include <array>
#include <span>

namespace qx {

inline constexpr LONG kMaxParams = 16;

/// The host's list as an effect reads it at a frame: all 16 slots, those beyond the count
/// at zero, and the count.
struct ParamValues {
    std::span<const LONG, kMaxParams> values;
    LONG count = 0;

    constexpr LONG operator[](size_t slot) const { return values[slot]; }
};

/// A parameter list and its count of valid values.
struct ParamList {
    std::array<LONG, kMaxParams> values{};
    LONG count = 0;
};

enum class ParamKind {
    Integer,        ///< a count, a level, an angle or a distance, in the unit its meaning gives
    Color,          ///< a COLORREF: red in the lowest byte, then green, then blue
    RectangleSide,  ///< a side of a rectangle in thousandths of the frame's width or height
    Percentage,     ///< 0 to 100
    Boolean,        ///< 0 or 1
};

struct ParamDescriptor {
    int slot;
    const char* name;     ///< short and stable, for scripts and plug-ins
    const char* meaning;  ///< what the effect does with the value
    LONG defaultValue;
    LONG minimum;
    LONG maximum;
    ParamKind kind;
    const char* caption = nullptr;  ///< the text of the effect's dialog beside the value, if it has one
};

using ParamTable = std::span<const ParamDescriptor>;

/// The largest COLORREF: white.
inline constexpr LONG kMaxColorRef = 0xFFFFFF;

/// The defaults of a table, in slot order (a table lists its slots from 0 in order).
constexpr ParamList defaultList(ParamTable table)
{
    ParamList list;
    for (size_t slot = 0; slot < table.size() && slot < list.values.size(); ++slot) {
        list.values[slot] = table[slot].defaultValue;
        ++list.count;
    }
    return list;
}

/// Writes the defaults of a table and their count, as GetDefaults of a scene client does.
void WriteDefaults(ParamTable table, LONG* Params, LONG* nParams);

/// The name of a kind, as the command line shows it ("rectangle side").
const char* kindName(ParamKind kind);

}  // namespace qx
