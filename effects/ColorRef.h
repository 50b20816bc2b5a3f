#pragma once
// Colours in parameter lists are COLORREF values: red in the lowest byte, then green,
// then blue.
#include "platform/com/HResult.h"
#include "platform/draw2d/Types.h"

namespace qx {

constexpr draw2d::Color colorFromColorRef(LONG colorRef, uint32_t alpha)
{
    const auto ref = uint32_t(colorRef);
    return draw2d::Color::fromArgb(alpha, ref & 0xFF, (ref >> 8) & 0xFF, (ref >> 16) & 0xFF);
}

}  // namespace qx
