#pragma once
// An object file placed in the scene. The object is shared by every instance of it; the
// instance keeps, for each mesh it shows, the matrices of its own placement, so that
// several instances of one object can wait in the render queue at once.
#include "qx4d/core/scene/Entity.h"

#include <vector>

namespace qx4d {

class MeshItem;
class Object;

/// One mesh of an instance as the render queue draws it: the matrices, 12 floats each,
/// hold the world matrix first, then any further bone matrices.
struct DrawRecord {
    MeshItem* mesh = nullptr;
    const Object* object = nullptr;
    std::vector<Matrix3x4> matrices;
};

class ObjectInstance : public Entity {
public:
    /// An instance whose dissolve is above this is hidden whole.
    static constexpr float kVisibleDissolve = 1e-5f;

    void Update(float time, float timeStep) override;
    int32_t GetType() const override { return kObjectInstance; }

    /// Updates the object for this instance at its `time`, placed by the instance's
    /// matrix, and copies each drawn mesh's matrices into `records`. Meshes are told
    /// `sceneTime` for their deformation.
    void EvaluateRecords(float sceneTime);
    bool IsVisible() const { return !(dissolve > kVisibleDissolve); }

    /// The shared object file; the scene owns it.
    Object* object = nullptr;
    std::vector<DrawRecord> records;
    /// Position in the running clip, advanced by each update's step.
    float time = 0.0f;
    /// The running clip. Object files carry no clips, so it stays 0 and the time runs on.
    int32_t clip = 0;
    float dissolve = 0.0f;

protected:
    bool ReadOwnKey(const String& key, TextReader& reader, Scene& scene, bool& refuse) override;
};

}  // namespace qx4d
