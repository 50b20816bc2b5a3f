#include "wrap3d/4DTransform.h"

#include "wrap3d/SceneBridge.h"

#include <algorithm>

namespace qx {

C4DTransform::C4DTransform() { EnsureContext(); }

void C4DTransform::GetDefaults(LONG*, LONG* nParams)
{
    if (nParams) *nParams = 0;
}

void C4DTransform::Process()
{
    // The scene players render here once the engine runs; a bare client leaves the frame.
}

void C4DTransform::SetPath(std::u16string_view text) { path = text.substr(0, kMaxPath - 1); }

void C4DTransform::SetParams(const LONG* values, LONG count)
{
    paramCount = std::clamp<LONG>(count, 0, LONG(params.size()));
    if (values) std::copy_n(values, paramCount, params.begin());
}

void C4DTransform::SetSize(LONG frameWidth, LONG frameHeight)
{
    width = frameWidth;
    height = frameHeight;
}

void C4DTransform::GetSize(LONG* frameWidth, LONG* frameHeight) const
{
    if (frameWidth) *frameWidth = width;
    if (frameHeight) *frameHeight = height;
}

}  // namespace qx
