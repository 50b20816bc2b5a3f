#include "qx4d/content/Domain.h"

#include "qx4d/content/ParticleRandom.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qx4d {

BoxDomain::BoxDomain(const Float3& low, const Float3& high)
    : min(low), max(high), size{high[0] - low[0], high[1] - low[1], high[2] - low[2]}
{}

void BoxDomain::Generate(Float3& out) const
{
    for (size_t axis = 0; axis < 3; ++axis) out[axis] = float(double(size[axis]) * UnitRandom() + min[axis]);
}

SphereDomain::SphereDomain(const Float3& at, float inner, float outer)
    : center(at), innerRadius(inner), outerRadius(outer), thickness(outer - inner), isShell(inner == outer)
{}

void SphereDomain::Generate(Float3& out) const
{
    const double y = 2.0 * UnitRandom() - 1.0;
    const double turn = 2.0 * std::numbers::pi * UnitRandom();
    const double radius = isShell ? double(outerRadius) : double(thickness) * UnitRandom() + innerRadius;
    const double across = std::sqrt(std::max(0.0, 1.0 - y * y));
    out = {float(center[0] + radius * across * std::cos(turn)), float(center[1] + radius * y),
           float(center[2] + radius * across * std::sin(turn))};
}

}  // namespace qx4d
