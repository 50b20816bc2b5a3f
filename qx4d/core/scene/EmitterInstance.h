#pragma once
// A running emitter: its live particles, which it ages, moves and draws. The particle
// record is what the simulation keeps of each one.
#include "qx4d/core/Matrix.h"

#include <array>
#include <cstdint>

namespace qx4d {

struct Particle {
    /// Seconds since birth.
    float age;
    /// Seconds.
    float lifetime;
    /// Units per second.
    Float3 velocity;
    Float3 position;
    /// Half-sizes in x and y.
    std::array<float, 2> size;
    Float3 revolutionCenter;
    Float3 revolutionsPerSecond;
    /// 0xAARRGGBB.
    uint32_t color;
    /// The texture cell, an index into the description's cells.
    uint8_t subdivision;
    /// Collisions so far.
    uint8_t collisions;
    /// Radians.
    float spin;
    /// Radians per second.
    float spinRate;
};

class EmitterInstance {
public:
    EmitterInstance() = default;
    virtual ~EmitterInstance() = default;
    EmitterInstance(const EmitterInstance&) = delete;
    EmitterInstance& operator=(const EmitterInstance&) = delete;

    /// Ages, moves and retires the particles by `dt` seconds, then spawns new ones.
    virtual void Update(float dt) = 0;
    /// Writes the live particles' quads into the particle bucket.
    virtual void Render() = 0;
    /// The number of live particles.
    virtual int32_t Count() const = 0;
    /// The position of a live particle chosen at random; the origin when none lives.
    virtual Float3 RandomPosition() = 0;
    /// Makes up to `count` new particles.
    virtual void Spawn(int32_t count) = 0;
};

}  // namespace qx4d
