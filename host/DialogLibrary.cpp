#include "host/DialogLibrary.h"

#include <dlfcn.h>

#include <string>

namespace qx {

namespace {

// The folder of the binary that holds this code: the installed library, or a program
// built with it.
std::string ownFolder()
{
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&DialogEntryPoint), &info) || !info.dli_fname) return {};
    const std::string path = info.dli_fname;
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

class LoadedLibrary {
public:
    // Beside this code first (the installed library), then in the library folder of an
    // installed program (bin/qxfx), then in the build's own folder for programs run from
    // the build, then on the loader's search path.
    LoadedLibrary()
    {
        const std::string name = dialogs::kLibraryName, own = ownFolder();
        const std::string candidates[] = {own + name, own + "../" QX_INSTALL_LIBDIR "/" + name,
                                          QX_BUILD_DIALOGS_DIR "/" + name, name};
        for (const std::string& candidate : candidates) {
            // NODELETE: the toolkit's own exit work must still find its code.
            handle_ = dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
            if (handle_) break;
        }
        if (handle_)
            entry_ = reinterpret_cast<dialogs::ShowPropertiesDialogFunction>(dlsym(handle_, dialogs::kEntryPoint));
    }
    ~LoadedLibrary()
    {
        if (handle_) dlclose(handle_);
    }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    dialogs::ShowPropertiesDialogFunction entry() const { return entry_; }

private:
    void* handle_ = nullptr;
    dialogs::ShowPropertiesDialogFunction entry_ = nullptr;
};

}  // namespace

dialogs::ShowPropertiesDialogFunction DialogEntryPoint()
{
    static const LoadedLibrary library;
    return library.entry();
}

}  // namespace qx
