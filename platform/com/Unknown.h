#pragma once
// The root interface of component objects, reference-counted objects built on it, and a
// smart pointer that owns one reference.
#include "platform/com/Guid.h"
#include "platform/com/HResult.h"

#include <atomic>
#include <tuple>
#include <utility>

namespace qx {

struct IUnknown {
    static constexpr IID iid = guid("{00000000-0000-0000-C000-000000000046}");
    virtual HRESULT QueryInterface(const IID& riid, void** ppv) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

protected:
    ~IUnknown() = default;
};

namespace com {

/// Implements IUnknown for a class that derives from the listed interfaces (each with a
/// static `iid`). IUnknown is answered through the first interface, so every query for it
/// gives the same pointer, as identity tests require. The object starts with no
/// reference; the creator takes the first.
template <typename... Interfaces>
class ComObject : public Interfaces... {
    using First = std::tuple_element_t<0, std::tuple<Interfaces...>>;

public:
    HRESULT QueryInterface(const IID& riid, void** ppv) override
    {
        if (!ppv) return E_POINTER;
        *ppv = nullptr;
        if (riid == IUnknown::iid) {
            *ppv = static_cast<IUnknown*>(static_cast<First*>(this));
        } else {
            // The first listed interface with this identifier answers.
            (void)((riid == Interfaces::iid && !*ppv ? (*ppv = static_cast<Interfaces*>(this), true) : false) || ...);
        }
        if (!*ppv) return queryExtraInterface(riid, ppv);
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return ++references_; }
    ULONG Release() override
    {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

protected:
    virtual ~ComObject() = default;
    /// Interfaces answered beyond the listed ones (aggregation, tear-offs); none by default.
    virtual HRESULT queryExtraInterface(const IID&, void**) { return E_NOINTERFACE; }

private:
    std::atomic<ULONG> references_{0};
};

/// Owns one reference to an interface.
template <typename T>
class ComPtr {
public:
    ComPtr() = default;
    ComPtr(T* p) : p_(p)
    {
        if (p_) p_->AddRef();
    }
    ComPtr(const ComPtr& other) : ComPtr(other.p_) {}
    ComPtr(ComPtr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept
    {
        std::swap(p_, other.p_);
        return *this;
    }
    ~ComPtr() { reset(); }

    /// Takes over a reference the caller already owns.
    static ComPtr adopt(T* p)
    {
        ComPtr result;
        result.p_ = p;
        return result;
    }
    void reset()
    {
        if (auto* p = std::exchange(p_, nullptr)) p->Release();
    }
    T* get() const { return p_; }
    T* operator->() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }
    /// Where a callee writes a new reference; the held one is released first.
    T** out()
    {
        reset();
        return &p_;
    }

private:
    T* p_ = nullptr;
};

}  // namespace com
}  // namespace qx
