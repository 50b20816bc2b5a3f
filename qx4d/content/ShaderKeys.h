#pragma once
// The bits of a material's `flags` word and of the shader key that each light of the scene
// gives a material. The effect text is generated from them.
#include <cstdint>

namespace qx4d {

// Material flags.
inline constexpr uint32_t kMaterialAlwaysSet = 0x3;  // bits 0 and 1; bit 0 asks for g_ModelIT
inline constexpr uint32_t kMaterialModelIT = 0x1;
inline constexpr uint32_t kMaterialNormalize = 0x2;
inline constexpr uint32_t kMaterialVertexLighting = 0x8;
inline constexpr uint32_t kMaterialPixelLighting = 0x10;
inline constexpr uint32_t kMaterialFog = 0x20;
inline constexpr uint32_t kMaterialLit = 0x40;
inline constexpr uint32_t kMaterialLightingInTexCoords = 0x80;
inline constexpr uint32_t kMaterialMeshLit = 0x100;  // set by the mesh once its keys are in
inline constexpr uint32_t kMaterialTween = 0x8000;
inline constexpr uint32_t kMaterialEyePosition = 0x10000;

// Shader key bits, one key per light.
inline constexpr uint32_t kKeyDistant = 0x200;
inline constexpr uint32_t kKeyPoint = 0x400;
inline constexpr uint32_t kKeySpot = 0x800;
inline constexpr uint32_t kKeySpecular = 0x1000;
inline constexpr uint32_t kKeySoftEdge = 0x10000;
inline constexpr uint32_t kKeyAlwaysSet = 0x20000;
inline constexpr uint32_t kKeyPerPixel = 0x40000;

/// The light types of a scene: 0 distant, 1 point, 2 spot.
enum LightType : int32_t { kLightDistant = 0, kLightPoint = 1, kLightSpot = 2 };

/// The kind of light a key asks for. A key with several type bits counts as the first of
/// spot, point, distant, the order in which the globals are declared, so that a light's
/// global and its calls always agree.
enum class KeyLightKind { None, Distant, Point, Spot };

inline KeyLightKind LightKindOf(uint32_t key)
{
    if (key & kKeySpot) return KeyLightKind::Spot;
    if (key & kKeyPoint) return KeyLightKind::Point;
    if (key & kKeyDistant) return KeyLightKind::Distant;
    return KeyLightKind::None;
}

/// The key that a mesh appends to its material for one light of the scene: every light
/// is done per vertex with specular; a spot whose edge softness is above 1e-5 has a soft
/// edge. Unknown types give a key with no type bit.
inline uint32_t ShaderKeyForLight(int32_t type, float edgeAngle)
{
    switch (type) {
    case kLightDistant: return kKeyAlwaysSet | kKeySpecular | kKeyDistant;
    case kLightPoint: return kKeyAlwaysSet | kKeySpecular | kKeyPoint;
    case kLightSpot: return kKeyAlwaysSet | kKeySpecular | kKeySpot | (edgeAngle > 1e-5f ? kKeySoftEdge : 0u);
    default: return kKeyAlwaysSet | kKeySpecular;
    }
}

}  // namespace qx4d
