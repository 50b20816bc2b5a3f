#pragma once
// glTF files made by the tests: a binary buffer filled view by view, accessors over it,
// and the JSON of the other sections given as text. Written as .gltf with the buffer in
// a .bin beside it, or as one .glb.
#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace qx4d::test {

class GltfFile {
public:
    static constexpr int kFloat = 5126;
    static constexpr int kUnsignedByte = 5121;
    static constexpr int kUnsignedShort = 5123;
    static constexpr int kUnsignedInt = 5125;
    static constexpr int kShort = 5122;

    /// Appends bytes to the buffer, 4-byte aligned, as a new buffer view; its index.
    int View(const void* data, size_t bytes, size_t stride = 0)
    {
        while (buffer.size() % 4) buffer.push_back(0);
        const size_t offset = buffer.size();
        buffer.insert(buffer.end(), static_cast<const uint8_t*>(data), static_cast<const uint8_t*>(data) + bytes);
        std::string view =
            R"({"buffer":0,"byteOffset":)" + std::to_string(offset) + R"(,"byteLength":)" + std::to_string(bytes);
        if (stride) view += R"(,"byteStride":)" + std::to_string(stride);
        bufferViews.push_back(view + "}");
        return int(bufferViews.size() - 1);
    }
    /// An accessor over view `view`; `extra` adds members (",\"normalized\":true").
    int Accessor(int view, int componentType, size_t count, const std::string& type, const std::string& extra = "",
                 size_t byteOffset = 0)
    {
        std::string accessor = R"({"componentType":)" + std::to_string(componentType) + R"(,"count":)" +
                               std::to_string(count) + R"(,"type":")" + type + "\"";
        if (view >= 0) accessor += R"(,"bufferView":)" + std::to_string(view);
        if (byteOffset) accessor += R"(,"byteOffset":)" + std::to_string(byteOffset);
        accessors.push_back(accessor + extra + "}");
        return int(accessors.size() - 1);
    }
    template <typename T>
    int Data(const std::vector<T>& values, int componentType, const std::string& type, const std::string& extra = "")
    {
        const size_t components = type == "SCALAR" ? 1 : type == "MAT4" ? 16 : size_t(type.back() - '0');
        const int view = View(values.data(), values.size() * sizeof(T));
        const size_t count = values.size() * sizeof(T) / (components * ComponentBytes(componentType));
        return Accessor(view, componentType, count, type, extra);
    }
    int Floats3(const std::vector<std::array<float, 3>>& values) { return Data(values, kFloat, "VEC3"); }
    int Floats2(const std::vector<std::array<float, 2>>& values) { return Data(values, kFloat, "VEC2"); }
    int Scalars(const std::vector<float>& values) { return Data(values, kFloat, "SCALAR"); }
    int Indices(const std::vector<uint16_t>& values) { return Data(values, kUnsignedShort, "SCALAR"); }

    std::string Json() const
    {
        std::string json = R"({"asset":{"version":"2.0"})";
        Section(json, "scenes", scenes);
        Section(json, "nodes", nodes);
        Section(json, "meshes", meshes);
        Section(json, "materials", materials);
        Section(json, "textures", textures);
        Section(json, "images", images);
        Section(json, "skins", skins);
        Section(json, "animations", animations);
        Section(json, "accessors", accessors);
        Section(json, "bufferViews", bufferViews);
        if (!buffer.empty()) {
            const std::string uri = bufferUri.empty() ? "" : R"(,"uri":")" + bufferUri + "\"";
            json += R"(,"buffers":[{"byteLength":)" + std::to_string(buffer.size()) + uri + "}]";
        }
        return json + extraTopLevel + "}";
    }
    /// `path` (.gltf) with the buffer in `path` with the extension .bin.
    void WriteGltf(const std::filesystem::path& path)
    {
        std::filesystem::path bin = path;
        bin.replace_extension(".bin");
        bufferUri = bin.filename().string();
        Write(path, Json());
        Write(bin, std::string(buffer.begin(), buffer.end()));
    }
    void WriteGlb(const std::filesystem::path& path)
    {
        bufferUri.clear();
        std::string json = Json();
        while (json.size() % 4) json += ' ';
        std::string bin(buffer.begin(), buffer.end());
        while (bin.size() % 4) bin += '\0';
        std::string out = "glTF";
        Word(out, 2);
        Word(out, uint32_t(12 + 8 + json.size() + (bin.empty() ? 0 : 8 + bin.size())));
        Word(out, uint32_t(json.size()));
        out += "JSON" + json;
        if (!bin.empty()) {
            Word(out, uint32_t(bin.size()));
            out += std::string("BIN\0", 4) + bin;
        }
        Write(path, out);
    }
    static void Write(const std::filesystem::path& path, const std::string& bytes)
    {
        std::ofstream(path, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
    }

    std::vector<std::string> scenes{R"({"nodes":[0]})"};
    std::vector<std::string> nodes, meshes, materials, textures, images, skins, animations, accessors, bufferViews;
    std::string extraTopLevel;
    std::vector<uint8_t> buffer;

private:
    static size_t ComponentBytes(int type)
    {
        return type == kFloat || type == kUnsignedInt ? 4 : type == kUnsignedByte ? 1 : 2;
    }
    static void Section(std::string& json, const char* name, const std::vector<std::string>& items)
    {
        if (items.empty()) return;
        json += ",\"" + std::string(name) + "\":[";
        for (size_t i = 0; i < items.size(); ++i) json += (i ? "," : "") + items[i];
        json += "]";
    }
    static void Word(std::string& out, uint32_t value)
    {
        char bytes[4];
        std::memcpy(bytes, &value, 4);
        out.append(bytes, 4);
    }

    std::string bufferUri;
};

}  // namespace qx4d::test
