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
///
/// An object made inside an outer object (aggregation, see `aggregate`) hands every
/// IUnknown call of its interfaces to the outer object; the outer one holds it through
/// `innerUnknown()`, which answers for the object itself and owns its life.
template <typename... Interfaces>
class ComObject : public Interfaces... {
    using First = std::tuple_element_t<0, std::tuple<Interfaces...>>;

public:
    HRESULT QueryInterface(const IID& riid, void** ppv) override
    {
        return outer_ ? outer_->QueryInterface(riid, ppv) : InternalQueryInterface(riid, ppv);
    }
    ULONG AddRef() override { return outer_ ? outer_->AddRef() : InternalAddRef(); }
    ULONG Release() override { return outer_ ? outer_->Release() : InternalRelease(); }

    /// The object's own identity and count, which never delegate.
    HRESULT InternalQueryInterface(const IID& riid, void** ppv)
    {
        if (!ppv) return E_POINTER;
        *ppv = nullptr;
        if (riid == IUnknown::iid) {
            *ppv = outer_ ? static_cast<IUnknown*>(&inner_) : static_cast<IUnknown*>(static_cast<First*>(this));
        } else {
            // The first listed interface with this identifier answers.
            (void)((riid == Interfaces::iid && !*ppv ? (*ppv = static_cast<Interfaces*>(this), true) : false) || ...);
        }
        if (!*ppv) return queryExtraInterface(riid, ppv);
        static_cast<IUnknown*>(*ppv)->AddRef();
        return S_OK;
    }
    ULONG InternalAddRef() { return ++references_; }
    ULONG InternalRelease()
    {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    /// Makes this new object a part of `outer`: from now on its interfaces delegate to
    /// `outer`, and the returned inner IUnknown is what `outer` keeps. The inner IUnknown
    /// takes over the one reference of the object's creator; `outer` is not counted, as
    /// it owns the object.
    IUnknown* aggregate(IUnknown* outer)
    {
        outer_ = outer;
        return &inner_;
    }

protected:
    virtual ~ComObject() = default;
    /// Interfaces answered beyond the listed ones (aggregation, tear-offs); none by default.
    virtual HRESULT queryExtraInterface(const IID&, void**) { return E_NOINTERFACE; }

private:
    /// The non-delegating IUnknown of an aggregated object.
    class InnerUnknown final : public IUnknown {
    public:
        explicit InnerUnknown(ComObject& object) : object_(object) {}
        HRESULT QueryInterface(const IID& riid, void** ppv) override
        {
            return object_.InternalQueryInterface(riid, ppv);
        }
        ULONG AddRef() override { return object_.InternalAddRef(); }
        ULONG Release() override { return object_.InternalRelease(); }

    private:
        ComObject& object_;
    };

    std::atomic<ULONG> references_{0};
    IUnknown* outer_ = nullptr;
    InnerUnknown inner_{*this};
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
    /// Gives up the held reference to the caller.
    T* detach() { return std::exchange(p_, nullptr); }
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
