// Feeds arbitrary parameter texts to qxfx's check, against the table of an effect that the
// first byte picks: the check refuses with a CommandError or accepts, and a text it accepts
// reads in the host as the same values, each within its slot's range.
#include "apps/qxfx/ParamCheck.h"
#include "apps/session/CommandError.h"
#include "host/EffectCatalog.h"
#include "host/EffectParams.h"
#include "platform/os/WideText.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) return 0;
    const qx::ParamTable table = qx::EffectTable[data[0] % qx::EffectTable.size()].params;
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    try {
        qx::qxfx::checkParamText(text, table);
    } catch (const qx::qxfx::CommandError&) {
        return 0;
    }
    const auto list = qx::parseParams(qx::os::fromUtf8(text));
    if (!list) __builtin_trap();
    if (!table.empty() && size_t(list->count) != table.size()) __builtin_trap();
    for (size_t slot = 0; slot < table.size() && slot < size_t(list->count); ++slot) {
        const qx::LONG value = list->values[slot];
        if (value < table[slot].minimum || value > table[slot].maximum) __builtin_trap();
    }
    return 0;
}
