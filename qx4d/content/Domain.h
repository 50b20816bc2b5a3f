#pragma once
// Where new particles are born: a point, a box or a spherical shell, each drawing a
// position from the process-wide random sequence. Collision planes stand here too.
#include "qx4d/core/Matrix.h"

namespace qx4d {

class Domain {
public:
    Domain() = default;
    virtual ~Domain() = default;
    Domain(const Domain&) = delete;
    Domain& operator=(const Domain&) = delete;

    /// A position of the domain.
    virtual void Generate(Float3& out) const = 0;
};

class PointDomain : public Domain {
public:
    explicit PointDomain(const Float3& at = {}) : center(at) {}
    void Generate(Float3& out) const override { out = center; }

    Float3 center;
};

/// Each axis drawn on its own, X first, between `min` and `max`.
class BoxDomain : public Domain {
public:
    BoxDomain(const Float3& low, const Float3& high);
    void Generate(Float3& out) const override;

    Float3 min;
    Float3 max;
    Float3 size;
};

/// A direction drawn evenly over the sphere (its height, then its turn), then a distance
/// from the centre between the two radii; a shell, whose radii are equal, draws no
/// distance.
class SphereDomain : public Domain {
public:
    SphereDomain(const Float3& at, float inner, float outer);
    void Generate(Float3& out) const override;

    Float3 center;
    float innerRadius;
    float outerRadius;
    float thickness;
    bool isShell;
};

/// A collision plane: the points p with dot(normal, p) + d = 0; positive on the side the
/// normal points to.
struct Plane {
    Float3 normal{0.0f, 1.0f, 0.0f};
    float d = 0.0f;

    float Distance(const Float3& p) const
    {
        return float(double(normal[0]) * p[0] + double(normal[1]) * p[1] + double(normal[2]) * p[2] + d);
    }
};

}  // namespace qx4d
