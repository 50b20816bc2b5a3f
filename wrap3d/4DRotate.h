#pragma once
// The two clients that move one object of a fixed scene by their parameters: a plane that
// turns and travels (Déplacement 3D), and a cube that turns while it moves away from the
// camera and comes back.
#include "qx4d/core/Matrix.h"
#include "wrap3d/4DTransform.h"

namespace qx4d {
class Entity;
}

namespace qx {

/// What the two share: the scene's first object, its scale, and the camera set up.
class C4DObjectMotion : public C4DTransform {
protected:
    /// Loads `sceneFile` (whatever the path holds), scales the first object and places
    /// camera 0 at the origin with a field of 45 degrees, near 0.1 and far 50.
    LONG InitMotion(const char16_t* sceneFile, const qx4d::Float3& scale);
    /// The value between the parameter at slot `start` and the one after it at the
    /// current progress, in double precision.
    float Interpolate(int start) const;
    /// Sets the entity's rotation from degrees A, B, C, B taking the first place, and
    /// plays the frame.
    void TurnAndRender(float a, float b, float c);

    qx4d::Entity* entity = nullptr;
};

class C4DRotate : public C4DObjectMotion {
public:
    LONG Init() override;
    void GetDefaults(LONG* Params, LONG* nParams) override;

    /// Rotations A, B, C in degrees, then the position X, Y, Z in scene units.
    float current[6]{0, 0, 0, 0, 0, -4.0f};

protected:
    void Draw() override;
};

class C4DCube : public C4DObjectMotion {
public:
    LONG Init() override;
    void GetDefaults(LONG* Params, LONG* nParams) override;

    /// Rotations A, B, C in degrees, then the depth value.
    float current[4]{0, 0, 0, -5.0f};

protected:
    void Draw() override;
};

}  // namespace qx
