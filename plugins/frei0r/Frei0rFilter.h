#pragma once
// One instance of a frei0r filter: its parameter values and its own effect host. The
// host is set up on the first frame after a value that reaches Setup changed (all but
// progress and the time unit), so that hosts that put every parameter before every frame
// (MLT) do not restart stateful effects. Frames are copied into and out of the host's
// frames, since a frei0r host hands new buffers each time.
#include "plugins/frei0r/Frei0rParams.h"

#include <memory>
#include <mutex>

namespace qx::frei0r {

class Frei0rFilter {
public:
    Frei0rFilter(const PluginKind& kind, int width, int height);

    void setNumber(int index, double value);
    void setText(int index, const char* text);
    /// Writes the value of parameter `index` where `param` points, as frei0r defines it
    /// (a double, or a pointer to text that stays valid until the next set).
    void getValue(int index, void* param);

    /// Renders `in` into `out`, both of this instance's size. A frame the effect cannot
    /// render passes through unchanged: frei0r has no way to report a failure.
    void update(double time, const uint32_t* in, uint32_t* out);

private:
    bool isText(int index) const;
    bool reachesSetup(int index) const;
    void setUp();

    const PluginKind& kind_;
    // Hosts may call from several threads at once (MLT's slices): one frame at a time.
    std::mutex lock_;
    int width_;
    int height_;
    InstanceValues values_;
    std::unique_ptr<qxfx::EffectSession> session_;
    HostClock clock_;
    bool changed_ = true;
};

}  // namespace qx::frei0r
