#pragma once
// The client of a scene effect: what the video objects hand a frame, a progress and the
// effect's parameters to. Clients are made by CreateClient from an effect id; the clients
// that play scenes derive from this class and own a player.
#include "platform/com/HResult.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace qx {

namespace wrap3d {
class Base3D;
}

class C4DTransform {
public:
    static constexpr size_t kMaxPath = 260;  // characters, the terminator included

    /// Starts the scene context if it doesn't run.
    C4DTransform();
    /// Deletes the player under the bridge's lock.
    virtual ~C4DTransform();
    C4DTransform(const C4DTransform&) = delete;
    C4DTransform& operator=(const C4DTransform&) = delete;

    /// Loads what the client plays; 0 when it cannot, and the caller then deletes it.
    virtual LONG Init() { return 1; }
    /// The default parameter list; this base has none.
    virtual void GetDefaults(LONG* Params, LONG* nParams);

    /// Draws under the bridge's lock.
    void Process();
    /// `frame` is the input and the output; there are no transition inputs.
    void ProcessFrame(uint32_t* pixels, float newProgress);
    /// Mixes `first` and `second` into `out`.
    void ProcessTransition(uint32_t* first, uint32_t* second, uint32_t* out, float newProgress);

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
    std::unique_ptr<wrap3d::Base3D> player;

protected:
    /// Renders the current frame. The base clears the target to opaque blue, a fault
    /// colour that no client in use reaches.
    virtual void Draw();
    /// The time between frames: 0 when the rate is 0, else 1 / fps.
    float Step() const { return fps == 0.0f ? 0.0f : float(1.0 / double(fps)); }
    /// Makes the player, loads `scenePath` and fits it to the frame size, under the lock.
    LONG InitPlayer(std::unique_ptr<wrap3d::Base3D> newPlayer, std::u16string_view scenePath);
};

}  // namespace qx
