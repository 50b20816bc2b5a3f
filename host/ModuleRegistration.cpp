// What registration writes for each of the module's tables, and removes again: the
// registry scripts of the object map, and the DirectShow set-up of the templates.
#include "host/Module.h"
#include "platform/os/WideText.h"

namespace qx {

namespace {

/// DirectShow's category of filters, under which the set-up data of each filter goes.
constexpr GUID CLSID_LegacyAmFilterCategory = guid("{083863F1-70DE-11D0-BD40-00A0C911CE86}");

std::string classKey(const CLSID& clsid) { return "CLSID\\" + formatGuid(clsid); }

std::string filterKey(const CLSID& clsid)
{
    return classKey(CLSID_LegacyAmFilterCategory) + "\\Instance\\" + formatGuid(clsid);
}

std::string utf8(const char16_t* text) { return text ? os::toUtf8(text) : std::string(); }

void writeServer(com::RegistryFile& registry, const std::string& key, const std::string& modulePath)
{
    registry.setValue(key + "\\InprocServer32", "", modulePath);
    registry.setValue(key + "\\InprocServer32", "ThreadingModel", std::string("Both"));
}

/// Script 101: the module's AppID, and the key of the module's file name that points to it.
void writeModuleScript(com::RegistryFile& registry)
{
    const std::string appId = formatGuid(APPID_QXDynamicEffects);
    registry.setValue("AppID\\" + appId, "", std::string("QXDynamicEffects"));
    registry.setValue("AppID\\QXDynamicEffects.DLL", "AppID", appId);
}

/// A row's script: both ProgIDs with the CLSID they name, and the class's own entries.
void writeRowScript(com::RegistryFile& registry, const ObjectMapEntry& row, const std::string& modulePath)
{
    const std::string clsid = formatGuid(*row.pclsid);
    const std::string description = row.script.description();
    const std::string progId = row.script.progId();
    const std::string independent = row.script.versionIndependentProgId();
    registry.setValue(progId, "", description);
    registry.setValue(progId + "\\CLSID", "", clsid);
    registry.setValue(independent, "", description);
    registry.setValue(independent + "\\CLSID", "", clsid);
    registry.setValue(independent + "\\CurVer", "", progId);
    const std::string key = classKey(*row.pclsid);
    registry.setValue(key, "", description);
    registry.setValue(key, "AppID", formatGuid(APPID_QXDynamicEffects));
    registry.setValue(key + "\\ProgID", "", progId);
    registry.setValue(key + "\\VersionIndependentProgID", "", independent);
    registry.createKey(key + "\\Programmable");
    writeServer(registry, key, modulePath);
    registry.setValue(key + "\\TypeLib", "", formatGuid(LIBID_QXDynamicEffectsLib));
}

void removeRowScript(com::RegistryFile& registry, const ObjectMapEntry& row)
{
    registry.removeTree(row.script.progId());
    registry.removeTree(row.script.versionIndependentProgId());
    registry.removeTree(classKey(*row.pclsid));
}

std::string typeLibraryKey() { return "TypeLib\\" + formatGuid(LIBID_QXDynamicEffectsLib); }

/// A filter's set-up data as the filter mapper keeps it: name, class and merit, then one
/// key per pin with its flags, and under it one key per media type.
void writeFilterSetup(com::RegistryFile& registry, const media::AMOVIESETUP_FILTER& filter)
{
    const std::string key = filterKey(*filter.clsID);
    registry.setValue(key, "FriendlyName", utf8(filter.strName));
    registry.setValue(key, "CLSID", formatGuid(*filter.clsID));
    registry.setValue(key, "Merit", filter.dwMerit);
    for (const auto& pin : filter.Pins()) {
        const std::string pinKey = key + "\\Pins\\" + utf8(pin.strName);
        registry.setValue(pinKey, "Direction", uint32_t(pin.bOutput ? 1 : 0));
        registry.setValue(pinKey, "IsRendered", uint32_t(pin.bRendered));
        registry.setValue(pinKey, "AllowedZero", uint32_t(pin.bZero));
        registry.setValue(pinKey, "AllowedMany", uint32_t(pin.bMany));
        registry.setValue(pinKey, "ConnectsToFilter",
                          pin.clsConnectsToFilter ? formatGuid(*pin.clsConnectsToFilter) : std::string());
        registry.setValue(pinKey, "ConnectsToPin", utf8(pin.strConnectsToPin));
        for (const auto& type : pin.MediaTypes()) {
            registry.createKey(pinKey + "\\Types\\" + formatGuid(*type.clsMajorType) + "\\" +
                               formatGuid(*type.clsMinorType));
        }
    }
}

}  // namespace

void CQXDynamicEffectsModule::UpdateRegistry(com::RegistryFile& registry, const std::string& modulePath,
                                             bool doRegister) const
{
    if (doRegister) {
        writeModuleScript(registry);
        for (const auto& row : objectMap_) writeRowScript(registry, row, modulePath);
        registry.setValue(typeLibraryKey() + "\\2.0", "", std::string("Bibliothèque de types QXDynamicEffects 2.0"));
        return;
    }
    registry.removeTree("AppID\\" + formatGuid(APPID_QXDynamicEffects));
    registry.removeTree("AppID\\QXDynamicEffects.DLL");
    for (const auto& row : objectMap_) removeRowScript(registry, row);
    registry.removeTree(typeLibraryKey());
}

void UpdateTemplateRegistry(com::RegistryFile& registry, std::span<const CFactoryTemplate> templates,
                            const std::string& modulePath, bool doRegister)
{
    for (const auto& row : templates) {
        if (doRegister) {
            const std::string key = classKey(*row.m_ClsID);
            registry.setValue(key, "", utf8(row.m_Name));
            writeServer(registry, key, modulePath);
            if (row.m_pAMovieSetup_Filter) writeFilterSetup(registry, *row.m_pAMovieSetup_Filter);
        } else {
            registry.removeTree(filterKey(*row.m_ClsID));
            registry.removeTree(classKey(*row.m_ClsID));
        }
    }
}

}  // namespace qx
