#pragma once
// The count of the module's live objects: every object derived from CBaseObject counts
// from its construction to its destruction, so a module can tell whether any is alive.
#include "platform/com/HResult.h"

#include <atomic>

namespace qx::media {

class CBaseObject {
public:
    CBaseObject() { ++count(); }
    CBaseObject(const CBaseObject&) : CBaseObject() {}
    CBaseObject& operator=(const CBaseObject&) = default;
    ~CBaseObject() { --count(); }

    static LONG ObjectsActive() { return count(); }

private:
    static std::atomic<LONG>& count()
    {
        static std::atomic<LONG> objects{0};
        return objects;
    }
};

}  // namespace qx::media
