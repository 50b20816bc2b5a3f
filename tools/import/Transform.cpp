#include "tools/import/Transform.h"

#include <algorithm>
#include <cmath>

namespace qx4d::tools {

Transform Multiply(const Transform& a, const Transform& b)
{
    Transform out{};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r) {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k) sum += a[k * 4 + r] * b[c * 4 + k];
            out[c * 4 + r] = sum;
        }
    return out;
}

Transform FromTrs(const Vec3& translation, const Quaternion& rotation, const Vec3& scale)
{
    const auto [x, y, z, w] = Normalized(rotation);
    // The rotation's columns, each scaled by its axis.
    const double r[3][3] = {
        {1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)},
        {2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w)},
        {2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)},
    };
    Transform out = kIdentityTransform;
    for (int c = 0; c < 3; ++c)
        for (int row = 0; row < 3; ++row) out[c * 4 + row] = r[c][row] * scale[c];
    for (int row = 0; row < 3; ++row) out[12 + row] = translation[row];
    return out;
}

Vec3 TransformPoint(const Transform& m, const Vec3& p)
{
    Vec3 out{};
    for (int r = 0; r < 3; ++r) out[r] = m[r] * p[0] + m[4 + r] * p[1] + m[8 + r] * p[2] + m[12 + r];
    return out;
}

double Determinant3(const Transform& m)
{
    return m[0] * (m[5] * m[10] - m[9] * m[6]) - m[4] * (m[1] * m[10] - m[9] * m[2]) +
           m[8] * (m[1] * m[6] - m[5] * m[2]);
}

Vec3 TransformNormal(const Transform& m, const Vec3& n)
{
    // The inverse transpose is the cofactor matrix over the determinant; the scale of
    // the determinant goes away with the normalisation, its sign must stay.
    const double determinant = Determinant3(m);
    if (determinant == 0.0 || !std::isfinite(determinant)) return n;
    auto at = [&](int r, int c) { return m[c * 4 + r]; };
    Vec3 out{};
    for (int r = 0; r < 3; ++r) {
        const int r1 = (r + 1) % 3, r2 = (r + 2) % 3;
        for (int c = 0; c < 3; ++c) {
            const int c1 = (c + 1) % 3, c2 = (c + 2) % 3;
            const double cofactor = at(r1, c1) * at(r2, c2) - at(r1, c2) * at(r2, c1);
            out[r] += cofactor * n[c];
        }
    }
    if (determinant < 0.0) out = {-out[0], -out[1], -out[2]};
    return Normalized(out);
}

Transform Blend(const Transform& a, const Transform& b, double t)
{
    Transform out{};
    for (size_t i = 0; i < out.size(); ++i) out[i] = a[i] * (1.0 - t) + b[i] * t;
    return out;
}

Quaternion Normalized(const Quaternion& q)
{
    const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    if (!(length > 0.0) || !std::isfinite(length)) return {0, 0, 0, 1};
    return {q[0] / length, q[1] / length, q[2] / length, q[3] / length};
}

Quaternion Slerp(const Quaternion& a, const Quaternion& b, double t)
{
    double cosine = a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
    // q and -q are the same rotation: take the one on the short way round.
    const double sign = cosine < 0.0 ? -1.0 : 1.0;
    cosine *= sign;
    double wa = 1.0 - t, wb = t;
    if (cosine < 0.9995) {
        const double angle = std::acos(std::min(cosine, 1.0));
        const double sine = std::sin(angle);
        wa = std::sin((1.0 - t) * angle) / sine;
        wb = std::sin(t * angle) / sine;
    }
    wb *= sign;
    return Normalized({a[0] * wa + b[0] * wb, a[1] * wa + b[1] * wb, a[2] * wa + b[2] * wb, a[3] * wa + b[3] * wb});
}

Vec3 Normalized(const Vec3& v)
{
    const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    if (!(length > 0.0) || !std::isfinite(length)) return v;
    return {v[0] / length, v[1] / length, v[2] / length};
}

}  // namespace qx4d::tools
