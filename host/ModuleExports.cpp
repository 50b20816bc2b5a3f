// The module's four exported entry points, and its life in the process: the application
// object is made as the library is loaded and goes, with the scene context, as the
// process ends. The library is linked to stay once loaded (DllCanUnloadNow says so), so
// that end never comes while a host unloads it under the loader's lock.
#include "host/Module.h"
#include "host/ObjectTables.h"
#include "wrap3d/Context.h"

#include <dlfcn.h>

#define QX_EXPORT extern "C" __attribute__((visibility("default")))

QX_EXPORT qx::HRESULT DllGetClassObject(const qx::CLSID& rclsid, const qx::IID& riid, void** ppv);

namespace qx {

namespace {

ModuleEntries& Entries()
{
    static ModuleEntries entries(FactoryTemplates(), ObjectMap());
    return entries;
}

/// The file this module was loaded from, as the loader named it (links kept, so that
/// the registry names the library's stable name).
std::string ModulePath()
{
    Dl_info info{};
    if (!::dladdr(reinterpret_cast<void*>(&DllGetClassObject), &info) || !info.dli_fname) return {};
    std::error_code error;
    const auto path = std::filesystem::absolute(info.dli_fname, error);
    return error ? std::string() : path.lexically_normal().string();
}

class CQXDynamicEffectsApp {
public:
    CQXDynamicEffectsApp() { InitInstance(); }
    ~CQXDynamicEffectsApp() { ExitInstance(); }
    CQXDynamicEffectsApp(const CQXDynamicEffectsApp&) = delete;
    CQXDynamicEffectsApp& operator=(const CQXDynamicEffectsApp&) = delete;

private:
    void InitInstance()
    {
        // The owner of the scene context is made first, so that it outlives this object
        // and ExitInstance still finds the context to take down.
        (void)C4DContext::Instance();
        for (const auto& row : FactoryTemplates()) {
            if (row.m_lpfnInit) row.m_lpfnInit(true, row.m_ClsID);
        }
    }
    void ExitInstance()
    {
        // At the process's end, outside the loader's lock: the worker can be joined.
        DestroyContext();
        for (const auto& row : FactoryTemplates()) {
            if (row.m_lpfnInit) row.m_lpfnInit(false, row.m_ClsID);
        }
    }
};

CQXDynamicEffectsApp theApp;

}  // namespace

}  // namespace qx

/// Once loaded, the module stays: the scene context and its worker go only at the end of
/// the process.
QX_EXPORT qx::HRESULT DllCanUnloadNow() { return qx::S_FALSE; }

QX_EXPORT qx::HRESULT DllGetClassObject(const qx::CLSID& rclsid, const qx::IID& riid, void** ppv)
{
    return qx::Entries().GetClassObject(rclsid, riid, ppv);
}

QX_EXPORT qx::HRESULT DllRegisterServer()
{
    const std::string path = qx::ModulePath();
    if (path.empty()) return qx::E_FAIL;
    return qx::Entries().RegisterServer(qx::com::RegistryFile::defaultPath(), path);
}

QX_EXPORT qx::HRESULT DllUnregisterServer()
{
    return qx::Entries().UnregisterServer(qx::com::RegistryFile::defaultPath());
}
