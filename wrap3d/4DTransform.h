#pragma once
// The client of a scene effect: what the video objects hand a frame, a progress and the
// effect's parameters to. Clients are made by CreateClient from an effect id; the clients
// that play scenes derive from this class and own a player.
#include "platform/com/HResult.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace qx {

class C4DTransform {
public:
    static constexpr size_t kMaxPath = 260;  // characters, the terminator included

    C4DTransform();
    virtual ~C4DTransform() = default;
    C4DTransform(const C4DTransform&) = delete;
    C4DTransform& operator=(const C4DTransform&) = delete;

    /// Loads what the client plays; 0 when it cannot, and the host then drops it.
    virtual LONG Init() { return 1; }
    /// The default parameter list; this base has none.
    virtual void GetDefaults(LONG* Params, LONG* nParams);

    /// Renders `frame` at `progress` in place. Without a player the frame is left as it is.
    void Process();

    void SetPath(std::u16string_view text);
    void SetDuration(float seconds) { duration = seconds; }
    void SetFps(float value) { fps = value; }
    void SetAspectRatio(float value) { aspectRatio = value; }
    /// Stores `count` values; a count beyond 16 is cut to 16.
    void SetParams(const LONG* values, LONG count);
    void SetSize(LONG frameWidth, LONG frameHeight);
    void GetSize(LONG* frameWidth, LONG* frameHeight) const;

    LONG width = 0;
    LONG height = 0;
    std::u16string path;
    uint32_t* firstImage = nullptr;
    uint32_t* secondImage = nullptr;
    uint32_t* frame = nullptr;
    float progress = 0.0f;
    float fps = 0.0f;
    float aspectRatio = 1.0f;
    float duration = 0.0f;
    std::array<LONG, 16> params{};
    LONG paramCount = 0;
};

}  // namespace qx
