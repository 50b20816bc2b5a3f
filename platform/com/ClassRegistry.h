#pragma once
// Creation of objects by class identifier within the process: class objects registered
// by whoever provides them (this library's module, a host, a plug-in), found by
// CoCreateInstance. A class nobody registered gives REGDB_E_CLASSNOTREG, as on a machine
// where it is not installed.
#include "platform/com/Unknown.h"

namespace qx {

struct IClassFactory : IUnknown {
    static constexpr IID iid = guid("{00000001-0000-0000-C000-000000000046}");
    virtual HRESULT CreateInstance(IUnknown* outer, const IID& riid, void** ppv) = 0;
    virtual HRESULT LockServer(bool lock) = 0;
};

/// The class contexts of the creation call; every context is served in process here.
inline constexpr DWORD CLSCTX_ALL = 23;

/// Makes `factory` the class object of `clsid`, replacing an earlier one.
HRESULT CoRegisterClassObject(const CLSID& clsid, IClassFactory* factory);
HRESULT CoRevokeClassObject(const CLSID& clsid);
HRESULT CoCreateInstance(const CLSID& clsid, IUnknown* outer, DWORD context, const IID& riid, void** ppv);

}  // namespace qx
