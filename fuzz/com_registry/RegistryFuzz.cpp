// Feeds arbitrary bytes to the registry file's reader; what it accepts must be written
// back to a text that reads as the same registry, and ProgID lookups over it must end.
#include "platform/com/ClassLoader.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using qx::com::RegistryFile;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    RegistryFile registry;
    if (!RegistryFile::parse(text, registry)) return 0;
    RegistryFile again;
    if (!RegistryFile::parse(registry.text(), again) || again.text() != registry.text()) __builtin_trap();
    qx::CLSID clsid;
    (void)qx::com::CLSIDFromProgID(registry, "QXDynamicEffects.QXDynamicEffect", clsid);
    (void)qx::com::CLSIDFromProgID(registry, "A", clsid);
    return 0;
}
