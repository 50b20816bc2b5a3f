#pragma once
// Anything with a place in a scene: the shared record of null objects, cameras, lights,
// object instances, particle systems and lens flares, the common keys of their blocks,
// and the evaluation of a world matrix from position, rotation, scale, pivot, target and
// parent.
#include "qx4d/content/Envelope.h"
#include "qx4d/core/Matrix.h"
#include "qx4d/core/String.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace qx4d {

class Scene;
class TextReader;

class Entity {
public:
    /// `GetType()` values.
    enum Type : int32_t {
        kCamera = 0,
        kLight = 1,
        kObjectInstance = 2,
        kNullObject = 3,
        kParticleSystem = 4,
        kLensFlare = 5,
    };
    /// A controller value that turns an angle towards the target.
    static constexpr uint32_t kAim = 1;

    Entity() = default;
    virtual ~Entity() = default;
    Entity(const Entity&) = delete;
    Entity& operator=(const Entity&) = delete;

    /// Evaluates the envelopes at `time`, then the transform.
    virtual void Update(float time, float timeStep);
    /// World = Parent · T(position) · R · S · T(−pivot), with a target turning H and P.
    /// Parent and target must be up to date.
    virtual void UpdateTransform();
    /// Reads the entity's block up to "}" or the end of the text. False refuses the entity.
    virtual bool Read(TextReader& reader, Scene& scene);
    virtual int32_t GetType() const { return kNullObject; }

    /// The common keys; true for a key it took.
    bool ReadKey(const String& key, TextReader& reader);

    uint32_t HController() const { return controllers & 7u; }
    uint32_t PController() const { return (controllers >> 3) & 7u; }

    String name;
    int32_t id = 0;
    int32_t parentId = -1;
    int32_t targetId = -1;
    Float3 position{};
    /// Heading, pitch, bank, radians.
    Float3 rotation{};
    Float3 scale{1.0f, 1.0f, 1.0f};
    Entity* parent = nullptr;
    Entity* target = nullptr;
    Float3 pivot{};
    Matrix3x4 matrix = kIdentity3x4;
    std::vector<std::unique_ptr<Envelope>> envelopes;
    /// Bits 0-2 the H controller, 3-5 the P controller, 6-8 the B controller.
    uint32_t controllers = 0;

protected:
    /// The keys of the derived class, after the common ones; true for a key it took.
    virtual bool ReadOwnKey(const String& /*key*/, TextReader& /*reader*/, Scene& /*scene*/, bool& /*refuse*/)
    {
        return false;
    }
    /// An envelope block bound to `field`; kept when its read succeeds.
    void ReadChannel(float& field, TextReader& reader);

private:
    void AimAtTarget();
};

}  // namespace qx4d
