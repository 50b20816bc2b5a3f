// Wavefront OBJ models written by the test: materials of the MTL file with their texture
// files, texture coordinates turned to a top-left origin, one item a shape and material,
// normals over smoothing groups where the file has none.
#include "tests/tools/import/ImportTestSupport.h"

namespace qx4d::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr const char* kSquare =
    "v -0.5 -0.5 0\nv 0.5 -0.5 0\nv 0.5 0.5 0\nv -0.5 0.5 0\n"
    "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvn 0 0 1\n";

class ObjImportTest : public ::testing::Test {
protected:
    Converted ConvertObj(const std::string& obj, const std::string& name = "model.obj")
    {
        folder.Write(name, obj);
        return Convert(folder.path / name);
    }
    TempFolder folder;
};

TEST_F(ObjImportTest, MaterialsAndTheirTexturesComeFromTheMtlFile)
{
    const std::string bmp = Bmp(2, 2, {0xFF0000, 0x00FF00, 0x0000FF, 0xFFFFFF});
    folder.Write("textures/wood.bmp", bmp);
    folder.Write("scene.mtl",
                 "newmtl painted\nKd 0.8 0.6 0.4\nKs 0.5 0.5 0.5\nNs 64\nmap_Kd textures\\wood.bmp\n"
                 "newmtl glass\nKd 0 0 1\nd 0.25\nKe 0.3 0.1 0\n");
    const Converted converted = ConvertObj(std::string("mtllib scene.mtl\n") + kSquare +
                                           "o picture\nusemtl painted\nf 1/1/1 2/2/1 3/3/1 4/4/1\n"
                                           "usemtl glass\nf 1/1/1 3/3/1 4/4/1\n");
    ASSERT_EQ(converted.conversion.object.items.size(), 2u) << "one item a material of the shape";
    EXPECT_EQ(converted.Item(0).name, "picture");
    EXPECT_EQ(converted.Item(1).name, "picture.1");

    const tools::MeshModel& painted = converted.Mesh(0);
    EXPECT_EQ(painted.VertexCount(), 4u);
    EXPECT_EQ(painted.indices.size(), 6u) << "the quad fanned into two triangles";
    // v runs upwards in OBJ and downwards in the engine.
    EXPECT_THAT(Uvs(painted), ElementsAre(std::array<float, 2>{0, 1}, std::array<float, 2>{1, 1},
                                          std::array<float, 2>{1, 0}, std::array<float, 2>{0, 0}));
    EXPECT_THAT(Normals(painted)[0], NearPoint(Float3{0, 0, -1}, 0));
    EXPECT_EQ(painted.surface.materialFile, "texture.mat");
    EXPECT_EQ(painted.surface.color, (Float3{0.8f, 0.6f, 0.4f}));
    EXPECT_FLOAT_EQ(painted.surface.specular, 0.5f);
    EXPECT_FLOAT_EQ(painted.surface.glossiness, 64.0f);
    EXPECT_EQ(painted.textures, (std::vector<std::string>{"model\\wood.bmp"}));
    ASSERT_EQ(converted.conversion.images.size(), 1u);
    EXPECT_EQ(converted.conversion.images[0].first, "wood.bmp");
    EXPECT_EQ(std::string(converted.conversion.images[0].second.begin(), converted.conversion.images[0].second.end()),
              bmp);

    const tools::MeshModel& glass = converted.Mesh(1);
    EXPECT_EQ(glass.surface.materialFile, "color.mat");
    EXPECT_FLOAT_EQ(glass.surface.transparency, 0.75f);
    EXPECT_FLOAT_EQ(glass.surface.luminosity, 0.3f);
    EXPECT_EQ(glass.flags, MeshItem::kSortTriangles);
    EXPECT_TRUE(converted.warnings.empty());
}

TEST_F(ObjImportTest, NormalsTheFileLacksFollowItsSmoothingGroups)
{
    // Two unit squares meeting at a right angle along the edge x = 1: one facing +z, one +x.
    const std::string corners = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 1 0 -1\nv 1 1 -1\n";
    const Converted smooth = ConvertObj(corners + "s 1\nf 1 2 3 4\nf 2 5 6 3\n");
    const tools::MeshModel& mesh = smooth.Mesh(0);
    EXPECT_EQ(mesh.VertexCount(), 6u) << "the edge's vertices are shared";
    const std::vector<Float3> positions = Positions(mesh), normals = Normals(mesh);
    const float r = std::sqrt(0.5f);
    for (size_t v = 0; v < positions.size(); ++v) {
        const bool onEdge = positions[v][0] == 1 && positions[v][2] == 0;
        const bool onFront = positions[v][2] == 0;
        const Float3 expected = onEdge ? Float3{r, 0, -r} : onFront ? Float3{0, 0, -1} : Float3{1, 0, 0};
        EXPECT_THAT(normals[v], NearPoint(expected, 1e-6f)) << "vertex " << v;
    }
    const Converted flat = ConvertObj(corners + "s off\nf 1 2 3 4\nf 2 5 6 3\n");
    EXPECT_EQ(flat.Mesh(0).VertexCount(), 8u) << "without a group, each face keeps its own";
    EXPECT_THAT(Normals(flat.Mesh(0))[1], NearPoint(Float3{0, 0, -1}, 1e-6f));
}

TEST_F(ObjImportTest, AMissingMaterialFileOrTextureLeavesThePlainSurface)
{
    const Converted noLibrary = ConvertObj(std::string("mtllib absent.mtl\n") + kSquare + "usemtl x\nf 1 2 3\n");
    ASSERT_EQ(noLibrary.conversion.object.items.size(), 1u);
    EXPECT_EQ(noLibrary.Mesh(0).surface.materialFile, "color.mat");
    EXPECT_EQ(noLibrary.Mesh(0).surface.color, (Float3{1, 1, 1}));
    ASSERT_FALSE(noLibrary.warnings.empty());
    EXPECT_THAT(noLibrary.warnings[0], HasSubstr("absent.mtl"));

    folder.Write("lost.mtl", "newmtl lost\nmap_Kd nowhere.png\n");
    const Converted noTexture = ConvertObj(std::string("mtllib lost.mtl\n") + kSquare + "usemtl lost\nf 1/1 2/2 3/3\n");
    EXPECT_EQ(noTexture.Mesh(0).surface.materialFile, "color.mat");
    EXPECT_TRUE(noTexture.Mesh(0).textures.empty());
    ASSERT_EQ(noTexture.warnings.size(), 1u);
    EXPECT_THAT(noTexture.warnings[0], HasSubstr("texture nowhere.png could not be read"));
}

}  // namespace
}  // namespace qx4d::test
