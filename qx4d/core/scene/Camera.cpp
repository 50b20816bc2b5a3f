#include "qx4d/core/scene/Camera.h"

#include "qx4d/content/ReadFloatOrEnvelope.h"

namespace qx4d {

Camera::~Camera()
{
    if (active == this) active = nullptr;
}

Camera* Camera::SetActive(Camera* camera)
{
    Camera* before = active;
    active = camera;
    return before;
}

Camera* Camera::MakeActive() { return SetActive(this); }

void Camera::UpdateMatrices()
{
    view = Inverse(matrix);
    projection = Perspective(verticalFOV, aspect, zNear, zFar);
    viewProjection = Multiply(projection, view);
}

void Camera::UpdateTransform()
{
    Entity::UpdateTransform();
    UpdateMatrices();
}

void Camera::UpdateTransformRigid()
{
    matrix = LocalMatrix(position, rotation, {1.0f, 1.0f, 1.0f});
    for (int r = 0; r < 3; ++r) matrix[size_t(r * 4 + 1)] = -matrix[size_t(r * 4 + 1)];
    UpdateMatrices();
}

bool Camera::ReadOwnKey(const String& key, TextReader& reader, Scene& /*scene*/, bool& /*refuse*/)
{
    float* field = key == u"VerticalFOV" ? &verticalFOV
                   : key == u"ZNear"     ? &zNear
                   : key == u"ZFar"      ? &zFar
                   : key == u"Aspect"    ? &aspect
                                         : nullptr;
    if (!field) return false;
    ReadFloatOrEnvelope(reader, *field, envelopes);
    return true;
}

bool Camera::Read(TextReader& reader, Scene& scene)
{
    const bool read = Entity::Read(reader, scene);
    MakeActive();
    return read;
}

}  // namespace qx4d
