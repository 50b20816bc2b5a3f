#pragma once
// CMyClassFactory, the class factory of the template table's classes: made for each
// request of DllGetClassObject, it creates objects with its row's creator. It counts in
// the module's live objects.
#include "host/FactoryTemplate.h"
#include "platform/com/ClassRegistry.h"
#include "platform/media/BaseObject.h"

#include <atomic>

namespace qx {

class CMyClassFactory final : public IClassFactory, public media::CBaseObject {
public:
    /// A factory of `row` with one reference, which the caller owns; null without memory.
    static CMyClassFactory* Create(const CFactoryTemplate* row);

    HRESULT QueryInterface(const IID& riid, void** ppv) override;
    ULONG AddRef() override;
    ULONG Release() override;
    HRESULT CreateInstance(IUnknown* outer, const IID& riid, void** ppv) override;
    HRESULT LockServer(bool lock) override;

private:
    explicit CMyClassFactory(const CFactoryTemplate* row) : m_pTemplate(row) {}
    ~CMyClassFactory() = default;

    const CFactoryTemplate* m_pTemplate;
    std::atomic<ULONG> m_cRef{1};
};

}  // namespace qx
