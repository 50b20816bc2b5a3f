#include "apps/qxfx/ParamCheck.h"

#include "apps/session/CommandError.h"
#include "host/EffectCatalog.h"

#include <charconv>
#include <cstdint>
#include <vector>

namespace qx::qxfx {

namespace {

std::string slotName(ParamTable table, size_t slot)
{
    if (slot >= table.size()) return "value " + std::to_string(slot + 1);
    const ParamDescriptor& p = table[slot];
    return "slot " + std::to_string(p.slot) + " (" + p.name + ": " + p.meaning + ")";
}

// The values of the text, each of which must be followed by ';'.
std::vector<std::string> fields(const std::string& text)
{
    std::vector<std::string> values;
    size_t begin = 0;
    for (size_t end = text.find(';'); end != std::string::npos; end = text.find(';', begin)) {
        values.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    if (begin < text.size()) {
        throw CommandError("parameter text '" + text + "': '" + text.substr(begin) +
                           "' has no ';' after it (each value is followed by ';', as in '100;100;900;900;')");
    }
    return values;
}

}  // namespace

ParamTable paramTableOf(long effectId)
{
    const EffectDescriptor* effect = findEffect(LONG(effectId));
    return effect ? effect->params : ParamTable{};
}

void checkParamText(const std::string& text, ParamTable table)
{
    const std::vector<std::string> values = fields(text);
    if (values.size() > size_t(kMaxParams)) {
        throw CommandError("parameter text '" + text + "': " + std::to_string(values.size()) + " values, at most " +
                           std::to_string(kMaxParams));
    }
    if (!table.empty() && values.size() > table.size()) {
        throw CommandError("parameter text '" + text + "': " + std::to_string(values.size()) +
                           " values, the effect reads " + std::to_string(table.size()));
    }
    for (size_t slot = 0; slot < values.size(); ++slot) {
        const std::string& field = values[slot];
        long value = 0;
        const auto [end, ec] = std::from_chars(field.data(), field.data() + field.size(), value);
        if (field.empty() || ec != std::errc() || end != field.data() + field.size()) {
            throw CommandError(slotName(table, slot) + ": '" + field + "' is not a whole number");
        }
        // The host holds 32-bit values, whatever the table.
        if (value < INT32_MIN || value > INT32_MAX)
            throw CommandError(slotName(table, slot) + ": " + field + " is too large");
        if (slot < table.size() && (value < table[slot].minimum || value > table[slot].maximum)) {
            throw CommandError(slotName(table, slot) + ": " + field + " is out of its range " +
                               std::to_string(table[slot].minimum) + " to " + std::to_string(table[slot].maximum));
        }
    }
    if (values.size() < table.size()) {
        throw CommandError(slotName(table, values.size()) + " is missing: the effect reads " +
                           std::to_string(table.size()) + " values, the text has " + std::to_string(values.size()) +
                           " (see 'qxfx list')");
    }
}

}  // namespace qx::qxfx
