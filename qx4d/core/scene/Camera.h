#pragma once
// The camera of a scene: an entity with a perspective projection, whose view is the
// inverse of its world matrix. One camera is active engine-wide; a scene's last camera
// becomes it when the scene is read.
#include "qx4d/core/scene/Entity.h"

#include <bit>

namespace qx4d {

class Camera : public Entity {
public:
    ~Camera() override;

    void UpdateTransform() override;
    bool Read(TextReader& reader, Scene& scene) override;
    int32_t GetType() const override { return kCamera; }
    /// The transform from position and rotation alone, with no target, scale, pivot or
    /// parent, and the Y axis turned over before the view is taken.
    virtual void UpdateTransformRigid();

    /// Makes this camera the active one; returns the one before it.
    Camera* MakeActive();
    static Camera* Active() { return active; }
    /// Sets the active camera (null for none); returns the one before it.
    static Camera* SetActive(Camera* camera);

    float verticalFOV = std::bit_cast<float>(0x3F1B13ABu);  // 0.6057689 radians
    float aspect = std::bit_cast<float>(0x3FAAAAABu);       // 4/3
    float zNear = 0.1f;
    float zFar = 5000.0f;
    Matrix3x4 view = kIdentity3x4;
    Matrix4x4 projection{};
    Matrix4x4 viewProjection{};

protected:
    bool ReadOwnKey(const String& key, TextReader& reader, Scene& scene, bool& refuse) override;

private:
    void UpdateMatrices();

    static inline Camera* active = nullptr;
};

/// The camera of scene files. It could also fly by keyboard and mouse through an input
/// window; the engine makes none when it is hosted, so it moves only by its keys.
class GCCamera : public Camera {
public:
    float moveSpeed = 1.0f;
    float turnSpeed = 1.0f;
    float moveDamping = 5.0f;
    float turnDamping = 5.0f;
    Float3 velocity{};
    Float3 angularVelocity{};
};

}  // namespace qx4d
