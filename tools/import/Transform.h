#pragma once
// The arithmetic of the importer's node hierarchy: 4x4 transforms in double precision,
// stored column by column as glTF stores them, applied to column vectors; rotations as
// unit quaternions (x, y, z, w).
#include <array>

namespace qx4d::tools {

using Vec3 = std::array<double, 3>;
using Quaternion = std::array<double, 4>;
/// Column-major: element (row r, column c) at [c * 4 + r].
using Transform = std::array<double, 16>;

constexpr Transform kIdentityTransform{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

/// a · b: b applies first.
Transform Multiply(const Transform& a, const Transform& b);
/// T(translation) · R(rotation) · S(scale); the quaternion need not be normalised.
Transform FromTrs(const Vec3& translation, const Quaternion& rotation, const Vec3& scale);
/// m applied to the point p.
Vec3 TransformPoint(const Transform& m, const Vec3& p);
/// m applied to a normal: the inverse transpose of its 3x3 part, normalised. A singular
/// matrix leaves the normal as it is.
Vec3 TransformNormal(const Transform& m, const Vec3& n);
/// The determinant of the 3x3 part: below zero, the transform mirrors.
double Determinant3(const Transform& m);
/// a · (1 - t) + b · t for each element.
Transform Blend(const Transform& a, const Transform& b, double t);

/// The shorter spherical interpolation between two unit quaternions.
Quaternion Slerp(const Quaternion& a, const Quaternion& b, double t);
/// q scaled to unit length; a zero quaternion gives the identity rotation.
Quaternion Normalized(const Quaternion& q);

Vec3 Normalized(const Vec3& v);

}  // namespace qx4d::tools
