#pragma once
// A profiler mark around a stage of the frame: begun when made, ended when it goes. GL
// debuggers show them as debug groups with the engine's labels.
#include "qx4d/core/device/GraphicsDevice.h"

#include <string>

namespace qx4d {

class ProfileEvent {
public:
    ProfileEvent(uint32_t colour, const std::string& label) : device(CurrentDevice())
    {
        if (device) device->BeginEvent(colour, label);
    }
    ~ProfileEvent()
    {
        if (device) device->EndEvent();
    }
    ProfileEvent(const ProfileEvent&) = delete;
    ProfileEvent& operator=(const ProfileEvent&) = delete;

private:
    gpu::Device* device;
};

}  // namespace qx4d
