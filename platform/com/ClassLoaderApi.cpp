// The loader's C interface (libqxcom), over the registry file at its usual place.
#include "platform/com/ClassLoader.h"

// After the library's own headers: the public one defines the status codes as macros.
#include "include/qxdynamiceffects/QXCom.h"

#define QX_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

// The public GUID and the library's share one layout.
static_assert(sizeof(::GUID) == sizeof(qx::GUID));

const qx::GUID& ours(const ::GUID* guid) { return *reinterpret_cast<const qx::GUID*>(guid); }

}  // namespace

QX_EXPORT HRESULT QxCoGetClassObject(const CLSID* rclsid, const IID* riid, void** ppv)
{
    if (!rclsid || !riid) return E_INVALIDARG;
    return qx::com::GetClassObject(qx::com::RegistryFile::defaultPath(), ours(rclsid), ours(riid), ppv);
}

QX_EXPORT HRESULT QxCoCreateInstance(const CLSID* rclsid, IUnknown* pUnkOuter, DWORD, const IID* riid, void** ppv)
{
    if (!rclsid || !riid) return E_INVALIDARG;
    return qx::com::CreateInstance(qx::com::RegistryFile::defaultPath(), ours(rclsid),
                                   reinterpret_cast<qx::IUnknown*>(pUnkOuter), ours(riid), ppv);
}

QX_EXPORT HRESULT QxCLSIDFromProgID(const char* progId, CLSID* pclsid)
{
    if (!progId || !pclsid) return E_INVALIDARG;
    qx::com::RegistryFile registry;
    const HRESULT loaded = qx::com::RegistryFile::load(qx::com::RegistryFile::defaultPath(), registry);
    if (loaded == QX_E_FILE_NOT_FOUND) return CO_E_CLASSSTRING;
    if (QX_FAILED(loaded)) return loaded;
    return qx::com::CLSIDFromProgID(registry, progId, *reinterpret_cast<qx::GUID*>(pclsid));
}
