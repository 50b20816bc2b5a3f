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

#include <gtest/gtest.h>

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
    const double cross[3] = {e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2], e1[0] * e2[1] - e1[1] * e2[0]};
    if (cross[0] * a.nx + cross[1] * a.ny + cross[2] * a.nz < 0)
        std::swap(b, c);
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
            if (ring + 1 < kRings)
                AddTriangle(triangles, a, b, c);
            if (ring > 0)
                AddTriangle(triangles, a, c, d);
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

class MaterialRenderTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(files.Mount(u"EFFECTS", std::u16string(u"" QX_SOURCE_DIR "/data/Effects")));
        ASSERT_TRUE(files.Mount(u"MATERIALS", std::u16string(u"" QX_SOURCE_DIR "/data/Materials")));
        gpu::D3DPRESENT_PARAMETERS parameters;
        parameters.BackBufferWidth = parameters.BackBufferHeight = kSize;
        parameters.BackBufferFormat = gpu::D3DFMT_A8R8G8B8;
        parameters.EnableAutoDepthStencil = 1;
        parameters.AutoDepthStencilFormat = gpu::D3DFMT_D24X8;
        graphics = std::make_unique<GraphicsDevice>();
        if (!graphics->Create(parameters))
            GTEST_SKIP() << "no EGL device";
        renderer = std::make_unique<Renderer>();
        ASSERT_EQ(Device().CreateVertexDeclaration(kDeclaration, &declaration), gpu::D3D_OK);
        // Orthographic: the view is 2.4 units across, depth 0.1 a unit from z = -5.
        camera.viewProjection = {1 / 1.2f, 0, 0, 0, 0, 1 / 1.2f, 0, 0, 0, 0, 0.1f, 0.5f, 0, 0, 0, 1};
        camera.position = {0, 0, -5};
        Device().BeginScene();
        Device().Clear(gpu::D3DCLEAR_TARGET | gpu::D3DCLEAR_ZBUFFER, 0xFF000000u, 1.0f, 0);
    }
    void TearDown() override
    {
        renderer.reset();
        graphics.reset();
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
        Device().DrawPrimitiveUP(gpu::D3DPT_TRIANGLELIST, unsigned(vertices.size() / 3), vertices.data(), sizeof(Vertex));
    }
    /// The pixels after the frame, 0xAARRGGBB.
    std::vector<uint32_t> Finish()
    {
        renderer->EndEffect();
        Device().EndScene();
        std::shared_ptr<gpu::Surface> target;
        Device().GetRenderTarget(0, &target);
        return qx::gpu::testing::readPixels(Device(), target);
    }
    /// The pixel over the world point (x, y) of the orthographic view.
    static uint32_t At(const std::vector<uint32_t>& pixels, float x, float y)
    {
        const int column = int((x / 1.2f + 1) / 2 * kSize), row = int((1 - y / 1.2f) / 2 * kSize);
        return pixels[size_t(row) * kSize + size_t(column)];
    }
    static int Green(uint32_t pixel) { return int((pixel >> 8) & 0xFF); }
    static int Red(uint32_t pixel) { return int((pixel >> 16) & 0xFF); }

    FileManager files;
    std::unique_ptr<GraphicsDevice> graphics;
    std::unique_ptr<Renderer> renderer;
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
    const std::vector<uint32_t> pixels = Finish();
    EXPECT_NEAR(Green(At(pixels, -0.7f, 0)), 178, 16);  // 0.7 * 255
    EXPECT_NEAR(Green(At(pixels, -0.3f, 0.3f)), 77, 16);
    EXPECT_LE(Green(At(pixels, 0.5f, 0)), 4);
    EXPECT_EQ(At(pixels, -1.15f, 1.15f), 0xFF000000u);  // outside the sphere
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
    const std::vector<uint32_t> pixels = Finish();
    const int centre = Green(At(pixels, 0, 0)), half = Green(At(pixels, 0.5f, 0)), far = Green(At(pixels, 0.9f, 0));
    EXPECT_NEAR(centre, 253, 6);
    EXPECT_NEAR(half, 90, 8);   // d = 0.707: 0.5 * 0.707
    EXPECT_NEAR(far, 29, 6);    // d = 1.030: 0.236 * 0.486
    EXPECT_GT(centre, half);
    EXPECT_GT(half, far);
}

// Linear fog from 0 to 10 units toward red: a white square 5 units from the eye keeps
// half its colour, one 8 units away a fifth.
TEST_F(MaterialRenderTest, LinearFogBlendsTowardTheFogColourWithDistance)
{
    scene.fog.fogType = 1;
    scene.fog.minDistance = 0;
    scene.fog.maxDistance = 10;
    scene.fog.color = {1, 0, 0};
    renderer->SetFogColor(0x00FF0000u);
    const auto material = ColorMaterial();
    EXPECT_TRUE(material->flags & kMaterialFog);
    const std::vector<Vertex> square = Square(0.4f);
    Draw(*material, square, Translation(-0.6f, 0, 0));
    Draw(*material, square, Translation(0.6f, 0, 3));
    const std::vector<uint32_t> pixels = Finish();
    const uint32_t near = At(pixels, -0.6f, 0), far = At(pixels, 0.6f, 0);
    EXPECT_EQ(Red(near), 255);
    EXPECT_EQ(Red(far), 255);
    EXPECT_NEAR(Green(near), 127, 6);
    EXPECT_NEAR(Green(far), 51, 6);
}

}  // namespace
}  // namespace qx4d::test
