#pragma once
// Reading glTF accessors with every offset, stride and count checked against the bytes
// that the buffers really hold, so that a file whose accessors lie is refused instead of
// read past its end. Integers are widened (and normalised where the accessor says so),
// sparse accessors are resolved.
#include <tiny_gltf.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace qx4d::tools::gltf {

class AccessorReader {
public:
    /// `file` names the model in error messages.
    AccessorReader(const tinygltf::Model& model, std::string file) : model_(model), file_(std::move(file)) {}

    /// The elements of accessor `index`, `components` floats each, which must be the
    /// accessor's own count of components. `what` names the data in error messages.
    std::vector<float> Floats(int index, int components, const std::string& what) const;
    /// Vertex indices, or joint indices: unsigned integers of any width.
    std::vector<uint32_t> Unsigned(int index, int components, const std::string& what) const;
    /// The number of elements of accessor `index`.
    size_t Count(int index, const std::string& what) const;
    /// The bytes of buffer view `view`, checked against its buffer.
    std::span<const uint8_t> View(int view, const std::string& what) const;

private:
    struct Layout;
    const tinygltf::Accessor& Get(int index, const std::string& what) const;
    /// Where the elements lie, checked; `base` is null for an accessor without a view.
    Layout Locate(const tinygltf::Accessor& accessor, int components, const std::string& what) const;
    /// The bytes from `offset` in view `view` that hold `bytes`, checked.
    const uint8_t* ViewBytes(int view, uint64_t offset, uint64_t bytes, const std::string& what) const;
    std::vector<double> Values(int index, int components, const std::string& what) const;
    void ApplySparse(const tinygltf::Accessor& accessor, int components, std::vector<double>& values,
                     const std::string& what) const;
    [[noreturn]] void Fail(const std::string& what, const std::string& problem) const;

    const tinygltf::Model& model_;
    std::string file_;
};

}  // namespace qx4d::tools::gltf
