// Draw-time constants: the two runs against values worked out by hand, the registers
// each part takes, and keys that outnumber the scene's lights.
#include "qx4d/content/ShaderConstants.h"
#include "qx4d/content/ShaderKeys.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qx4d::test {
namespace {

using Rows = std::vector<std::array<float, 4>>;

Rows RowsOf(const std::vector<float>& run)
{
    Rows rows;
    for (size_t i = 0; i + 3 < run.size(); i += 4) rows.push_back({run[i], run[i + 1], run[i + 2], run[i + 3]});
    EXPECT_EQ(run.size() % 4, 0u);
    return rows;
}

void ExpectRows(const Rows& actual, const Rows& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t r = 0; r < expected.size(); ++r) {
        for (size_t c = 0; c < 4; ++c)
            EXPECT_NEAR(actual[r][c], expected[r][c], 1e-6) << "row " << r << " column " << c;
    }
}

class ShaderConstantsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        material.Color = {0.5f, 0.25f, 1.0f};
        material.Diffuse = 0.8f;
        material.Luminosity = 0.1f;
        material.Transparency = 0.25f;
        material.Specular = 0.6f;
        material.Glossiness = 20.0f;
        material.flags = 0x1005B;
        material.shaderKeys = {0x21200, 0x60400, 0x31800};
        scene.globalAmbient = {0.2f, 0.4f, 0.6f};
        ShaderLight distant;
        distant.direction = {0, 0, 1};
        distant.color = {1.0f, 0.5f, 0.25f};
        distant.intensity = 2.0f;
        distant.range = 7.0f;
        ShaderLight point;
        point.type = kLightPoint;
        point.position = {1, 2, 3};
        point.intensity = 0.5f;
        point.range = 10.0f;
        ShaderLight spot;
        spot.type = kLightSpot;
        spot.position = {4, 5, 6};
        spot.direction = {0, -1, 0};
        spot.coneAngle = 0.5f;
        spot.edgeAngle = 0.1f;
        spot.color = {0.5f, 0.5f, 0.5f};
        spot.intensity = 1.0f;
        spot.range = 3.0f;
        scene.lights = {distant, point, spot};
        for (int i = 0; i < 16; ++i) camera.viewProjection[size_t(i)] = float(i + 1);
        camera.position = {7, 8, 9};
    }

    Material material;
    ShadingScene scene;
    ShadingCamera camera;
    // A quarter turn about z after scales of 2, 4 and 8, then a move to (10, 20, 30).
    Matrix3x4 model{0, -4, 0, 10, 2, 0, 0, 20, 0, 0, 8, 30};
};

TEST_F(ShaderConstantsTest, VertexRunInTheGeneratorsOrder)
{
    const ShaderConstantRuns runs = ComputeShaderConstants(material, scene, camera, model);
    const float cosInner = float(std::cos(0.4)), cosCone = float(std::cos(0.5));
    ExpectRows(RowsOf(runs.vertex), {
                                        {1, 2, 3, 4},
                                        {5, 6, 7, 8},
                                        {9, 10, 11, 12},
                                        {13, 14, 15, 16},               // g_ViewProj
                                        {7, 8, 9, 0},                   // g_vEyePos
                                        {0.13f, 0.105f, 0.58f, 0.75f},  // g_GlobalAmbient
                                        {0, 0, 1, 0},
                                        {0.8f, 0.2f, 0.4f, 7},
                                        {1.2f, 0.6f, 0.3f, 20},  // distant with specular
                                        {4, 5, 6, cosInner},
                                        {0, -1, 0, cosCone},
                                        {0.2f, 0.1f, 0.4f, 3},
                                        {0.3f, 0.3f, 0.3f, 20},  // spot
                                        {0, -4, 0, 10},
                                        {2, 0, 0, 20},
                                        {0, 0, 8, 30},  // g_Model
                                        {0, -0.25f, 0, 0},
                                        {0.5f, 0, 0, 0},
                                        {0, 0, 0.125f, 0},  // g_ModelIT
                                    });
}

TEST_F(ShaderConstantsTest, PixelRunHoldsTheEyeAndThePerPixelLights)
{
    const ShaderConstantRuns runs = ComputeShaderConstants(material, scene, camera, model);
    ExpectRows(RowsOf(runs.pixel), {{7, 8, 9, 0}, {1, 2, 3, 0}, {0.2f, 0.1f, 0.4f, 10}});
}

// Without the eye position bit there is no eye row in either run; without bit 0 no
// inverse transpose; with bones no model rows, the bones being the mesh's to write.
TEST_F(ShaderConstantsTest, NoEyeNoModelInverseWithBones)
{
    material.flags = 0x4B & ~0x1u;
    material.bones = 2;
    const ShaderConstantRuns runs = ComputeShaderConstants(material, scene, camera, model);
    EXPECT_EQ(runs.vertex.size() / 4, 4u + 1 + 3 + 4);
    EXPECT_EQ(runs.pixel.size() / 4, 2u);
    material.bones = 0;
    EXPECT_EQ(ComputeShaderConstants(material, scene, camera, model).vertex.size() / 4, 4u + 1 + 3 + 4 + 3);
}

// Keys beyond the scene's lights keep their registers, filled with darkness.
TEST_F(ShaderConstantsTest, KeysBeyondTheLightsGiveDarkRows)
{
    scene.lights.resize(1);
    const ShaderConstantRuns runs = ComputeShaderConstants(material, scene, camera, model);
    const Rows vertex = RowsOf(runs.vertex);
    ASSERT_EQ(vertex.size(), 19u);
    ExpectRows({vertex[11], vertex[12]}, {{0, 0, 0, 1}, {0, 0, 0, 20}});  // spot colour, specular
    ExpectRows(RowsOf(runs.pixel), {{7, 8, 9, 0}, {0, 0, 0, 0}, {0, 0, 0, 1}});
}

}  // namespace
}  // namespace qx4d::test
