#pragma once
// The simulation of one emitter description: spawning from its domain and ranges (the new
// particles of a batch in parallel), ageing, acceleration, collision planes, revolution,
// spin, and the particle quads facing the camera, with colour, size and texture cell over
// each particle's life. What the description selects is bound once, at set-up, into
// function slots, so that the path of each particle tests no option.
#include "qx4d/core/RadixSort.h"
#include "qx4d/core/scene/Bucket.h"
#include "qx4d/core/scene/EmitterInstance.h"

#include <array>
#include <vector>

namespace qx4d {

class ParticleSystem;
class UE2SpriteEmitter;

class UE2EmitterInstance : public EmitterInstance {
public:
    /// Binds the slots for `newDescription`, which outlives the instance, as does `newOwner`,
    /// and makes room for its most particles.
    void SetUp(UE2SpriteEmitter& newDescription, ParticleSystem& newOwner);

    void Update(float newDt) override;
    void Render() override;
    int32_t Count() const override { return liveCount; }
    Float3 RandomPosition() override;
    void Spawn(int32_t count) override;
    /// Up to `count` particles at `point`, their velocities drawn and pushed along `normal`:
    /// what a collision of another emitter's particle asks of this one.
    void SpawnAt(const Float3& point, const Float3& normal, int32_t count);
    /// Empties the emitter, as the scene's restart does.
    void Restart() { liveCount = 0; }

    /// The live particles, `Count()` of them.
    const Particle* Particles() const { return particles.data(); }

    std::array<ParticleVertex, 4> quad{};
    Particle* current = nullptr;
    float lifeFraction = 0.0f;
    Float3 right{1.0f, 0.0f, 0.0f};
    Float3 up{0.0f, 1.0f, 0.0f};
    float sizeX = 0.0f;
    float sizeY = 0.0f;
    float dt = 0.0f;
    UE2SpriteEmitter* description = nullptr;
    bool active = true;
    int32_t spawnedThisRun = 0;
    int32_t liveCount = 0;
    float accumulator = 0.0f;
    std::vector<Particle> particles;
    Float3 velocityDelta{};
    void (UE2EmitterInstance::*applyAcceleration)(Particle&) const = nullptr;
    ParticleSystem* owner = nullptr;
    uint32_t (*chooseColorOnSpawn)(const UE2SpriteEmitter&) = nullptr;
    void (UE2EmitterInstance::*setSubdivision)() = nullptr;
    void (UE2EmitterInstance::*setColor)() = nullptr;
    void (UE2EmitterInstance::*setSize)() = nullptr;
    void (UE2EmitterInstance::*writeQuad)() = nullptr;
    Float3 spawnOffset{};

private:
    /// Where a batch of new particles starts from and what it adds to each.
    struct Birthplace {
        const Float3* point;  // null: the description's domain plus `base`
        Float3 base;
        Float3 velocityBias;
        bool revolve;
    };
    /// Makes `count` particles after the live ones (the room is the caller's to check).
    void SpawnBatch(int32_t count, const Birthplace& birthplace);
    void Birth(Particle& particle, const Birthplace& birthplace) const;
    void ClampSpeed(Float3& velocity) const;
    uint8_t RandomSubdivision() const;
    /// Retires particle `index`: the death spawn, then the last live particle takes its place.
    void Die(int32_t index);
    void SpawnByRate();
    /// Moves `particle` by `dt` against the collision planes, bouncing up to three times.
    void Collide(Particle& particle);
    void Revolve(Particle& particle) const;

    /// The slots of the per-particle draw: colour, cell, size and corners.
    void BindDrawSlots();
    // The slots' variants.
    void NoAcceleration(Particle&) const {}
    void Accelerate(Particle& particle) const;
    void KeepSubdivision() {}
    void RandomCell();
    void CellOverLife();
    template <bool Scale, bool FadeIn, bool FadeOut>
    void ColorOverLife();
    template <bool Uniform, bool Scale>
    void SizeOverLife();
    void PlainQuad();
    void SpinningQuad();

    /// Sets the quad's texture corners from a cell.
    void SetCorners(int64_t cell);
    void SetBlendStates() const;
    /// The order of drawing: far particles first when they blend by alpha.
    const uint32_t* DrawOrder(const Matrix3x4& cameraMatrix);

    RadixSort depthSort{RadixSort::KindFloat};
    std::vector<float> depthKeys;
};

}  // namespace qx4d
