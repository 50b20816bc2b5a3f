#pragma once
// The component module: its two tables of classes side by side (the ATL object map and
// the DirectShow-style templates), and what the four exported entry points do with them.
// The tables are given, so that tests can run the entry points over tables of their own.
#include "host/FactoryTemplate.h"
#include "host/ObjectMap.h"
#include "platform/com/RegistryFile.h"

#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace qx {

inline constexpr GUID LIBID_QXDynamicEffectsLib = guid("{BD001E57-AC0F-4FF2-988D-4FD79178B9CC}");
inline constexpr GUID APPID_QXDynamicEffects = guid("{B0A32428-4974-44F5-87C8-D90893F4B0BF}");

/// The ATL side: the object map with a class factory kept for each row once asked for.
class CQXDynamicEffectsModule {
public:
    explicit CQXDynamicEffectsModule(std::span<const ObjectMapEntry> objectMap);

    /// The row's class factory queried for `riid`; CLASS_E_CLASSNOTAVAILABLE for a class
    /// that is not in the map.
    HRESULT GetClassObject(const CLSID& clsid, const IID& riid, void** ppv);
    /// Runs the module's registry script, every row's script and the type library's
    /// entry, writing them (`doRegister`) or removing them.
    void UpdateRegistry(com::RegistryFile& registry, const std::string& modulePath, bool doRegister) const;

private:
    std::span<const ObjectMapEntry> objectMap_;
    std::mutex lock_;
    std::vector<com::ComPtr<IClassFactory>> factories_;
};

/// The template side's set-up: each row's class entries and its filter data, written or
/// removed.
void UpdateTemplateRegistry(com::RegistryFile& registry, std::span<const CFactoryTemplate> templates,
                            const std::string& modulePath, bool doRegister);

/// The module as the entry points see it.
class ModuleEntries {
public:
    ModuleEntries(std::span<const CFactoryTemplate> templates, std::span<const ObjectMapEntry> objectMap);

    HRESULT GetClassObject(const CLSID& clsid, const IID& riid, void** ppv);
    /// Registration into the registry file at `registryPath`: the template table first,
    /// then the ATL part. A file that cannot be read or is no registry text is refused
    /// and left as it was; a missing one is made by registering.
    HRESULT RegisterServer(const std::filesystem::path& registryPath, const std::string& modulePath);
    HRESULT UnregisterServer(const std::filesystem::path& registryPath);

    std::span<const CFactoryTemplate> templates() const { return templates_; }

private:
    HRESULT update(const std::filesystem::path& registryPath, const std::string& modulePath, bool doRegister);

    std::span<const CFactoryTemplate> templates_;
    CQXDynamicEffectsModule atlModule_;
};

}  // namespace qx
