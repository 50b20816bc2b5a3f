/* Creation of objects by class identifier on Linux (libqxcom): the class is looked up in
 * the registry file that a server's DllRegisterServer wrote, its server is loaded and
 * stays loaded, and its DllGetClassObject gives the class object.
 *
 * The registry file is $XDG_DATA_HOME/qxcom/classes.reg (~/.local/share/qxcom/classes.reg
 * when XDG_DATA_HOME is not set). */
#ifndef QXCOM_H
#define QXCOM_H

#include "QXDynamicEffects.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The class object of rclsid queried for riid. REGDB_E_CLASSNOTREG when the class is not
 * registered, REGDB_E_READREGDB or REGDB_E_INVALIDVALUE when the registry cannot be read
 * or is corrupt, CO_E_DLLNOTFOUND when its server does not load, CO_E_ERRORINDLL when the
 * server has no DllGetClassObject; else the server's answer. */
HRESULT QxCoGetClassObject(const CLSID* rclsid, const IID* riid, void** ppv);

/* A new object of rclsid through its class factory; pUnkOuter, when set, aggregates it
 * (riid must then be IID_IUnknown). dwClsContext is accepted and ignored: every server
 * is in process. */
HRESULT QxCoCreateInstance(const CLSID* rclsid, IUnknown* pUnkOuter, DWORD dwClsContext, const IID* riid, void** ppv);

/* The class of a ProgID, versioned ("QXDynamicEffects.QXDynamicEffect.5") or not;
 * CO_E_CLASSSTRING when the registry names no such class. */
HRESULT QxCLSIDFromProgID(const char* progId, CLSID* pclsid);

#ifdef __cplusplus
}
#endif

#endif /* QXCOM_H */
