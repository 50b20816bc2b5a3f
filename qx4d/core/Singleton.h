#pragma once
// The base of every engine-wide object (`FileManager`, `Clock`, `Renderer`, ...): one
// static pointer per type, set by the constructor of the instance and cleared by its
// destructor. The instance itself is owned by whoever made it.
#include <cassert>

namespace qx4d {

template <typename T>
class Singleton {
public:
    /// The live instance, or null when none exists.
    static T* Instance() { return static_cast<T*>(instance); }

    Singleton(const Singleton&) = delete;
    Singleton& operator=(const Singleton&) = delete;

protected:
    Singleton()
    {
        assert(instance == nullptr && "one instance at a time");
        instance = this;
    }
    ~Singleton()
    {
        if (instance == this) instance = nullptr;
    }

private:
    // Kept as the base pointer: the cast to T is only made once T is fully built.
    static inline Singleton* instance = nullptr;
};

}  // namespace qx4d
