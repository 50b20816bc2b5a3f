// glTF models written by the test, converted: node transforms baked into the vertices and
// mirrored into the engine's left-handed space, normals made where the file has none,
// materials mapped to the engine's standard materials, primitives of every triangle mode.
#include "tests/tools/import/GltfFiles.h"
#include "tests/tools/import/ImportTestSupport.h"

#include <cmath>

namespace qx4d::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// The normal that a clockwise front face has in the engine's left-handed space.
Float3 FrontNormal(const Float3& a, const Float3& b, const Float3& c)
{
    const Float3 u{b[0] - a[0], b[1] - a[1], b[2] - a[2]}, v{c[0] - a[0], c[1] - a[1], c[2] - a[2]};
    return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

/// Every triangle's front, by its winding, lies on the side its vertex normals point to.
void ExpectWindingAgreesWithNormals(const tools::MeshModel& mesh)
{
    const std::vector<Float3> positions = Positions(mesh), normals = Normals(mesh);
    for (size_t t = 0; t + 2 < mesh.indices.size(); t += 3) {
        const Float3 front =
            FrontNormal(positions[mesh.indices[t]], positions[mesh.indices[t + 1]], positions[mesh.indices[t + 2]]);
        for (size_t k = 0; k < 3; ++k) {
            const Float3& n = normals[mesh.indices[t + k]];
            EXPECT_GT(front[0] * n[0] + front[1] * n[1] + front[2] * n[2], 0.0f) << "triangle " << t / 3;
        }
    }
}

std::string Mesh(int positions, int indices, const std::string& more = "", int material = -1)
{
    std::string primitive = R"({"attributes":{"POSITION":)" + std::to_string(positions) + more + "}";
    if (indices >= 0) primitive += R"(,"indices":)" + std::to_string(indices);
    if (material >= 0) primitive += R"(,"material":)" + std::to_string(material);
    return R"({"primitives":[)" + primitive + "}]}";
}

/// A triangle in the plane z = 0, counter-clockwise seen from +z, with normals and UVs.
void AddTriangle(GltfFile& file, int material = -1)
{
    const int positions = file.Floats3({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    const int normals = file.Floats3({{0, 0, 1}, {0, 0, 1}, {0, 0, 1}});
    const int uvs = file.Floats2({{0, 1}, {1, 1}, {0, 0}});
    file.meshes.push_back(Mesh(positions, file.Indices({0, 1, 2}),
                               R"(,"NORMAL":)" + std::to_string(normals) + R"(,"TEXCOORD_0":)" + std::to_string(uvs),
                               material));
}

class GltfImportTest : public ::testing::Test {
protected:
    Converted ConvertGlb(GltfFile& file)
    {
        file.WriteGlb(folder.path / "model.glb");
        return Convert(folder.path / "model.glb");
    }
    TempFolder folder;
};

TEST_F(GltfImportTest, NodeTransformsAreBakedIntoEachPlacedMeshAndMirroredIntoTheEngine)
{
    GltfFile file;
    AddTriangle(file);
    // The parent moves 10 along x; the child turns 90 degrees about y and doubles.
    const double half = std::sqrt(0.5);
    file.scenes = {R"({"nodes":[0,2]})"};
    file.nodes = {R"({"name":"parent","translation":[10,0,0],"children":[1]})",
                  R"({"name":"child","mesh":0,"scale":[2,2,2],"rotation":[0,)" + std::to_string(half) + ",0," +
                      std::to_string(half) + "]}",
                  R"({"name":"again","mesh":0,"translation":[0,0,5]})"};
    const Converted converted = ConvertGlb(file);
    ASSERT_EQ(converted.conversion.object.items.size(), 2u) << "one item a placed mesh; the parent has none";
    EXPECT_EQ(converted.Item(0).name, "child");
    EXPECT_EQ(converted.Item(1).name, "again");
    for (const tools::ItemModel& item : converted.conversion.object.items) {
        EXPECT_EQ(item.kind, tools::ItemModel::Kind::Mesh);
        EXPECT_EQ(item.parent, -1);
        EXPECT_EQ(item.position, (Float3{0, 0, 0})) << "the placement is in the vertices";
        EXPECT_EQ(item.scale, (Float3{1, 1, 1}));
    }
    // R_y(90) takes (x, y, z) to (z, y, -x); the engine has z the other way round.
    EXPECT_THAT(Positions(converted.Mesh(0)),
                ElementsAre(NearPoint(Float3{10, 0, 0}, 1e-5f), NearPoint(Float3{10, 0, 2}, 1e-5f),
                            NearPoint(Float3{10, 2, 0}, 1e-5f)));
    EXPECT_THAT(Normals(converted.Mesh(0)), ElementsAre(NearPoint(Float3{1, 0, 0}, 1e-5f), testing::_, testing::_));
    EXPECT_THAT(
        Positions(converted.Mesh(1)),
        ElementsAre(NearPoint(Float3{0, 0, -5}, 0), NearPoint(Float3{1, 0, -5}, 0), NearPoint(Float3{0, 1, -5}, 0)));
    EXPECT_THAT(Normals(converted.Mesh(1)), ElementsAre(NearPoint(Float3{0, 0, -1}, 0), testing::_, testing::_));
    // The engine's front faces are clockwise: each triangle turns round.
    EXPECT_EQ(converted.Mesh(1).indices, (std::vector<uint32_t>{0, 2, 1}));
    ExpectWindingAgreesWithNormals(converted.Mesh(0));
    ExpectWindingAgreesWithNormals(converted.Mesh(1));
    // Texture coordinates keep glTF's top-left origin, which is Direct3D's.
    EXPECT_THAT(Uvs(converted.Mesh(1)),
                ElementsAre(std::array<float, 2>{0, 1}, std::array<float, 2>{1, 1}, std::array<float, 2>{0, 0}));
}

TEST_F(GltfImportTest, TextAndBinaryFilesOfOneModelGiveTheSameObject)
{
    GltfFile file;
    AddTriangle(file);
    file.nodes = {R"({"mesh":0,"translation":[1,2,3]})"};
    file.WriteGltf(folder.path / "model.gltf");
    file.WriteGlb(folder.path / "model.glb");
    const Converted text = Convert(folder.path / "model.gltf");
    const Converted binary = Convert(folder.path / "model.glb");
    EXPECT_EQ(tools::WriteObject(text.conversion.object), tools::WriteObject(binary.conversion.object));
    EXPECT_EQ(text.conversion.meshItems, 1u);
}

TEST_F(GltfImportTest, MissingNormalsAreFlatAndOnTheFrontSide)
{
    GltfFile file;
    // A square folded along its diagonal: two faces at right angles sharing two vertices.
    file.meshes.push_back(
        Mesh(file.Floats3({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 1}}), file.Indices({0, 1, 2, 0, 2, 3})));
    file.nodes = {R"({"mesh":0})"};
    const Converted converted = ConvertGlb(file);
    const tools::MeshModel& mesh = converted.Mesh(0);
    EXPECT_EQ(mesh.VertexCount(), 6u) << "each face has vertices of its own";
    const std::vector<Float3> normals = Normals(mesh);
    EXPECT_THAT(normals[0], NearPoint(Float3{0, 0, -1}, 1e-6f)) << "faces +z in the file, -z in the engine";
    EXPECT_EQ(normals[0], normals[1]);
    EXPECT_EQ(normals[0], normals[2]);
    const float r = std::sqrt(1.0f / 3.0f);
    EXPECT_THAT(normals[3], NearPoint(Float3{r, -r, -r}, 1e-5f));
    ExpectWindingAgreesWithNormals(mesh);
}

TEST_F(GltfImportTest, AMirroringPlacementKeepsTheFrontFaces)
{
    GltfFile file;
    AddTriangle(file);
    file.nodes = {R"({"mesh":0,"scale":[-1,1,1]})"};
    const Converted converted = ConvertGlb(file);
    EXPECT_THAT(Positions(converted.Mesh(0))[1], NearPoint(Float3{-1, 0, 0}, 0));
    EXPECT_THAT(Normals(converted.Mesh(0))[0], NearPoint(Float3{0, 0, -1}, 1e-6f));
    EXPECT_EQ(converted.Mesh(0).indices, (std::vector<uint32_t>{0, 1, 2})) << "turned round twice";
    ExpectWindingAgreesWithNormals(converted.Mesh(0));
}

TEST_F(GltfImportTest, StripsAndFansBecomeTriangleListsAndPointsAreLeftOut)
{
    GltfFile file;
    const int strip = file.Floats3({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1, 2, 0}});
    const int fan = file.Floats3({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {-1, 0.5f, 0}});
    const auto primitive = [](int positions, int mode) {
        return R"({"attributes":{"POSITION":)" + std::to_string(positions) + R"(},"mode":)" + std::to_string(mode) +
               "}";
    };
    file.meshes.push_back(R"({"primitives":[)" + primitive(strip, 5) + "," + primitive(fan, 6) + "," +
                          primitive(fan, 0) + "]}");
    file.nodes = {R"({"mesh":0})"};
    const Converted converted = ConvertGlb(file);
    ASSERT_EQ(converted.conversion.object.items.size(), 2u);
    ASSERT_EQ(converted.warnings.size(), 1u);
    EXPECT_THAT(converted.warnings[0], HasSubstr("points and lines are left out"));
    // Flat normals unroll the triangles: three strip triangles, three fan triangles.
    EXPECT_EQ(converted.Mesh(0).VertexCount(), 9u);
    EXPECT_EQ(converted.Mesh(1).VertexCount(), 9u);
    ExpectWindingAgreesWithNormals(converted.Mesh(0));
    ExpectWindingAgreesWithNormals(converted.Mesh(1));
    // The strip's second triangle (1, 2, 3) is turned round to (2, 1, 3): all face +z.
    EXPECT_THAT(Normals(converted.Mesh(0))[3], NearPoint(Float3{0, 0, -1}, 1e-6f));
}

TEST_F(GltfImportTest, QuantizedAndSparseAccessorsAreResolved)
{
    GltfFile file;
    // Normalised shorts (KHR_mesh_quantization), then a sparse accessor that moves vertex 1.
    const std::vector<int16_t> shorts{0, 0, 0, 32767, 0, 0, 0, 32767, 0, 0};
    const int view = file.View(shorts.data(), 18);
    const std::vector<uint8_t> sparseIndex{1, 0, 0, 0};
    const int indexView = file.View(sparseIndex.data(), 1);
    const std::vector<int16_t> sparseValue{16384, 0, 0};
    const int valueView = file.View(sparseValue.data(), 6);
    const int positions =
        file.Accessor(view, GltfFile::kShort, 3, "VEC3",
                      R"(,"normalized":true,"sparse":{"count":1,"indices":{"bufferView":)" + std::to_string(indexView) +
                          R"(,"componentType":5121},"values":{"bufferView":)" + std::to_string(valueView) + "}}");
    file.meshes.push_back(Mesh(positions, -1));
    file.nodes = {R"({"mesh":0})"};
    file.extraTopLevel =
        R"(,"extensionsUsed":["KHR_mesh_quantization"],"extensionsRequired":["KHR_mesh_quantization"])";
    const Converted converted = ConvertGlb(file);
    EXPECT_THAT(Positions(converted.Mesh(0)),
                testing::UnorderedElementsAre(NearPoint(Float3{0, 0, 0}, 0), NearPoint(Float3{0.5f, 0, 0}, 1e-4f),
                                              NearPoint(Float3{0, 1, 0}, 0)));
}

/// The bytes of a PNG signature and a little more: enough to be told apart, and copied.
std::vector<uint8_t> PngBytes(uint8_t tag)
{
    return {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n', 0, 0, 0, 13, 'I', 'H', 'D', 'R', tag};
}

TEST_F(GltfImportTest, MaterialsBecomeTheEnginesStandardMaterialsWithTheirValues)
{
    GltfFile file;
    const std::vector<uint8_t> png = PngBytes(1);
    file.images = {R"({"bufferView":)" + std::to_string(file.View(png.data(), png.size())) +
                       R"(,"mimeType":"image/png","name":"bark"})",
                   R"({"uri":"data:image/gif;base64,R0lGODlhAQABAAAAACw="})"};
    file.textures = {R"({"source":0})", R"({"source":1})"};
    file.materials = {
        R"({"pbrMetallicRoughness":{"baseColorFactor":[0.2,0.4,0.6,0.25],"baseColorTexture":{"index":0}},"alphaMode":"BLEND"})",
        R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0},"roughnessFactor":0.5},"emissiveFactor":[0.1,0.7,0.2]})",
        R"({"pbrMetallicRoughness":{"baseColorFactor":[1,0,0,0.5],"baseColorTexture":{"index":1}}})",
    };
    for (int m = 0; m < 3; ++m) AddTriangle(file, m);
    file.nodes = {R"({"children":[1,2,3]})", R"({"mesh":0,"name":"glass"})", R"({"mesh":1,"name":"wood"})",
                  R"({"mesh":2,"name":"plain"})"};
    file.scenes = {R"({"nodes":[0]})"};
    const Converted converted = ConvertGlb(file);
    ASSERT_EQ(converted.conversion.object.items.size(), 3u);

    const tools::SurfaceModel& glass = converted.Mesh(0).surface;
    EXPECT_EQ(glass.materialFile, "texture_alpha.mat");
    EXPECT_EQ(glass.color, (Float3{0.2f, 0.4f, 0.6f}));
    EXPECT_FLOAT_EQ(glass.transparency, 0.75f);
    EXPECT_EQ(glass.renderStates, tools::SurfaceModel::kAlphaBlend | tools::SurfaceModel::kDepth);
    EXPECT_EQ(converted.Mesh(0).flags, MeshItem::kSortTriangles) << "blended triangles are sorted back to front";
    EXPECT_EQ(converted.Mesh(0).textures, (std::vector<std::string>{"model\\bark.png"}));

    const tools::SurfaceModel& wood = converted.Mesh(1).surface;
    EXPECT_EQ(wood.materialFile, "texture.mat");
    EXPECT_FLOAT_EQ(wood.transparency, 0.0f);
    EXPECT_EQ(wood.renderStates, tools::SurfaceModel::kDepth | tools::SurfaceModel::kDepthWrite);
    EXPECT_FLOAT_EQ(wood.specular, 0.5f);
    EXPECT_FLOAT_EQ(wood.glossiness, 30.0f) << "2 / a^2 - 2 with a = 0.5^2";
    EXPECT_FLOAT_EQ(wood.luminosity, 0.7f);
    EXPECT_EQ(converted.Mesh(1).textures, converted.Mesh(0).textures) << "one file for one image";
    EXPECT_EQ(converted.Mesh(1).flags, 0u);

    // The GIF image can't be loaded by the engine: the surface keeps its colour only,
    // and opaque, its alpha is ignored.
    const tools::SurfaceModel& plain = converted.Mesh(2).surface;
    EXPECT_EQ(plain.materialFile, "color.mat");
    EXPECT_FLOAT_EQ(plain.transparency, 0.0f);
    EXPECT_TRUE(converted.Mesh(2).textures.empty());
    ASSERT_EQ(converted.warnings.size(), 1u);
    EXPECT_THAT(converted.warnings[0], HasSubstr("image 1 is not PNG, JPEG, TGA, BMP or DDS"));

    ASSERT_EQ(converted.conversion.images.size(), 1u);
    EXPECT_EQ(converted.conversion.images[0].first, "bark.png");
    EXPECT_EQ(converted.conversion.images[0].second, png);
}

TEST_F(GltfImportTest, TheTextureReadsTheCoordinatesItsMaterialNames)
{
    GltfFile file;
    const std::vector<uint8_t> png = PngBytes(1);
    file.images = {R"({"bufferView":)" + std::to_string(file.View(png.data(), png.size())) +
                   R"(,"mimeType":"image/png"})"};
    file.textures = {R"({"source":0})"};
    file.materials = {R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0,"texCoord":1}}})"};
    const int positions = file.Floats3({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    const int first = file.Floats2({{0, 0}, {0, 0}, {0, 0}});
    const int second = file.Floats2({{0.25f, 0.5f}, {1, 0.5f}, {0.25f, 0}});
    file.meshes.push_back(Mesh(
        positions, -1, R"(,"TEXCOORD_0":)" + std::to_string(first) + R"(,"TEXCOORD_1":)" + std::to_string(second), 0));
    file.nodes = {R"({"mesh":0})"};
    const Converted converted = ConvertGlb(file);
    EXPECT_EQ(converted.Mesh(0).surface.materialFile, "texture.mat");
    EXPECT_EQ(Uvs(converted.Mesh(0))[0], (std::array<float, 2>{0.25f, 0.5f}));
}

TEST_F(GltfImportTest, TexturesOfTheSameNameGetFilesOfTheirOwn)
{
    GltfFile file;
    for (const uint8_t tag : {1, 2}) {
        const std::vector<uint8_t> png = PngBytes(tag);
        folder.Write(tag == 1 ? "a/skin.png" : "b/skin.png", std::string(png.begin(), png.end()));
    }
    file.images = {R"({"uri":"a/skin.png"})", R"({"uri":"b/skin.png"})", R"({"uri":"c/missing.png"})"};
    file.textures = {R"({"source":0})", R"({"source":1})", R"({"source":2})"};
    for (int m = 0; m < 3; ++m) {
        file.materials.push_back(R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":)" + std::to_string(m) +
                                 "}}}");
        AddTriangle(file, m);
    }
    file.nodes = {R"({"children":[1,2,3]})", R"({"mesh":0})", R"({"mesh":1})", R"({"mesh":2})"};
    file.WriteGltf(folder.path / "model.gltf");
    const Converted converted = Convert(folder.path / "model.gltf", "hero");
    EXPECT_EQ(converted.Mesh(0).textures, (std::vector<std::string>{"hero\\skin.png"}));
    EXPECT_EQ(converted.Mesh(1).textures, (std::vector<std::string>{"hero\\skin-2.png"}));
    EXPECT_TRUE(converted.Mesh(2).textures.empty()) << "its file is missing";
    EXPECT_EQ(converted.Mesh(2).surface.materialFile, "color.mat");
    ASSERT_EQ(converted.conversion.images.size(), 2u);
    for (const auto& [name, bytes] : converted.conversion.images)
        EXPECT_EQ(bytes, PngBytes(name == "skin.png" ? 1 : 2)) << name;
    ASSERT_EQ(converted.warnings.size(), 1u);
    EXPECT_THAT(converted.warnings[0], HasSubstr("c/missing.png"));
}

}  // namespace
}  // namespace qx4d::test
