#pragma once
// Writes the effect text of one mesh: HLSL with an effect technique, assembled from the
// material, its per-light shader keys and the mesh's vertex declaration, after the whole
// of "EFFECTS:common.fxh". The lines are data of the engine and come out exactly so.
#include "platform/gpu/Types.h"
#include "qx4d/content/Material.h"

#include <bitset>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qx4d {

/// Writes the effect text for `material` over `declaration` (read up to its end marker,
/// a record of stream 0xFF, or the end of the span), with the scene's fog mode
/// `fogType`. False, and no text, when "EFFECTS:common.fxh" can't be read.
bool Generate(const Material& material, std::span<const qx::gpu::D3DVERTEXELEMENT9> declaration, int32_t fogType,
              std::string& text);

class ShaderWriter {
public:
    ShaderWriter(const Material& source, std::span<const qx::gpu::D3DVERTEXELEMENT9> declaration, int32_t sceneFogType);

    /// Appends the generated parts to `head`, the include file's text.
    std::string Write(std::string head);

    /// Next vertex shader register; the first two hold nothing of ours and g_Fog.
    int vsConstant = 2;
    int psConstant = 0;
    // Slots are bytes in the material: every byte value has its mark, though valid data
    // only ever uses the first 16 of each.
    std::bitset<256> samplerUsed;
    std::bitset<256> texCoordUsed;

private:
    /// The names a light line uses, in the vertex shader or in the pixel shader.
    struct LightingNames {
        const char* normal;
        const char* position;
        const char* viewDir;
        const char* diffuse;
        const char* specular;
    };

    void Emit(const char* format, ...) __attribute__((format(printf, 2, 3)));
    /// An empty line, written between the parts of the text.
    void EmptyLine() { text.push_back('\n'); }
    bool Has(int usage, int index) const;
    bool HasTexture(uint8_t semantic) const;
    /// The lowest texture coordinate of 0 to 15 not yet in use, marked used; -1 if none.
    int TakeFreeTexCoord();
    std::string Sample(const MaterialTexture& texture) const;
    void EmitLightCall(uint32_t key, int index, const LightingNames& names);

    void WriteVertexInput();
    void WriteVertexOutput();
    void WriteGlobals();
    void WriteLightGlobals();
    void WriteVertexMain();
    void WriteBlendedGeometry();
    void WriteWorldGeometry();
    void WriteVertexOutputs();
    void WriteVertexLighting();
    void WriteBaseColorAndAlpha();
    void WriteNormal();
    void WriteLighting();
    void WritePixelMain();
    void WriteTechnique();
    void WriteBlend(const char* state, int32_t code);

    const Material& material;
    std::vector<qx::gpu::D3DVERTEXELEMENT9> records;
    int32_t fogType;
    int nextTexCoord = 0;
    /// Fog is never blended in the pixel shader: the branch in ps_main stays unused.
    bool pixelFog = false;
    int indent = 0;
    std::string text;
};

}  // namespace qx4d
