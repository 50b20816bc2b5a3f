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

ParamList defaultParams(const EffectDescriptor& effect)
{
    return effect.defaultsListed ? defaultList(effect.params) : ParamList{};
}

}  // namespace qx
