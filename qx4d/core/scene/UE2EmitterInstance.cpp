// The life of an emitter's particles: set-up, spawning (in parallel over a batch of new
// particles), ageing, acceleration, collisions, revolution, death.
#include "qx4d/core/scene/UE2EmitterInstance.h"

#include "qx4d/content/ParticleRandom.h"
#include "qx4d/content/UE2SpriteEmitter.h"
#include "qx4d/core/scene/ParticleSystem.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qx4d {

namespace {

/// Below this many new particles a batch is made on the calling thread. A birth costs a
/// few hundred nanoseconds, and the hundreds of births of a usual frame are done before
/// the pool's threads would be awake; on a busy machine a worker not yet given a core
/// would hold the whole frame up at the join.
constexpr int32_t kParallelBatch = 2048;
/// A speed clamp below this much is in force; the default of 1e8 turns both clamps off.
constexpr float kClampInForce = 99999.0f;
/// Radians in a revolution, as the engine writes them.
constexpr double kTwoPi = 6.2831855;

uint32_t ColorOfBases(const UE2SpriteEmitter& d)
{
    const ColorRange& c = d.colorMultiplier;
    return uint32_t(c[3].base & 0xFF) << 24 | uint32_t(c[0].base & 0xFF) << 16 | uint32_t(c[1].base & 0xFF) << 8 |
           uint32_t(c[2].base & 0xFF);
}

/// Each channel, red first, `rand() % span + base`.
uint32_t RandomColor(const UE2SpriteEmitter& d)
{
    uint32_t channels[4];
    for (size_t c = 0; c < 4; ++c) {
        const ChannelRange& range = d.colorMultiplier[c];
        channels[c] = uint32_t(qx::os::rand() % range.span + range.base) & 0xFF;
    }
    return channels[3] << 24 | channels[0] << 16 | channels[1] << 8 | channels[2];
}

float SquaredLength(const Float3& v) { return v[0] * v[0] + v[1] * v[1] + v[2] * v[2]; }

void ScaleTo(Float3& v, float length)
{
    const double scale = double(length) / std::sqrt(double(SquaredLength(v)));
    for (float& component : v) component = float(component * scale);
}

/// `count` as a particle count: at least 0, at most what an int32 holds.
int32_t CountOf(double count)
{
    if (!(count > 0.0)) return 0;
    return int32_t(std::min(count, double(std::numeric_limits<int32_t>::max())));
}

}  // namespace

void UE2EmitterInstance::SetUp(UE2SpriteEmitter& newDescription, ParticleSystem& newOwner)
{
    description = &newDescription;
    owner = &newOwner;
    const UE2SpriteEmitter& d = newDescription;
    spawnedThisRun = liveCount = 0;
    accumulator = 0.0f;
    particles.assign(size_t(std::max(d.maxParticles, 0)), Particle{});
    const bool accelerates = d.acceleration[0] != 0.0f || d.acceleration[1] != 0.0f || d.acceleration[2] != 0.0f;
    applyAcceleration = accelerates ? &UE2EmitterInstance::Accelerate : &UE2EmitterInstance::NoAcceleration;
    const auto spans = d.colorMultiplier;
    const bool noSpan = spans[0].span == 0 && spans[1].span == 0 && spans[2].span == 0 && spans[3].span == 0;
    chooseColorOnSpawn = noSpan ? &ColorOfBases : &RandomColor;
    BindDrawSlots();
}

void UE2EmitterInstance::Accelerate(Particle& particle) const
{
    for (size_t axis = 0; axis < 3; ++axis) particle.velocity[axis] += velocityDelta[axis];
}

Float3 UE2EmitterInstance::RandomPosition()
{
    if (liveCount <= 0) return {};
    return particles[size_t(qx::os::rand() % liveCount)].position;
}

void UE2EmitterInstance::Spawn(int32_t count)
{
    const UE2SpriteEmitter& d = *description;
    const Float3 base = d.coordinateSpace == UE2SpriteEmitter::kWorldSpace ? Translation(owner->matrix) : Float3{};
    EmitterInstance* locations = nullptr;
    if (d.addLocationEmitter != -1) {
        locations = owner->Emitter(d.addLocationEmitter);
        if (!locations || locations->Count() == 0) return;
    }
    const int32_t first = liveCount;
    count = std::min(count, int32_t(particles.size()) - liveCount);
    if (count <= 0) return;
    SpawnBatch(count, Birthplace{nullptr, base, {}, true});
    for (int32_t k = 0; k < count; ++k) {
        const Float3 offset = locations ? locations->RandomPosition() : spawnOffset;
        Float3& position = particles[size_t(first + k)].position;
        for (size_t axis = 0; axis < 3; ++axis) position[axis] += offset[axis];
    }
    liveCount += count;
    spawnedThisRun += count;
}

void UE2EmitterInstance::SpawnAt(const Float3& point, const Float3& normal, int32_t count)
{
    count = std::min(count, int32_t(particles.size()) - liveCount);
    if (count <= 0) return;
    SpawnBatch(count, Birthplace{&point, {}, normal, false});
    liveCount += count;
    spawnedThisRun += count;
}

void UE2EmitterInstance::SpawnBatch(int32_t count, const Birthplace& birthplace)
{
    Particle* const batch = particles.data() + liveCount;
    // Each new particle is written by one thread; the random sequence is shared, so which
    // particle gets which draws varies from run to run.
#pragma omp parallel for if (count >= kParallelBatch)
    for (int32_t k = 0; k < count; ++k) Birth(batch[k], birthplace);
}

void UE2EmitterInstance::Birth(Particle& p, const Birthplace& birthplace) const
{
    const UE2SpriteEmitter& d = *description;
    p.age = 0.0f;
    p.lifetime = Draw(d.lifetimeRange);
    if (birthplace.point) {
        p.position = *birthplace.point;
    } else {
        d.domain->Generate(p.position);
        for (size_t axis = 0; axis < 3; ++axis) p.position[axis] += birthplace.base[axis];
    }
    p.velocity = Draw(d.startVelocityRange);
    for (size_t axis = 0; axis < 3; ++axis) p.velocity[axis] += birthplace.velocityBias[axis];
    ClampSpeed(p.velocity);
    p.size = {Draw(d.startSizeRange[0]), Draw(d.startSizeRange[1])};
    p.subdivision = RandomSubdivision();
    p.collisions = 0;
    p.color = chooseColorOnSpawn(d);
    p.spin = Draw(d.startSpinRange);
    const bool clockwise = UnitRandom() >= d.spinCCWorCW;
    p.spinRate = Draw(d.spinsPerSecondRange);
    if (!clockwise) p.spinRate = -p.spinRate;
    if (birthplace.revolve && d.useRevolution) {
        p.revolutionCenter = Draw(d.revolutionCenterOffsetRange);
        p.revolutionsPerSecond = Draw(d.revolutionsPerSecondRange);
    }
}

void UE2EmitterInstance::ClampSpeed(Float3& velocity) const
{
    const UE2SpriteEmitter& d = *description;
    if (!(d.clampVelocityMax < kClampInForce)) return;
    const float s = SquaredLength(velocity);
    if (s < d.clampVelocityMin * d.clampVelocityMin) {
        if (s == 0.0f)
            velocity = {0.0f, d.clampVelocityMin, 0.0f};
        else
            ScaleTo(velocity, d.clampVelocityMin);
    }
    if (s > d.clampVelocityMax * d.clampVelocityMax) ScaleTo(velocity, d.clampVelocityMax);
}

uint8_t UE2EmitterInstance::RandomSubdivision() const
{
    const UE2SpriteEmitter& d = *description;
    const int64_t cells = int64_t(d.subdivisionEnd) - d.subdivisionStart + 1;
    // A reversed range has no cell to draw from: its first stands.
    if (cells <= 0) return uint8_t(d.subdivisionStart);
    return uint8_t(qx::os::rand() % cells + d.subdivisionStart);
}

void UE2EmitterInstance::Update(float newDt)
{
    dt = newDt;
    if (!active) return;
    const UE2SpriteEmitter& d = *description;
    for (size_t axis = 0; axis < 3; ++axis) velocityDelta[axis] = d.acceleration[axis] * dt;
    const bool collides = d.useCollision && d.useCollisionPlanes;
    for (int32_t i = liveCount - 1; i >= 0; --i) {
        Particle& p = particles[size_t(i)];
        p.age += dt;
        if (!(p.lifetime > p.age)) {
            Die(i);
            continue;
        }
        (this->*applyAcceleration)(p);
        p.spin += dt * p.spinRate;
        if (collides) {
            Collide(p);
        } else {
            for (size_t axis = 0; axis < 3; ++axis) p.position[axis] += p.velocity[axis] * dt;
        }
        if (d.useRevolution) Revolve(p);
    }
    SpawnByRate();
}

void UE2EmitterInstance::Die(int32_t index)
{
    const UE2SpriteEmitter& d = *description;
    if (d.deathEmitterFirst != -1 && d.deathEmitterCount > 0) {
        const int64_t chosen = int64_t(qx::os::rand() % d.deathEmitterCount) + d.deathEmitterFirst;
        if (UE2EmitterInstance* heir = owner->Emitter(chosen)) {
            heir->spawnOffset = particles[size_t(index)].position;
            heir->Spawn(d.deathEmitterAmount);
        }
    }
    particles[size_t(index)] = particles[size_t(liveCount - 1)];
    --liveCount;
}

void UE2EmitterInstance::SpawnByRate()
{
    const UE2SpriteEmitter& d = *description;
    const double rate = d.automaticSpawning
                            ? double(d.maxParticles) / std::max(d.lifetimeRange.min, d.lifetimeRange.max)
                            : double(d.particlesPerSecond);
    accumulator += dt;
    const int32_t n = CountOf(std::trunc(rate * accumulator));
    // The rate itself is taken off, not one period a particle: the remainder mostly falls
    // to the clamp at 0.
    accumulator = std::max(0.0f, float(accumulator - rate * n));
    spawnOffset = {};
    Spawn(n);
}

void UE2EmitterInstance::Collide(Particle& p)
{
    const UE2SpriteEmitter& d = *description;
    float rest = dt;
    for (int round = 0; round < 3; ++round) {
        Float3 next;
        for (size_t axis = 0; axis < 3; ++axis) next[axis] = p.position[axis] + p.velocity[axis] * rest;
        const auto hit = std::find_if(d.collisionPlanes.rbegin(), d.collisionPlanes.rend(),
                                      [&](const Plane& plane) { return plane.Distance(next) < 0.0f; });
        if (hit == d.collisionPlanes.rend()) {
            p.position = next;
            return;
        }
        const float d0 = hit->Distance(p.position);
        if (d0 > 0.0f) {
            const auto f = float((double(d0) - 1e-05) / (double(d0) - hit->Distance(next)) * rest);
            rest -= f;
            for (size_t axis = 0; axis < 3; ++axis) p.position[axis] += p.velocity[axis] * f;
            if (d.spawnFromOtherEmitter != -1)
                if (UE2EmitterInstance* other = owner->Emitter(d.spawnFromOtherEmitter))
                    other->SpawnAt(p.position, hit->normal, d.spawnAmount);
        }
        const double along = -2.0 * (double(hit->normal[0]) * p.velocity[0] + double(hit->normal[1]) * p.velocity[1] +
                                     double(hit->normal[2]) * p.velocity[2]);
        for (size_t axis = 0; axis < 3; ++axis) p.velocity[axis] = float(p.velocity[axis] + along * hit->normal[axis]);
        for (size_t axis = 0; axis < 3; ++axis) p.velocity[axis] *= Draw(d.dampingFactorRange[axis]);
    }
}

void UE2EmitterInstance::Revolve(Particle& p) const
{
    const double turn = kTwoPi * dt;
    // Heading from the Y rate, pitch from X, bank from Z.
    const Matrix3x4 r = RotationHPB(float(p.revolutionsPerSecond[1] * turn), float(p.revolutionsPerSecond[0] * turn),
                                    float(p.revolutionsPerSecond[2] * turn));
    Float3 offset;
    for (size_t axis = 0; axis < 3; ++axis) offset[axis] = p.position[axis] - p.revolutionCenter[axis];
    const Float3 turned = TransformPoint(r, offset);
    for (size_t axis = 0; axis < 3; ++axis) p.position[axis] = p.revolutionCenter[axis] + turned[axis];
}

}  // namespace qx4d
