#pragma once
// Creation by class identifier across processes' installs, for hosts: the server of a
// class is found in the registry file that registration wrote, loaded with dlopen, and
// asked for its class object through its DllGetClassObject, as Windows does with
// InprocServer32. A loaded server stays loaded: the servers of this project say so
// through DllCanUnloadNow.
#include "platform/com/ClassRegistry.h"
#include "platform/com/RegistryFile.h"

#include <filesystem>
#include <string_view>

namespace qx::com {

/// The class a ProgID names, versioned or not (a version-independent ProgID without a
/// CLSID of its own follows CurVer); CO_E_CLASSSTRING when none.
HRESULT CLSIDFromProgID(const RegistryFile& registry, std::string_view progId, CLSID& clsid);

/// The class object of `clsid` from the server the registry at `registryPath` names:
/// REGDB_E_CLASSNOTREG when the class (or the registry) is not there, the registry's
/// own codes when it cannot be read, CO_E_DLLNOTFOUND when the server does not load,
/// CO_E_ERRORINDLL when it has no DllGetClassObject, else the server's answer.
HRESULT GetClassObject(const std::filesystem::path& registryPath, const CLSID& clsid, const IID& riid, void** ppv);

/// GetClassObject for IClassFactory, then CreateInstance.
HRESULT CreateInstance(const std::filesystem::path& registryPath, const CLSID& clsid, IUnknown* outer, const IID& riid,
                       void** ppv);

}  // namespace qx::com
