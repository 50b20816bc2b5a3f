#pragma once
// How a mesh's surface is shaded: the textures and their roles, blending, depth and cull
// states, the surface values that envelopes animate, and the effect generated for it from
// the lights of the scene. Each mesh embeds its own material.
#include "platform/gpu/Types.h"
#include "qx4d/content/MaterialTexture.h"
#include "qx4d/content/ShadingScene.h"
#include "qx4d/core/String.h"
#include "qx4d/core/device/ResourceHandle.h"

#include <cstdint>
#include <span>
#include <vector>

namespace qx4d {

class XmlDocument;
class XmlNode;

class Material {
public:
    Material() = default;
    /// Gives the effect back to the renderer.
    ~Material();
    /// A material holds a count on its effect and gives it back once, when it dies: it
    /// is neither copied nor moved (a handle's move is a copy).
    Material(const Material&) = delete;
    Material& operator=(const Material&) = delete;

    /// Reads "MATERIALS:" + `fileName`; when the file can't be read or parsed the material
    /// stays as it is. True when a document was read.
    bool Load(const String& fileName);
    /// Takes the attributes of the first "Surface" element and its "Texture" children.
    void Read(const XmlDocument& document);
    /// Sets the flags from the keys and the scene's fog, generates the effect text for the
    /// mesh's vertex declaration and creates the effect through the renderer. False when
    /// no effect came of it.
    bool Build(std::span<const qx::gpu::D3DVERTEXELEMENT9> declaration, const ShadingScene& scene);
    /// Begins the effect's first pass and sets the pixel constants and the fog constant.
    /// `pass` is the mesh's pass; the effect always starts at its first.
    void Apply(int pass, const ShadingScene& scene);
    /// Pixel constants 0 and 1 (g_pAlphaReflective, g_psFogColor) and, with fog on,
    /// vertex constant 1 (g_Fog).
    void SetPixelConstants(const ShadingScene& scene) const;

    /// True when this material's effect text asks for fog: fog is on for it and the scene
    /// has a fog mode.
    bool FogActive(int32_t fogType) const { return fogEnable && fogType != 0; }

    std::vector<uint32_t> shaderKeys;
    std::vector<MaterialTexture> textures;
    uint32_t flags = 0;
    String name;
    String vsProfile;
    String psProfile;
    bool alphaBlendEnable = true;
    bool depthEnable = true;
    bool depthWriteEnable = true;
    bool fogEnable = true;
    uint8_t alphaRef = 0;
    int32_t srcBlend = 5;   // source alpha
    int32_t destBlend = 6;  // inverse source alpha
    int32_t cullMode = 3;   // back faces (D3DCULL_CCW)
    bool reflective = false;
    ResourceHandle effect;
    int32_t bones = 0;
    /// The object file always gives the colour; white stands until it does.
    Float3 Color{1.0f, 1.0f, 1.0f};
    float Luminosity = 0.0f;
    float Diffuse = 1.0f;
    float Specular = 0.0f;
    float Glossiness = 40.0f;
    float Reflective = 0.0f;
    float Transparency = 0.0f;
    /// `Color.TextureLayer[1].Opacity`: the blend weight of a second colour texture.
    float ColorTextureLayer1Opacity = 1.0f;

private:
    void ReadSurfaceAttribute(const String& attribute, const String& value);
    void ReadTexture(const XmlNode& element);
    void ReleaseEffect();
};

}  // namespace qx4d
