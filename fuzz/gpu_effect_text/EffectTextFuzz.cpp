// The effect text front: include expansion and the technique and pass reader, on any text.
// Every include resolves to the input itself, so cycles are exercised.
#include "platform/gpu/EffectIncludes.h"
#include "platform/gpu/FxParser.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string expanded;
    const qx::gpu::IncludeResolver resolver = [&](const std::string&) { return std::optional<std::string>(text); };
    (void)qx::gpu::expandIncludes(text, resolver, expanded);
    qx::gpu::FxText parsed;
    (void)qx::gpu::parseEffectText(text, parsed);
    return 0;
}
