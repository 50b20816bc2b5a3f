#pragma once
// Object files for the tests, written by the project's own writer: a coloured square
// facing the camera, its vertices in the common layout, and a fixture that mounts a
// temporary "OBJECTS:" folder beside the content pack's effects and materials.
#include "tests/qx4d/content/EngineFixture.h"
#include "tests/qx4d/core/TestFiles.h"
#include "tools/objectfile/ObjectModel.h"

#include <cstring>
#include <string>
#include <vector>

namespace qx4d::test {

struct ModelVertex {
    float x, y, z, nx, ny, nz, u, v;
};

inline void AppendVertices(tools::MeshModel& mesh, const std::vector<ModelVertex>& vertices)
{
    const size_t at = mesh.vertices.size();
    mesh.vertices.resize(at + vertices.size() * sizeof(ModelVertex));
    std::memcpy(mesh.vertices.data() + at, vertices.data(), vertices.size() * sizeof(ModelVertex));
}

/// A square of half-size `half` around (cx, cy) in the plane z = 0, facing -z, its two
/// triangles clockwise as the camera at -z sees them. Lit by its own luminosity only.
inline tools::MeshModel Square(float half, Float3 color, float cx = 0.0f, float cy = 0.0f)
{
    tools::MeshModel mesh;
    mesh.declaration = tools::PositionNormalUvDeclaration();
    mesh.stride = sizeof(ModelVertex);
    AppendVertices(mesh, {{cx - half, cy + half, 0, 0, 0, -1, 0, 0},
                          {cx + half, cy + half, 0, 0, 0, -1, 1, 0},
                          {cx + half, cy - half, 0, 0, 0, -1, 1, 1},
                          {cx - half, cy - half, 0, 0, 0, -1, 0, 1}});
    mesh.indices = {0, 1, 2, 0, 2, 3};
    mesh.surface.color = color;
    mesh.surface.luminosity = 1.0f;
    mesh.surface.diffuse = 0.0f;
    return mesh;
}

inline tools::ItemModel MeshItemModel(std::string name, tools::MeshModel mesh, int32_t parent = -1)
{
    tools::ItemModel item;
    item.kind = tools::ItemModel::Kind::Mesh;
    item.name = std::move(name);
    item.parent = parent;
    item.mesh = std::move(mesh);
    return item;
}

class ObjectTest : public EngineTest {
protected:
    /// Starts the engine with "OBJECTS:" in a temporary folder; false without EGL.
    bool StartWithObjects(unsigned size)
    {
        if (!StartEngine(size)) return false;
        EXPECT_TRUE(files.Mount(u"OBJECTS", folder.Wide()));
        return true;
    }
    void Save(const std::string& name, const tools::ObjectModel& model)
    {
        const std::vector<uint8_t> bytes = tools::WriteObject(model);
        folder.Write(name, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    void SaveBytes(const std::string& name, const std::vector<uint8_t>& bytes)
    {
        folder.Write(name, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }

    TempFolder folder;
};

}  // namespace qx4d::test
