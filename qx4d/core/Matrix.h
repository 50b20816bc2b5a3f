#pragma once
// The engine's matrices. Matrices apply to column vectors in a left-handed world with Y up.
// A `Matrix3x4` is three rows of four: the 3x3 part in columns 0 to 2 and the translation
// in column 3; products treat the missing fourth row as (0, 0, 0, 1). All arithmetic is
// in 32-bit floats, as the transforms of the engine are.
#include <array>

namespace qx4d {

using Float3 = std::array<float, 3>;
using Matrix3x4 = std::array<float, 12>;
/// Four rows of four, row-major.
using Matrix4x4 = std::array<float, 16>;

constexpr Matrix3x4 kIdentity3x4{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

/// a · b.
Matrix3x4 Multiply(const Matrix3x4& a, const Matrix3x4& b);
/// a · b, with b's missing row taken as (0, 0, 0, 1).
Matrix4x4 Multiply(const Matrix4x4& a, const Matrix3x4& b);
/// The inverse by cofactors over the determinant. A singular matrix is not tested for:
/// its inverse holds infinities or NaN.
Matrix3x4 Inverse(const Matrix3x4& m);
/// The translation column.
Float3 Translation(const Matrix3x4& m);
/// m applied to the point p (translation included).
Float3 TransformPoint(const Matrix3x4& m, const Float3& p);

/// The rotation of heading `h`, pitch `p` and bank `b` (radians) as the 3x3 part of a
/// matrix with no translation: heading turns about Y, pitch about X, bank about Z, and an
/// entity with all angles 0 faces along +Z.
Matrix3x4 RotationHPB(float h, float p, float b);
/// T(position) · R(rotation) · S(scale).
Matrix3x4 LocalMatrix(const Float3& position, const Float3& rotation, const Float3& scale);
/// The projection for column vectors: c = 1 / tan(fov / 2); x scaled by c / aspect, y by
/// c, depth mapped from [near, far] to [0, 1], w = z.
Matrix4x4 Perspective(float fov, float aspect, float zNear, float zFar);

}  // namespace qx4d
