#include "tools/import/GltfAccessors.h"

#include "tools/import/SourceScene.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace qx4d::tools::gltf {

namespace {

/// More elements than any model this tool is meant for; an accessor without a buffer
/// view would otherwise make the reader allocate whatever its count says.
constexpr uint64_t kMaxElements = uint64_t(1) << 26;
constexpr uint64_t kMaxStride = 252;

int ComponentBytes(int componentType)
{
    switch (componentType) {
    case TINYGLTF_COMPONENT_TYPE_BYTE:
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE: return 1;
    case TINYGLTF_COMPONENT_TYPE_SHORT:
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT: return 2;
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
    case TINYGLTF_COMPONENT_TYPE_FLOAT: return 4;
    default: return 0;  // signed 32-bit integers and doubles are not glTF vertex data
    }
}

int ComponentsOf(int type)
{
    switch (type) {
    case TINYGLTF_TYPE_SCALAR: return 1;
    case TINYGLTF_TYPE_VEC2: return 2;
    case TINYGLTF_TYPE_VEC3: return 3;
    case TINYGLTF_TYPE_VEC4: return 4;
    case TINYGLTF_TYPE_MAT4: return 16;
    default: return 0;
    }
}

/// One component at `at`, normalised to [0, 1] or [-1, 1] when `normalized`.
double ReadComponent(const uint8_t* at, int componentType, bool normalized)
{
    switch (componentType) {
    case TINYGLTF_COMPONENT_TYPE_BYTE: {
        const auto value = int8_t(*at);
        return normalized ? std::max(value / 127.0, -1.0) : value;
    }
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE: return normalized ? *at / 255.0 : *at;
    case TINYGLTF_COMPONENT_TYPE_SHORT: {
        int16_t value;
        std::memcpy(&value, at, 2);
        return normalized ? std::max(value / 32767.0, -1.0) : value;
    }
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT: {
        uint16_t value;
        std::memcpy(&value, at, 2);
        return normalized ? value / 65535.0 : value;
    }
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT: {
        uint32_t value;
        std::memcpy(&value, at, 4);
        return value;
    }
    default: {
        float value;
        std::memcpy(&value, at, 4);
        return value;
    }
    }
}

}  // namespace

struct AccessorReader::Layout {
    const uint8_t* base = nullptr;
    uint64_t stride = 0;
    int componentBytes = 0;
};

void AccessorReader::Fail(const std::string& what, const std::string& problem) const
{
    throw ImportError(file_ + ": " + what + ": " + problem);
}

const tinygltf::Accessor& AccessorReader::Get(int index, const std::string& what) const
{
    if (index < 0 || size_t(index) >= model_.accessors.size())
        Fail(what, "accessor " + std::to_string(index) + " does not exist");
    return model_.accessors[size_t(index)];
}

size_t AccessorReader::Count(int index, const std::string& what) const { return Get(index, what).count; }

const uint8_t* AccessorReader::ViewBytes(int view, uint64_t offset, uint64_t bytes, const std::string& what) const
{
    if (view < 0 || size_t(view) >= model_.bufferViews.size())
        Fail(what, "buffer view " + std::to_string(view) + " does not exist");
    const tinygltf::BufferView& bufferView = model_.bufferViews[size_t(view)];
    if (bufferView.buffer < 0 || size_t(bufferView.buffer) >= model_.buffers.size())
        Fail(what, "buffer " + std::to_string(bufferView.buffer) + " does not exist");
    const std::vector<unsigned char>& data = model_.buffers[size_t(bufferView.buffer)].data;
    // Sums of sizes that each fit in a buffer can't overflow 64 bits.
    if (bufferView.byteOffset > data.size() || bufferView.byteLength > data.size() - bufferView.byteOffset)
        Fail(what, "buffer view " + std::to_string(view) + " reaches past the end of its buffer");
    if (offset > bufferView.byteLength || bytes > bufferView.byteLength - offset)
        Fail(what, "the data reaches past the end of buffer view " + std::to_string(view));
    return data.data() + bufferView.byteOffset + offset;
}

std::span<const uint8_t> AccessorReader::View(int view, const std::string& what) const
{
    const uint64_t length =
        view >= 0 && size_t(view) < model_.bufferViews.size() ? model_.bufferViews[size_t(view)].byteLength : 0;
    return {ViewBytes(view, 0, length, what), size_t(length)};
}

AccessorReader::Layout AccessorReader::Locate(const tinygltf::Accessor& accessor, int components,
                                              const std::string& what) const
{
    Layout layout;
    layout.componentBytes = ComponentBytes(accessor.componentType);
    if (layout.componentBytes == 0) Fail(what, "unsupported component type " + std::to_string(accessor.componentType));
    if (ComponentsOf(accessor.type) != components)
        Fail(what, "the accessor has " + std::to_string(ComponentsOf(accessor.type)) + " components instead of " +
                       std::to_string(components));
    if (accessor.count > kMaxElements)
        Fail(what, "the accessor holds too many elements (" + std::to_string(accessor.count) + ")");
    const uint64_t elementBytes = uint64_t(layout.componentBytes) * uint64_t(components);
    if (accessor.bufferView < 0) return layout;  // all zeros, unless sparse values replace some
    const tinygltf::BufferView* view = size_t(accessor.bufferView) < model_.bufferViews.size()
                                           ? &model_.bufferViews[size_t(accessor.bufferView)]
                                           : nullptr;
    layout.stride = view && view->byteStride != 0 ? view->byteStride : elementBytes;
    if (layout.stride < elementBytes) Fail(what, "the byte stride is shorter than one element");
    // glTF allows no wider stride, and tinygltf refuses one; the bound keeps the
    // arithmetic below from overflowing whatever the loader lets through.
    if (layout.stride > kMaxStride) Fail(what, "the byte stride is above " + std::to_string(kMaxStride));
    const uint64_t span = accessor.count == 0 ? 0 : (accessor.count - 1) * layout.stride + elementBytes;
    layout.base = ViewBytes(accessor.bufferView, accessor.byteOffset, span, what);
    return layout;
}

std::vector<double> AccessorReader::Values(int index, int components, const std::string& what) const
{
    const tinygltf::Accessor& accessor = Get(index, what);
    const Layout layout = Locate(accessor, components, what);
    std::vector<double> values(accessor.count * size_t(components), 0.0);
    if (layout.base) {
        for (size_t e = 0; e < accessor.count; ++e)
            for (int c = 0; c < components; ++c)
                values[e * size_t(components) + size_t(c)] =
                    ReadComponent(layout.base + e * layout.stride + size_t(c) * size_t(layout.componentBytes),
                                  accessor.componentType, accessor.normalized);
    }
    if (accessor.sparse.isSparse) ApplySparse(accessor, components, values, what);
    return values;
}

void AccessorReader::ApplySparse(const tinygltf::Accessor& accessor, int components, std::vector<double>& values,
                                 const std::string& what) const
{
    const auto& sparse = accessor.sparse;
    if (sparse.count < 0 || uint64_t(sparse.count) > accessor.count)
        Fail(what, "the sparse count exceeds the accessor's count");
    const auto count = size_t(sparse.count);
    const int indexBytes = ComponentBytes(sparse.indices.componentType);
    if (indexBytes == 0 || sparse.indices.componentType == TINYGLTF_COMPONENT_TYPE_FLOAT ||
        sparse.indices.componentType == TINYGLTF_COMPONENT_TYPE_BYTE ||
        sparse.indices.componentType == TINYGLTF_COMPONENT_TYPE_SHORT)
        Fail(what, "sparse indices must be unsigned integers");
    if (sparse.indices.byteOffset < 0 || sparse.values.byteOffset < 0) Fail(what, "a sparse offset is negative");
    const int componentBytes = ComponentBytes(accessor.componentType);
    const int valueBytes = componentBytes * components;
    const uint8_t* indices = ViewBytes(sparse.indices.bufferView, uint64_t(sparse.indices.byteOffset),
                                       uint64_t(count) * uint64_t(indexBytes), what);
    const uint8_t* replacements = ViewBytes(sparse.values.bufferView, uint64_t(sparse.values.byteOffset),
                                            uint64_t(count) * uint64_t(valueBytes), what);
    for (size_t i = 0; i < count; ++i) {
        const auto target =
            uint64_t(ReadComponent(indices + i * size_t(indexBytes), sparse.indices.componentType, false));
        if (target >= accessor.count) Fail(what, "a sparse index points past the accessor's count");
        for (int c = 0; c < components; ++c)
            values[size_t(target) * size_t(components) + size_t(c)] =
                ReadComponent(replacements + i * size_t(valueBytes) + size_t(c) * size_t(componentBytes),
                              accessor.componentType, accessor.normalized);
    }
}

std::vector<float> AccessorReader::Floats(int index, int components, const std::string& what) const
{
    const std::vector<double> values = Values(index, components, what);
    std::vector<float> out(values.size());
    for (size_t i = 0; i < values.size(); ++i) {
        if (!std::isfinite(values[i])) Fail(what, "the data holds a value that is not a finite number");
        out[i] = float(values[i]);
    }
    return out;
}

std::vector<uint32_t> AccessorReader::Unsigned(int index, int components, const std::string& what) const
{
    const tinygltf::Accessor& accessor = Get(index, what);
    if (accessor.componentType != TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE &&
        accessor.componentType != TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT &&
        accessor.componentType != TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT)
        Fail(what, "the accessor must hold unsigned integers");
    if (accessor.normalized) Fail(what, "the accessor must not be normalised");
    const std::vector<double> values = Values(index, components, what);
    return std::vector<uint32_t>(values.begin(), values.end());
}

}  // namespace qx4d::tools::gltf
