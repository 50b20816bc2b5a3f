#include "host/EffectParams.h"

#include "platform/os/CRuntime.h"

#include <algorithm>

namespace qx {

std::optional<ParamList> parseParams(std::u16string_view text)
{
    const auto semicolons = std::ranges::count(text, u';');
    if (semicolons > kMaxParams) return std::nullopt;
    ParamList list;
    list.count = LONG(semicolons);
    size_t start = 0;
    for (LONG i = 0; i < list.count; ++i) {
        const size_t end = text.find(u';', start);
        list.values[size_t(i)] = os::_wtol(text.substr(start, end - start));
        start = end + 1;
    }
    return list;
}

std::u16string formatParams(std::span<const LONG> values)
{
    std::u16string text;
    for (const LONG value : values) {
        for (const char c : std::to_string(value)) text += char16_t(c);
        text += u';';
    }
    return text;
}

ParamList defaultParams(LONG effectId)
{
    const auto list = [](std::initializer_list<LONG> values) {
        ParamList result;
        std::ranges::copy(values, result.values.begin());
        result.count = LONG(values.size());
        return result;
    };
    switch (effectId) {
    case 0:
    case 1:
        return list({100, 100, 900, 900});
    case 2:
    case 3:
    case 4:
    case 5:
        return list({250, 250, 750, 750});
    case 6:
        return list({0, 0, 500, 500, 500, 500, 1000, 1000});
    case 7:
    case 8:
        return list({0});
    case 9:
        // shake level, shake strength, spot strength, scratch factor, flash strength,
        // noise level, posterise levels, desaturation, blur
        return list({20, 5, 10, 30, 30, 50, 20, 0, 2});
    case 12:
        return list({4, 3, 12, 0});  // columns, rows, steps, background colour
    case 2001:
        return list({1});  // drops per frame
    default:
        return {};
    }
}

}  // namespace qx
