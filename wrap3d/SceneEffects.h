#pragma once
// The effects that the 3D clients play: their ids, their rows of the catalogue and the
// tables of their parameters. A client's GetDefaults writes its table's defaults, and its
// Draw reads the slots by these names.
#include "effects/EffectDescriptor.h"

namespace qx {

namespace effect_id {
inline constexpr LONG kCube = 5000;            // C4DCube
inline constexpr LONG kMove3D = 5002;          // C4DRotate
inline constexpr LONG kParticles3D = 5003;     // C4DParticles
inline constexpr LONG kScene3D = 5004;         // C4DEffect
inline constexpr LONG kAnimation3D = 5005;     // C4DEffect
inline constexpr LONG kTransition3D = 20000;   // C4DTransition, made by the 3D transition transform
inline constexpr LONG kComposition3D = 30000;  // C4DAnim, made by the animation source
}  // namespace effect_id

/// The cube's slots: three rotations, each at the start and at the end, then the depth of
/// the move away from the camera.
struct CubeParam {
    enum Slot : int {
        kRotationXStart,
        kRotationXEnd,
        kRotationYStart,
        kRotationYEnd,
        kRotationZStart,
        kRotationZEnd,
        kDepth,
    };
};

/// The 3D move's slots: three rotations and three coordinates, each at the start and at the end.
struct Move3DParam {
    enum Slot : int {
        kHorizontalRotationStart,
        kHorizontalRotationEnd,
        kVerticalRotationStart,
        kVerticalRotationEnd,
        kZRotationStart,
        kZRotationEnd,
        kHorizontalPositionStart,
        kHorizontalPositionEnd,
        kVerticalPositionStart,
        kVerticalPositionEnd,
        kDepthStart,
        kDepthEnd,
    };
};

// Defaults are those of the clients' GetDefaults, ranges those of their dialogs. The
// rotations go to the entity in the order: second pair, first pair, third pair.
inline constexpr std::array<ParamDescriptor, 7> kCubeParams{{
    {CubeParam::kRotationXStart, "x start", "Rotation of the dialog's X row at the start, in degrees", 0, -3600, 3600,
     ParamKind::Integer, "X :"},
    {CubeParam::kRotationXEnd, "x end", "Rotation of the X row at the end, in degrees", 360, -3600, 3600,
     ParamKind::Integer, "X :"},
    {CubeParam::kRotationYStart, "y start", "Rotation of the Y row at the start, in degrees", 0, -3600, 3600,
     ParamKind::Integer, "Y :"},
    {CubeParam::kRotationYEnd, "y end", "Rotation of the Y row at the end, in degrees", 360, -3600, 3600,
     ParamKind::Integer, "Y :"},
    {CubeParam::kRotationZStart, "z start", "Rotation of the Z row at the start, in degrees", 0, -3600, 3600,
     ParamKind::Integer, "Z :"},
    {CubeParam::kRotationZEnd, "z end", "Rotation of the Z row at the end, in degrees", 360, -3600, 3600,
     ParamKind::Integer, "Z :"},
    {CubeParam::kDepth, "depth", "How far the cube moves away from the camera at mid-span and back, in scene units", 10,
     0, 40, ParamKind::Integer, "Profondeur du déplacement"},
}};

inline constexpr std::array<ParamDescriptor, 12> kMove3DParams{{
    {Move3DParam::kHorizontalRotationStart, "horizontal rotation start", "Horizontal rotation at the start, in degrees",
     0, -3600, 3600, ParamKind::Integer, "Rotation horizontale :"},
    {Move3DParam::kHorizontalRotationEnd, "horizontal rotation end", "Horizontal rotation at the end, in degrees", 0,
     -3600, 3600, ParamKind::Integer, "Rotation horizontale :"},
    {Move3DParam::kVerticalRotationStart, "vertical rotation start", "Vertical rotation at the start, in degrees", 0,
     -3600, 3600, ParamKind::Integer, "Rotation verticale :"},
    {Move3DParam::kVerticalRotationEnd, "vertical rotation end", "Vertical rotation at the end, in degrees", 360, -3600,
     3600, ParamKind::Integer, "Rotation verticale :"},
    {Move3DParam::kZRotationStart, "z rotation start", "Rotation about the axis of view at the start, in degrees", 0,
     -3600, 3600, ParamKind::Integer, "Rotation Z :"},
    {Move3DParam::kZRotationEnd, "z rotation end", "Rotation about the axis of view at the end, in degrees", 0, -3600,
     3600, ParamKind::Integer, "Rotation Z :"},
    {Move3DParam::kHorizontalPositionStart, "horizontal position start",
     "Horizontal position at the start, in hundredths of a unit", 0, -1000, 1000, ParamKind::Integer,
     "Position horizontale :"},
    {Move3DParam::kHorizontalPositionEnd, "horizontal position end",
     "Horizontal position at the end, in hundredths of a unit", 0, -1000, 1000, ParamKind::Integer,
     "Position horizontale :"},
    {Move3DParam::kVerticalPositionStart, "vertical position start",
     "Vertical position at the start, in hundredths of a unit", 0, -800, 800, ParamKind::Integer,
     "Position vérticale :"},
    {Move3DParam::kVerticalPositionEnd, "vertical position end",
     "Vertical position at the end, in hundredths of a unit", 0, -800, 800, ParamKind::Integer, "Position vérticale :"},
    {Move3DParam::kDepthStart, "depth start", "Depth at the start, in hundredths of a unit", -400, -2500, 0,
     ParamKind::Integer, "Profondeur :"},
    {Move3DParam::kDepthEnd, "depth end", "Depth at the end, in hundredths of a unit", -200, -2500, 0,
     ParamKind::Integer, "Profondeur :"},
}};

inline constexpr EffectDescriptor kMove3DEffect{.id = effect_id::kMove3D,
                                                .nameStringId = 115,
                                                .hasDialog = 1,
                                                .category = category_id::kAdvanced,
                                                .params = kMove3DParams};
inline constexpr EffectDescriptor kCubeEffect{.id = effect_id::kCube,
                                              .nameStringId = 116,
                                              .hasDialog = 1,
                                              .category = category_id::kAdvanced,
                                              .params = kCubeParams};
inline constexpr EffectDescriptor kParticles3DEffect{.id = effect_id::kParticles3D,
                                                     .category = category_id::kParticles};
inline constexpr EffectDescriptor kScene3DEffect{.id = effect_id::kScene3D, .category = category_id::kAdvanced};
inline constexpr EffectDescriptor kAnimation3DEffect{.id = effect_id::kAnimation3D,
                                                     .category = category_id::kAnimations};

}  // namespace qx
