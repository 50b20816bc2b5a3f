#include "qx4d/core/Matrix.h"

#include <cmath>

namespace qx4d {

Matrix3x4 Multiply(const Matrix3x4& a, const Matrix3x4& b)
{
    Matrix3x4 out{};
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 4; ++c) {
            float sum = c == 3 ? a[r * 4 + 3] : 0.0f;
            for (int k = 0; k < 3; ++k) sum += a[r * 4 + k] * b[k * 4 + c];
            out[r * 4 + c] = sum;
        }
    }
    return out;
}

Matrix4x4 Multiply(const Matrix4x4& a, const Matrix3x4& b)
{
    Matrix4x4 out{};
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            float sum = c == 3 ? a[r * 4 + 3] : 0.0f;
            for (int k = 0; k < 3; ++k) sum += a[r * 4 + k] * b[k * 4 + c];
            out[r * 4 + c] = sum;
        }
    }
    return out;
}

Matrix3x4 Inverse(const Matrix3x4& m)
{
    auto at = [&](int r, int c) { return m[r * 4 + c]; };
    float cofactor[3][3];
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            const int r1 = (r + 1) % 3, r2 = (r + 2) % 3, c1 = (c + 1) % 3, c2 = (c + 2) % 3;
            cofactor[r][c] = at(r1, c1) * at(r2, c2) - at(r1, c2) * at(r2, c1);
        }
    }
    const float determinant = at(0, 0) * cofactor[0][0] + at(0, 1) * cofactor[0][1] + at(0, 2) * cofactor[0][2];
    Matrix3x4 out{};
    // The inverse is the transposed cofactor matrix over the determinant.
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) out[r * 4 + c] = cofactor[c][r] / determinant;
    for (int r = 0; r < 3; ++r) out[r * 4 + 3] = -(out[r * 4] * m[3] + out[r * 4 + 1] * m[7] + out[r * 4 + 2] * m[11]);
    return out;
}

Float3 Translation(const Matrix3x4& m) { return {m[3], m[7], m[11]}; }

Float3 TransformPoint(const Matrix3x4& m, const Float3& p)
{
    Float3 out{};
    for (int r = 0; r < 3; ++r) out[r] = m[r * 4] * p[0] + m[r * 4 + 1] * p[1] + m[r * 4 + 2] * p[2] + m[r * 4 + 3];
    return out;
}

Matrix3x4 RotationHPB(float h, float p, float b)
{
    const float cH = std::cos(h), sH = std::sin(h), cP = std::cos(p), sP = std::sin(p), cB = std::cos(b),
                sB = std::sin(b);
    return {sH * sP * sB + cH * cB, cB * sP * sH - sB * cH, cP * sH, 0.0f, sB * cP, cB * cP, -sP, 0.0f,
            sP * sB * cH - sH * cB, cB * sP * cH + sH * sB, cP * cH, 0.0f};
}

Matrix3x4 LocalMatrix(const Float3& position, const Float3& rotation, const Float3& scale)
{
    Matrix3x4 m = RotationHPB(rotation[0], rotation[1], rotation[2]);
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) m[r * 4 + c] *= scale[c];
        m[r * 4 + 3] = position[r];
    }
    return m;
}

Matrix4x4 Perspective(float fov, float aspect, float zNear, float zFar)
{
    const float c = 1.0f / std::tan(fov * 0.5f);
    Matrix4x4 out{};
    out[0] = c / aspect;
    out[5] = c;
    out[10] = zFar / (zFar - zNear);
    out[11] = -zNear * zFar / (zFar - zNear);
    out[14] = 1.0f;
    return out;
}

}  // namespace qx4d
