#pragma once
// Helpers of the material and shader generator tests: vertex declarations by usage,
// hand-written expected text with four spaces standing for a tab, and sections of a
// generated text.
#include "platform/gpu/Types.h"
#include "qx4d/content/MaterialTexture.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qx4d::test {

namespace gpu = qx::gpu;

inline constexpr int kPos = gpu::D3DDECLUSAGE_POSITION;
inline constexpr int kNormal = gpu::D3DDECLUSAGE_NORMAL;
inline constexpr int kTex = gpu::D3DDECLUSAGE_TEXCOORD;
inline constexpr int kTangent = gpu::D3DDECLUSAGE_TANGENT;
inline constexpr int kBinormal = gpu::D3DDECLUSAGE_BINORMAL;

/// A material texture of one role; three components from the first unless told.
inline MaterialTexture Texture(uint8_t semantic, uint8_t sampler, uint8_t texCoord, uint8_t start = 0,
                               uint8_t count = 3)
{
    return MaterialTexture{semantic, 0, sampler, texCoord, start, count};
}

/// Stream-0 records with packed offsets and the end marker; positions, normals,
/// tangents, binormals and colours are float3, texture coordinates float2, bone weights
/// and indices float4.
inline std::vector<gpu::D3DVERTEXELEMENT9> Declaration(const std::vector<std::pair<int, int>>& usages)
{
    std::vector<gpu::D3DVERTEXELEMENT9> records;
    uint16_t offset = 0;
    for (const auto& [usage, index] : usages) {
        gpu::D3DVERTEXELEMENT9 record{0, offset, gpu::D3DDECLTYPE_FLOAT3, 0, qx::BYTE(usage), qx::BYTE(index)};
        if (usage == gpu::D3DDECLUSAGE_TEXCOORD) record.Type = gpu::D3DDECLTYPE_FLOAT2;
        if (usage == gpu::D3DDECLUSAGE_BLENDWEIGHT || usage == gpu::D3DDECLUSAGE_BLENDINDICES)
            record.Type = gpu::D3DDECLTYPE_FLOAT4;
        offset = uint16_t(offset + (record.Type == gpu::D3DDECLTYPE_FLOAT2   ? 8
                                    : record.Type == gpu::D3DDECLTYPE_FLOAT4 ? 16
                                                                             : 12));
        records.push_back(record);
    }
    records.push_back(gpu::D3DDECL_END);
    return records;
}

/// `text` with each group of four spaces at the start of a line turned into a tab.
inline std::string Tabbed(std::string_view text)
{
    std::string out;
    bool lineStart = true;
    for (size_t i = 0; i < text.size(); ++i) {
        if (lineStart && text.substr(i, 4) == "    ") {
            out.push_back('\t');
            i += 3;
            continue;
        }
        lineStart = text[i] == '\n';
        out.push_back(text[i]);
    }
    return out;
}

/// The lines of `text` from the first line equal to `first` through the next line after
/// it equal to `last` (leading tabs ignored when comparing); empty when not found.
inline std::string Section(const std::string& text, std::string_view first, std::string_view last)
{
    std::string out;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string_view line(text.data() + start, end - start);
        const std::string_view bare = line.substr(std::min(line.find_first_not_of('\t'), line.size()));
        const bool started = !out.empty();
        if (started || bare == first) {
            out.append(line);
            out.push_back('\n');
            if (started && bare == last) return out;
        }
        start = end + 1;
    }
    return std::string();
}

}  // namespace qx4d::test
