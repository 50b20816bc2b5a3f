#pragma once
// The effects of the catalogue computed on the processor, and parameters that make each
// do real work, for tests and runs that go over all of them.
#include "host/EffectCatalog.h"
#include "wrap3d/SceneEffects.h"

#include <string>

namespace qx::test {

/// Routines and video effects; from the cube on, effects are drawn by the scene engine
/// on the GPU or by another module.
inline bool computedOnTheProcessor(const EffectDescriptor& effect)
{
    return effect.id < effect_id::kCube && (effect.frameRoutine || effect.imageRoutine || effect.videoEffect);
}

/// A rectangle that is not the whole frame, a key that catches the grey of a gradient's
/// middle, several drops; the table's defaults for the others.
inline std::u16string workingParams(const EffectDescriptor& effect)
{
    switch (effect.id) {
    case 0:
    case 1: return u"100;150;850;900;";
    case 6: return u"0;0;500;500;400;300;1000;1000;";
    case 15: return u"4210752;48;";
    case 2001: return u"4;";
    default: break;
    }
    std::u16string text;
    const ParamList defaults = defaultList(effect.params);
    for (LONG slot = 0; slot < defaults.count; ++slot) {
        for (const char c : std::to_string(defaults.values[size_t(slot)])) text += char16_t(c);
        text += u';';
    }
    return text;
}

}  // namespace qx::test
