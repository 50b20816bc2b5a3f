// Models that lie, refused with one line that names the file and the problem, and
// nothing written; damaged copies of good files never crash the importer.
#include "tests/tools/import/ImportTestSupport.h"
#include "tests/tools/import/SkinnedModels.h"
#include "tools/import/ModelImport.h"

#include <functional>
#include <random>

namespace qx4d::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

/// A good triangle whose parts the cases spoil: 3 positions, 3 normals, indices.
struct Triangle {
    GltfFile file;
    int positions, normals, indices;

    Triangle()
    {
        positions = file.Floats3({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
        normals = file.Floats3({{0, 0, 1}, {0, 0, 1}, {0, 0, 1}});
        indices = file.Indices({0, 1, 2});
        file.nodes = {R"({"mesh":0})"};
    }
    void SetMesh(int positionAccessor, int normalAccessor, int indexAccessor)
    {
        file.meshes = {R"({"primitives":[{"attributes":{"POSITION":)" + std::to_string(positionAccessor) +
                       R"(,"NORMAL":)" + std::to_string(normalAccessor) + R"(},"indices":)" +
                       std::to_string(indexAccessor) + "}]}"};
    }
    GltfFile& Good()
    {
        SetMesh(positions, normals, indices);
        return file;
    }
};

struct BadCase {
    const char* name;
    /// Writes the model into the folder and gives its file name.
    std::function<std::string(TempFolder&)> write;
    const char* message;
};

std::string WriteGlb(TempFolder& folder, GltfFile& file, const std::string& name = "bad.glb")
{
    file.WriteGlb(folder.path / name);
    return name;
}

std::string WriteText(TempFolder& folder, const std::string& name, const std::string& text)
{
    folder.Write(name, text);
    return name;
}

const BadCase kCases[] = {
    {"missing file", [](TempFolder&) { return std::string("absent.gltf"); }, "absent.gltf: no such file"},
    {"not a model", [](TempFolder& f) { return WriteText(f, "model.fbx", "x"); }, "not a model the importer reads"},
    {"broken JSON",
     [](TempFolder& f) { return WriteText(f, "broken.gltf", R"({"asset":{"version":"2.0"},"nodes":[)"); },
     "broken.gltf: "},
    {"index out of range",
     [](TempFolder& f) {
         Triangle t;
         t.SetMesh(t.positions, t.normals, t.file.Indices({0, 1, 5}));
         return WriteGlb(f, t.file);
     },
     "index 5 points past the 3 vertices"},
    {"accessor count past its view",
     [](TempFolder& f) {
         Triangle t;
         const int lying = t.file.Accessor(0, GltfFile::kFloat, 100, "VEC3");
         t.SetMesh(lying, t.normals, t.indices);
         return WriteGlb(f, t.file);
     },
     "the data reaches past the end of buffer view 0"},
    {"accessor offset past its view",
     [](TempFolder& f) {
         Triangle t;
         t.SetMesh(t.file.Accessor(0, GltfFile::kFloat, 3, "VEC3", "", 1000), t.normals, t.indices);
         return WriteGlb(f, t.file);
     },
     "reaches past the end of buffer view 0"},
    {"view past its buffer",
     [](TempFolder& f) {
         Triangle t;
         t.file.bufferViews[0] = R"({"buffer":0,"byteOffset":0,"byteLength":4000})";
         return WriteGlb(f, t.Good());
     },
     "buffer view 0 reaches past the end of its buffer"},
    {"stride wider than glTF allows",
     [](TempFolder& f) {
         Triangle t;
         t.file.bufferViews[0] = R"({"buffer":0,"byteLength":36,"byteStride":4096})";
         return WriteGlb(f, t.Good());
     },
     "`byteStride' must be"},
    {"attribute shorter than the positions",
     [](TempFolder& f) {
         Triangle t;
         t.SetMesh(t.positions, t.file.Floats3({{0, 0, 1}, {0, 0, 1}}), t.indices);
         return WriteGlb(f, t.file);
     },
     "2 elements for 3 vertices"},
    {"positions of two components",
     [](TempFolder& f) {
         Triangle t;
         t.SetMesh(t.file.Accessor(0, GltfFile::kFloat, 3, "VEC2"), t.normals, t.indices);
         return WriteGlb(f, t.file);
     },
     "the accessor has 2 components instead of 3"},
    {"float indices",
     [](TempFolder& f) {
         Triangle t;
         t.SetMesh(t.positions, t.normals, t.file.Scalars({0, 1, 2}));
         return WriteGlb(f, t.file);
     },
     "must hold unsigned integers"},
    {"no buffer view and a huge count",
     [](TempFolder& f) {
         Triangle t;
         t.SetMesh(t.file.Accessor(-1, GltfFile::kFloat, 1000000000, "VEC3"), t.normals, t.indices);
         return WriteGlb(f, t.file);
     },
     "too many elements"},
    {"a position that is not a number",
     [](TempFolder& f) {
         Triangle t;
         t.SetMesh(t.file.Floats3({{0, 0, 0}, {NAN, 0, 0}, {0, 1, 0}}), t.normals, t.indices);
         return WriteGlb(f, t.file);
     },
     "not a finite number"},
    {"sparse index past the count",
     [](TempFolder& f) {
         Triangle t;
         const uint8_t index = 9;
         const int indexView = t.file.View(&index, 1);
         const float value[3] = {1, 1, 1};
         const int valueView = t.file.View(value, 12);
         const int sparse = t.file.Accessor(
             0, GltfFile::kFloat, 3, "VEC3",
             R"(,"sparse":{"count":1,"indices":{"bufferView":)" + std::to_string(indexView) +
                 R"(,"componentType":5121},"values":{"bufferView":)" + std::to_string(valueView) + "}}");
         t.SetMesh(sparse, t.normals, t.indices);
         return WriteGlb(f, t.file);
     },
     "a sparse index points past the accessor's count"},
    {"node that is its own child",
     [](TempFolder& f) {
         Triangle t;
         t.file.nodes = {R"({"mesh":0,"children":[0]})"};
         return WriteGlb(f, t.Good());
     },
     "node 0 is its own child"},
    {"nodes in a cycle",
     [](TempFolder& f) {
         Triangle t;
         t.file.nodes = {R"({"mesh":0,"children":[1]})", R"({"children":[0]})"};
         return WriteGlb(f, t.Good());
     },
     "node 0 stands twice in the scene"},
    {"a child that does not exist",
     [](TempFolder& f) {
         Triangle t;
         t.file.nodes = {R"({"mesh":0,"children":[7]})"};
         return WriteGlb(f, t.Good());
     },
     "node 0 has child 7, which does not exist"},
    {"a mesh that does not exist",
     [](TempFolder& f) {
         Triangle t;
         t.file.nodes = {R"({"mesh":3})"};
         return WriteGlb(f, t.Good());
     },
     "places mesh 3, which does not exist"},
    {"a joint the skin lacks",
     [](TempFolder& f) {
         GltfFile file;
         AddSkinnedFigure(file);
         file.skins = {R"({"joints":[1]})"};
         return WriteGlb(f, file);
     },
     "joint 1 of vertex 2 is not one of the skin's 1"},
    {"key times that go back",
     [](TempFolder& f) {
         GltfFile file;
         AddSkinnedFigure(file);
         AddKneeBend(file);
         const float times[2] = {1, 0};
         file.buffer.erase(file.buffer.end() - 40, file.buffer.end() - 32);  // the two times
         file.buffer.insert(file.buffer.end() - 32, reinterpret_cast<const uint8_t*>(times),
                            reinterpret_cast<const uint8_t*>(times) + 8);
         return WriteGlb(f, file);
     },
     "key times are not in increasing order"},
    {"more keys than values",
     [](TempFolder& f) {
         GltfFile file;
         AddSkinnedFigure(file);
         const int times = file.Scalars({0, 1, 2});
         const int values = file.Data(std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1}, GltfFile::kFloat, "VEC4");
         file.animations = {R"({"samplers":[{"input":)" + std::to_string(times) + R"(,"output":)" +
                            std::to_string(values) +
                            R"(}],"channels":[{"sampler":0,"target":{"node":2,"path":"rotation"}}]})"};
         return WriteGlb(f, file);
     },
     "8 output values for 3 keys"},
    {"an extension it doesn't read",
     [](TempFolder& f) {
         Triangle t;
         t.file.extraTopLevel = R"(,"extensionsRequired":["KHR_draco_mesh_compression"])";
         return WriteGlb(f, t.Good());
     },
     "needs the extension KHR_draco_mesh_compression"},
    {"an image past its buffer",
     [](TempFolder& f) {
         Triangle t;
         t.file.bufferViews.push_back(R"({"buffer":0,"byteOffset":16,"byteLength":100000})");
         t.file.images = {R"({"bufferView":3,"mimeType":"image/png"})"};
         return WriteGlb(f, t.Good());
     },
     "buffer view 3 reaches past the end of its buffer"},
    {"nothing to draw",
     [](TempFolder& f) {
         Triangle t;
         t.file.nodes = {R"({"name":"empty"})"};
         return WriteGlb(f, t.Good());
     },
     "no triangles to import"},
    {"OBJ face past the vertices",
     [](TempFolder& f) { return WriteText(f, "bad.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 9\n"); },
     "bad.obj: shape 0 face 1: vertex index 9 is out of range (3 in the file)"},
    {"OBJ texture coordinate past the list",
     [](TempFolder& f) { return WriteText(f, "bad.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nf 1/1 2/2 3/1\n"); },
     "texture coordinate index 2 is out of range (1 in the file)"},
};

class BadInputTest : public ::testing::TestWithParam<BadCase> {
protected:
    TempFolder folder;
};

TEST_P(BadInputTest, IsRefusedWithOneLineAndNothingWritten)
{
    tools::ImportOptions options;
    options.input = folder.path / GetParam().write(folder);
    options.output = folder.path / "Objects/out.qxo";
    try {
        tools::ImportModel(options);
        ADD_FAILURE() << "imported";
    } catch (const tools::ImportError& error) {
        const std::string message = error.what();
        EXPECT_THAT(message, HasSubstr(GetParam().message));
        EXPECT_THAT(message, StartsWith(options.input.filename().string() + ": "));
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    }
    EXPECT_FALSE(std::filesystem::exists(options.output));
}

INSTANTIATE_TEST_SUITE_P(Cases, BadInputTest, ::testing::ValuesIn(kCases), [](const auto& test) {
    std::string name = test.param.name;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name;
});

/// Copies of a good file with bytes changed, cut or repeated: each imports or is
/// refused with an ImportError, and none crashes or throws anything else.
void ImportDamagedCopies(TempFolder& folder, const std::string& name, const std::string& good, unsigned copies)
{
    std::mt19937 random(12345);
    tools::ImportOptions options;
    options.input = folder.path / name;
    options.output = folder.path / "Objects/out.qxo";
    size_t refused = 0;
    for (unsigned copy = 0; copy < copies; ++copy) {
        std::string damaged = good;
        switch (random() % 3) {
        case 0:
            for (unsigned flips = 1 + random() % 4; flips > 0; --flips)
                damaged[random() % damaged.size()] = char(random());
            break;
        case 1: damaged.resize(random() % damaged.size()); break;
        default: {
            const size_t at = random() % damaged.size();
            damaged.insert(at, damaged.substr(at, random() % 16));
        }
        }
        folder.Write(name, damaged);
        try {
            tools::ImportModel(options);
        } catch (const tools::ImportError&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 0u);
}

TEST(DamagedModels, NeverCrashTheImporter)
{
    TempFolder folder;
    GltfFile file;
    AddSkinnedFigure(file);
    AddKneeBend(file);
    file.WriteGlb(folder.path / "good.glb");
    std::ifstream glb(folder.path / "good.glb", std::ios::binary);
    ImportDamagedCopies(folder, "damaged.glb", std::string(std::istreambuf_iterator<char>(glb), {}), 300);
    ImportDamagedCopies(folder, "damaged.gltf", file.Json(), 300);
    ImportDamagedCopies(folder, "damaged.obj",
                        "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 1\nvn 0 0 1\ns 1\n"
                        "f 1/1/1 2/2/1 3/2/1 4/1/1\nf -1 -2 -3\ng other\nusemtl none\nf 4 3 2\n",
                        300);
}

}  // namespace
}  // namespace qx4d::test
