// qxregsvr: registers a component server into the user's registry file, or removes it,
// as regsvr32 does on Windows: the server is loaded by its path and its
// DllRegisterServer (or DllUnregisterServer) called.
//
//   qxregsvr [-u] SERVER.so
//
// Prints one line with the result; exit status 0 on success, 1 on failure, 2 for usage.
#include "include/qxdynamiceffects/QXDynamicEffects.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>

int main(int argc, char** argv)
{
    const bool unregister = argc == 3 && std::strcmp(argv[1], "-u") == 0;
    if (argc != 2 + (unregister ? 1 : 0) || argv[argc - 1][0] == '-') {
        std::fprintf(stderr, "usage: qxregsvr [-u] SERVER.so\n");
        return 2;
    }
    const char* server = argv[argc - 1];
    void* module = ::dlopen(server, RTLD_NOW | RTLD_LOCAL);
    if (!module) {
        std::fprintf(stderr, "qxregsvr: %s\n", ::dlerror());
        return 1;
    }
    const char* entry = unregister ? "DllUnregisterServer" : "DllRegisterServer";
    const auto call = reinterpret_cast<LPFNDLLREGISTERSERVER>(::dlsym(module, entry));
    if (!call) {
        std::fprintf(stderr, "qxregsvr: %s has no %s\n", server, entry);
        return 1;
    }
    const HRESULT hr = call();
    if (QX_FAILED(hr)) {
        std::fprintf(stderr, "qxregsvr: %s of %s failed: 0x%08X\n", entry, server, unsigned(hr));
        return 1;
    }
    std::printf("%s: %s succeeded\n", server, entry);
    return 0;
}
