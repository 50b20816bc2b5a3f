#include "host/Module.h"

#include "host/MyClassFactory.h"

#include <algorithm>

namespace qx {

CQXDynamicEffectsModule::CQXDynamicEffectsModule(std::span<const ObjectMapEntry> objectMap)
    : objectMap_(objectMap), factories_(objectMap.size())
{}

HRESULT CQXDynamicEffectsModule::GetClassObject(const CLSID& clsid, const IID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    const auto row = std::find_if(objectMap_.begin(), objectMap_.end(),
                                  [&](const ObjectMapEntry& entry) { return *entry.pclsid == clsid; });
    if (row == objectMap_.end()) return CLASS_E_CLASSNOTAVAILABLE;
    com::ComPtr<IClassFactory> factory;
    {
        std::lock_guard guard(lock_);
        auto& kept = factories_[size_t(row - objectMap_.begin())];
        if (!kept) kept = row->pfnGetClassObject(row->pfnCreateInstance);
        factory = kept;
    }
    if (!factory) return E_OUTOFMEMORY;
    return factory->QueryInterface(riid, ppv);
}

ModuleEntries::ModuleEntries(std::span<const CFactoryTemplate> templates, std::span<const ObjectMapEntry> objectMap)
    : templates_(templates), atlModule_(objectMap)
{}

HRESULT ModuleEntries::GetClassObject(const CLSID& clsid, const IID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    if (riid != IUnknown::iid && riid != IClassFactory::iid) return E_NOINTERFACE;
    for (const auto& row : templates_) {
        if (*row.m_ClsID != clsid) continue;
        CMyClassFactory* factory = CMyClassFactory::Create(&row);
        if (!factory) return E_OUTOFMEMORY;
        *ppv = static_cast<IClassFactory*>(factory);
        return S_OK;
    }
    return atlModule_.GetClassObject(clsid, riid, ppv);
}

HRESULT ModuleEntries::RegisterServer(const std::filesystem::path& registryPath, const std::string& modulePath)
{
    return update(registryPath, modulePath, true);
}

HRESULT ModuleEntries::UnregisterServer(const std::filesystem::path& registryPath)
{
    return update(registryPath, {}, false);
}

HRESULT ModuleEntries::update(const std::filesystem::path& registryPath, const std::string& modulePath, bool doRegister)
{
    com::RegistryFile registry;
    const HRESULT loaded = com::RegistryFile::load(registryPath, registry);
    // Only registering may start a registry; nothing can be removed from none.
    if (FAILED(loaded) && !(doRegister && loaded == HRESULT_FILE_NOT_FOUND)) return loaded;
    UpdateTemplateRegistry(registry, templates_, modulePath, doRegister);
    atlModule_.UpdateRegistry(registry, modulePath, doRegister);
    return registry.save(registryPath);
}

}  // namespace qx
