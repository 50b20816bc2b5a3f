// Materials drawn on the device with the content pack's "color.mat" and "common.fxh":
// a sphere under a distant light, a plane under a point light, and linear fog. Expected
// colours come from the lighting rules worked out by hand at chosen points.
#include "qx4d/content/Material.h"
#include "qx4d/content/ShaderConstants.h"
#include "qx4d/content/ShaderKeys.h"

#include "qx4d/core/FileManager.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"
#include "tests/platform/gpu/GpuFixture.h"
#include "tests/qx4d/content/EngineFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace qx4d::test {
namespace {

namespace gpu = qx::gpu;

constexpr int kSize = 64;

struct Vertex {
    float x, y, z, nx, ny, nz;
};

const gpu::D3DVERTEXELEMENT9 kDeclaration[] = {
    {0, 0, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_POSITION, 0},
    {0, 12, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_NORMAL, 0},
    gpu::D3DDECL_END,
};

/// Appends the triangle with its corners ordered clockwise as seen from the side its
/// normals face, Direct3D's front face.
void AddTriangle(std::vector<Vertex>& out, const Vertex& a, Vertex b, Vertex c)
{
    const double e1[3] = {b.x - a.x, b.y - a.y, b.z - a.z};
    const double e2[3] = {c.x - a.x, c.y - a.y, c.z - a.z};
    const double cross[3] = {e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2],
                             e1[0] * e2[1] - e1[1] * e2[0]};
    if (cross[0] * a.nx + cross[1] * a.ny + cross[2] * a.nz < 0) std::swap(b, c);
    out.insert(out.end(), {a, b, c});
}

std::vector<Vertex> UnitSphere()
{
    constexpr int kRings = 24, kSegments = 48;
    const auto at = [](int ring, int segment) {
        const double theta = M_PI * ring / kRings, phi = 2 * M_PI * segment / kSegments;
        const float x = float(std::sin(theta) * std::cos(phi)), y = float(std::cos(theta)),
                    z = float(std::sin(theta) * std::sin(phi));
        return Vertex{x, y, z, x, y, z};
    };
    std::vector<Vertex> triangles;
    for (int ring = 0; ring < kRings; ++ring) {
        for (int segment = 0; segment < kSegments; ++segment) {
            const Vertex a = at(ring, segment), b = at(ring + 1, segment), c = at(ring + 1, segment + 1),
                         d = at(ring, segment + 1);
            if (ring + 1 < kRings) AddTriangle(triangles, a, b, c);
            if (ring > 0) AddTriangle(triangles, a, c, d);
        }
    }
    return triangles;
}

/// A square of side `size` in the plane z = 0, facing the camera (-z), in 2 triangles.
std::vector<Vertex> Square(float size)
{
    const float h = size / 2;
    const Vertex a{-h, h, 0, 0, 0, -1}, b{h, h, 0, 0, 0, -1}, c{h, -h, 0, 0, 0, -1}, d{-h, -h, 0, 0, 0, -1};
    std::vector<Vertex> triangles;
    AddTriangle(triangles, a, b, c);
    AddTriangle(triangles, a, c, d);
    return triangles;
}

Matrix3x4 Translation(float x, float y, float z) { return {1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z}; }

class MaterialRenderTest : public EngineTest {
protected:
    void SetUp() override
    {
        if (!StartEngine(kSize)) GTEST_SKIP() << "no EGL device";
        ASSERT_EQ(Device().CreateVertexDeclaration(kDeclaration, &declaration), gpu::D3D_OK);
        camera = OrthographicCamera();
        Device().BeginScene();
        Device().Clear(gpu::D3DCLEAR_TARGET | gpu::D3DCLEAR_ZBUFFER, 0xFF000000u, 1.0f, 0);
    }
    gpu::Device& Device() { return *graphics->GetDevice(); }

    /// color.mat with the scene's lights as keys, built for the test declaration.
    std::unique_ptr<Material> ColorMaterial(uint32_t perPixel = 0)
    {
        auto material = std::make_unique<Material>();
        EXPECT_TRUE(material->Load(u"color.mat"));
        for (const ShaderLight& light : scene.lights)
            material->shaderKeys.push_back(ShaderKeyForLight(light.type, light.edgeAngle) | perPixel);
        EXPECT_TRUE(material->Build(kDeclaration, scene));
        return material;
    }
    void Draw(Material& material, const std::vector<Vertex>& vertices, const Matrix3x4& model)
    {
        Device().SetVertexDeclaration(declaration);
        material.Apply(0, scene);
        SetShaderConstants(material, scene, camera, model);
        Device().DrawPrimitiveUP(gpu::D3DPT_TRIANGLELIST, unsigned(vertices.size() / 3), vertices.data(),
                                 sizeof(Vertex));
    }
    static uint32_t At(const std::vector<uint32_t>& pixels, float x, float y)
    {
        return OrthographicAt(pixels, kSize, x, y);
    }
    static int Green(uint32_t pixel) { return int((pixel >> 8) & 0xFF); }
    static int Red(uint32_t pixel) { return int((pixel >> 16) & 0xFF); }

    std::shared_ptr<gpu::VertexDeclaration> declaration;
    ShadingScene scene;
    ShadingCamera camera;
};

// A distant light shining toward +x lights the left side of the sphere: Lambert gives
// max(0, -nx), with nx = x on the visible hemisphere.
TEST_F(MaterialRenderTest, DistantLightLightsTheSideFacingIt)
{
    ShaderLight light;
    light.direction = {1, 0, 0};
    light.intensity = 1.0f;
    scene.lights = {light};
    const auto material = ColorMaterial();
    Draw(*material, UnitSphere(), Translation(0, 0, 0));
    const std::vector<uint32_t> pixels = FinishFrame();
    EXPECT_NEAR(Green(At(pixels, -0.7f, 0)), 178, 16);  // 0.7 * 255
    EXPECT_NEAR(Green(At(pixels, -0.3f, 0.3f)), 77, 16);
    EXPECT_LE(Green(At(pixels, 0.5f, 0)), 4);
    EXPECT_EQ(At(pixels, -1.15f, 1.15f), 0xFF000000u);  // outside the sphere
}

// The same sphere turned a quarter about z: its normals turn with it through the
// inverse transpose, so the lit side stays where the light is. Normals turned the wrong
// way would light the right side instead.
TEST_F(MaterialRenderTest, TurnedSphereKeepsItsLitSide)
{
    ShaderLight light;
    light.direction = {1, 0, 0};
    light.intensity = 1.0f;
    scene.lights = {light};
    const auto material = ColorMaterial();
    Draw(*material, UnitSphere(), Matrix3x4{0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0});
    const std::vector<uint32_t> pixels = FinishFrame();
    EXPECT_NEAR(Green(At(pixels, -0.7f, 0)), 178, 16);
    EXPECT_NEAR(Green(At(pixels, 0, 0.7f)), 0, 8);
    EXPECT_LE(Green(At(pixels, 0.5f, 0)), 4);
}

// A spot one unit in front of each square's centre, shining at it: cone 0.5 rad, soft edge 0.2 rad,
// range 2 so that distance plays no part. Full light inside 0.3 rad of the axis, none
// beyond 0.5; between them the smooth step, times the cosine of the angle. At x on the
// plane the angle's cosine is 1 / sqrt(1 + x^2).
TEST_F(MaterialRenderTest, SpotLightConeWithSoftAndHardEdges)
{
    ShaderLight light;
    light.type = kLightSpot;
    light.position = {-0.6f, 0, -1};
    light.direction = {0, 0, 1};
    light.coneAngle = 0.5f;
    light.edgeAngle = 0.2f;
    light.intensity = 1.0f;
    light.range = 2.0f;
    scene.lights = {light};
    const auto soft = ColorMaterial(kKeyPerPixel);
    ASSERT_TRUE(soft->shaderKeys[0] & kKeySoftEdge);
    Draw(*soft, Square(1.1f), Translation(-0.6f, 0, 0));
    scene.lights[0].edgeAngle = 0.0f;  // a hard edge; the cosines stay those of the cone
    scene.lights[0].position = {0.6f, 0, -1};
    const auto hard = ColorMaterial(kKeyPerPixel);
    Draw(*hard, Square(1.1f), Translation(0.6f, 0, 0));
    const std::vector<uint32_t> pixels = FinishFrame();
    // Points that pixels sample exactly; the angles are those from the spot's axis.
    EXPECT_NEAR(Green(At(pixels, -0.6f, 0)), 255, 4);
    EXPECT_NEAR(Green(At(pixels, -0.6f, 0.45f)), 96, 6);     // angle 0.423: within the soft edge
    EXPECT_NEAR(Green(At(pixels, -0.6f, -0.4875f)), 42, 6);  // angle 0.454: further out in it
    EXPECT_LE(Green(At(pixels, -0.15f, 0.45f)), 2);          // angle 0.567: outside the cone
    EXPECT_NEAR(Green(At(pixels, 0.6f, 0.45f)), 232, 6);     // a hard edge lets all through
    EXPECT_NEAR(Green(At(pixels, 0.6f, -0.4875f)), 229, 6);
    EXPECT_LE(Green(At(pixels, 0.15f, 0.45f)), 2);
}

// A point light half a unit in front of the plane's centre, range 0.5: full strength at
// the centre, (0.5 / d)^2 of it beyond, times the cosine 0.5 / d.
TEST_F(MaterialRenderTest, PointLightFallsOffWithDistance)
{
    ShaderLight light;
    light.type = kLightPoint;
    light.position = {0, 0, -0.5f};
    light.intensity = 1.0f;
    light.range = 0.5f;
    scene.lights = {light};
    const auto material = ColorMaterial(kKeyPerPixel);
    Draw(*material, Square(2.2f), Translation(0, 0, 0));
    const std::vector<uint32_t> pixels = FinishFrame();
    const int centre = Green(At(pixels, 0, 0)), half = Green(At(pixels, 0.5f, 0)), far = Green(At(pixels, 0.9f, 0));
    EXPECT_NEAR(centre, 253, 6);
    EXPECT_NEAR(half, 90, 8);  // d = 0.707: 0.5 * 0.707
    EXPECT_NEAR(far, 29, 6);   // d = 1.030: 0.236 * 0.486
    EXPECT_GT(centre, half);
    EXPECT_GT(half, far);
}

// Two white squares in red fog, 5.04 and 8.02 units from the eye (their centres); the
// green that is left of them is the fog factor.
class FogRenderTest : public MaterialRenderTest {
protected:
    std::pair<uint32_t, uint32_t> NearAndFar(int32_t fogType)
    {
        scene.fog.fogType = fogType;
        scene.fog.minDistance = 0;
        scene.fog.maxDistance = 10;
        scene.fog.color = {1, 0, 0};
        renderer->SetFogColor(0x00FF0000u);
        const auto material = ColorMaterial();
        EXPECT_TRUE(material->flags & kMaterialFog);
        const std::vector<Vertex> square = Square(0.4f);
        Draw(*material, square, Translation(-0.6f, 0, 0));
        Draw(*material, square, Translation(0.6f, 0, 3));
        const std::vector<uint32_t> pixels = FinishFrame();
        return {At(pixels, -0.6f, 0), At(pixels, 0.6f, 0)};
    }
};

// Linear fog from 0 to 10 units: a factor of 1 - d / 10.
TEST_F(FogRenderTest, LinearFogBlendsTowardTheFogColourWithDistance)
{
    const auto [near, far] = NearAndFar(1);
    EXPECT_EQ(Red(near), 255);
    EXPECT_EQ(Red(far), 255);
    EXPECT_NEAR(Green(near), 127, 6);
    EXPECT_NEAR(Green(far), 51, 6);
}

// The exponential modes take the fixed density 0.35: exp(-0.35 d) and exp(-(0.35 d)^2).
TEST_F(FogRenderTest, ExponentialFogUsesAFixedDensity)
{
    const auto [near, far] = NearAndFar(2);
    EXPECT_NEAR(Green(near), 44, 5);
    EXPECT_NEAR(Green(far), 15, 5);
}

TEST_F(FogRenderTest, SquaredExponentialFog)
{
    const auto [near, far] = NearAndFar(3);
    EXPECT_NEAR(Green(near), 12, 5);
    EXPECT_LE(Green(far), 2);
    EXPECT_EQ(Red(far), 255);
}

}  // namespace
}  // namespace qx4d::test
