// The 3D transition transform driven as an editor drives it, on the content pack of the
// build: the cube scene's two faces where its geometry puts them, the hard cut it falls
// back to without a scene, its properties, and inputs it cannot use. The overlay beside
// it passes its input through.
#include "filters/3DTransform.h"
#include "filters/Overlay.h"
#include "tests/wrap3d/SceneFixture.h"
#include "wrap3d/4DTransform.h"

namespace qx::test {
namespace {

constexpr LONG kWidth = 128, kHeight = 96;
constexpr uint32_t kSky = 0xFF20A0F0u;
constexpr const char16_t* kCubeScene = u"Transitions\\Cube.afx";

std::vector<uint32_t> readSurface(transform::DXSurface& surface)
{
    const transform::Bounds bounds = surface.GetBounds();
    std::vector<uint32_t> samples(size_t(bounds.width() * bounds.height()));
    std::unique_ptr<transform::SurfaceLock> lock;
    EXPECT_EQ(surface.LockSurface(nullptr, 0, transform::DXLOCKF_READ, lock), S_OK);
    lock->UnpackRect({samples.data(), false, bounds, 0});
    return samples;
}

void writeSurface(transform::DXSurface& surface, std::vector<uint32_t> samples)
{
    const transform::Bounds bounds = surface.GetBounds();
    std::unique_ptr<transform::SurfaceLock> lock;
    ASSERT_EQ(surface.LockSurface(nullptr, 0, transform::DXLOCKF_READWRITE, lock), S_OK);
    lock->PackRect({samples.data(), false, bounds, 0});
}

/// The transform with the quadrant frame as the clip that leaves and a plain sky blue as
/// the clip that enters.
class TransitionRig {
public:
    explicit TransitionRig(std::u16string_view scene, LONG secondWidth = kWidth, LONG secondHeight = kHeight)
        : first_(transform::DXSurface::create(kWidth, kHeight)),
          second_(transform::DXSurface::create(secondWidth, secondHeight)),
          output_(transform::DXSurface::create(kWidth, kHeight)), transform_(CQX3DTransform::Create())
    {
        writeSurface(*first_, QuadrantFrame(kWidth, kHeight));
        writeSurface(*second_, std::vector<uint32_t>(size_t(secondWidth * secondHeight), kSky));
        const Bstr source(scene);
        EXPECT_EQ(transform_->put_Source(source.get()), S_OK);
    }

    CQX3DTransform& transform() { return *transform_.get(); }
    std::vector<uint32_t> first() { return readSurface(*first_); }
    std::vector<uint32_t> second() { return readSurface(*second_); }
    std::vector<uint32_t> output() { return readSurface(*output_); }
    void markOutput() { writeSurface(*output_, std::vector<uint32_t>(size_t(kWidth * kHeight), 0xFF123456u)); }

    HRESULT setup()
    {
        const std::shared_ptr<transform::DXSurface> inputs[] = {first_, second_};
        return transform_->Setup(inputs, output_, 0);
    }
    HRESULT execute(float progress, const transform::Bounds* clip = nullptr)
    {
        if (const HRESULT hr = transform_->put_Progress(progress); FAILED(hr)) return hr;
        return transform_->Execute(nullptr, clip, nullptr);
    }
    std::vector<uint32_t> frameAt(float progress)
    {
        EXPECT_EQ(execute(progress), S_OK);
        return output();
    }

private:
    std::shared_ptr<transform::DXSurface> first_;
    std::shared_ptr<transform::DXSurface> second_;
    std::shared_ptr<transform::DXSurface> output_;
    com::ComPtr<CQX3DTransform> transform_;
};

class TransitionTransformTest : public SceneTest {};

// At 0 the first input fills the frame, at 1 the second; halfway the cube has turned an
// eighth: the first input's face to the left, the second's to the right.
TEST_F(TransitionTransformTest, CubeSceneTurnsFromTheFirstInputToTheSecond)
{
    TransitionRig rig(kCubeScene);
    ASSERT_EQ(rig.setup(), S_OK);
    ASSERT_NE(rig.transform().Client(), nullptr);
    EXPECT_LE(MeanDifference(rig.frameAt(0.0f), rig.first()), 6.0);
    EXPECT_LE(MeanDifference(rig.frameAt(1.0f), rig.second()), 6.0);
    const std::vector<uint32_t> halfway = rig.frameAt(0.5f);
    EXPECT_EQ(Dominant(At(halfway, kWidth, -0.6f, 0.2f)), Colour::Red);
    EXPECT_EQ(Dominant(At(halfway, kWidth, -0.2f, -0.2f)), Colour::Yellow);
    const uint32_t right = At(halfway, kWidth, 0.3f, 0.0f);
    EXPECT_GT(int(right & 0xFF), int((right >> 16) & 0xFF) + 60) << "the second input's blue on the right";
    EXPECT_GT(MeanDifference(halfway, rig.first()), 20.0);
    EXPECT_GT(MeanDifference(halfway, rig.second()), 20.0);

    // A second set-up replaces the client and its scene, and plays the same frame.
    ASSERT_EQ(rig.setup(), S_OK);
    EXPECT_LE(MeanDifference(rig.frameAt(0.5f), halfway), 1.0);
}

// The client gets the scene and the frame's shape: a zero AspectRatio stands for width
// over height. Neither the ratio nor the quality changes the picture of this scene.
TEST_F(TransitionTransformTest, SetupHandsSceneAndShapeToTheClient)
{
    TransitionRig rig(kCubeScene);
    ASSERT_EQ(rig.setup(), S_OK);
    const C4DTransform* client = rig.transform().Client();
    ASSERT_NE(client, nullptr);
    EXPECT_EQ(client->path, kCubeScene);
    EXPECT_EQ(client->aspectRatio, float(double(kWidth) / double(kHeight)));
    EXPECT_EQ(client->fps, 0.0f) << "progress alone sets the scene's time";
    const std::vector<uint32_t> byDefault = rig.frameAt(0.3f);

    rig.transform().put_AspectRatio(2.5f);
    rig.transform().put_Quality(3);
    ASSERT_EQ(rig.setup(), S_OK);
    ASSERT_NE(rig.transform().Client(), nullptr);
    EXPECT_EQ(rig.transform().Client()->aspectRatio, 2.5f);
    EXPECT_LE(MeanDifference(rig.frameAt(0.3f), byDefault), 0.5);
}

// A part of the frame (a clip rectangle) is cut, not handed to a client that renders
// whole frames; the part lands where the placement says.
TEST_F(TransitionTransformTest, ClipRectangleGetsTheCut)
{
    TransitionRig rig(kCubeScene);
    ASSERT_EQ(rig.setup(), S_OK);
    rig.markOutput();
    const transform::Bounds clip{10, 20, 50, 60};
    ASSERT_EQ(rig.execute(0.7f, &clip), S_OK);
    const std::vector<uint32_t> out = rig.output();
    EXPECT_EQ(out[size_t(20 * kWidth + 10)], kSky);
    EXPECT_EQ(out[size_t(59 * kWidth + 49)], kSky);
    EXPECT_EQ(out[size_t(19 * kWidth + 10)], 0xFF123456u);
    EXPECT_EQ(out[size_t(20 * kWidth + 50)], 0xFF123456u);
}

// Without a scene that loads there is no client: the first input up to 0.5 included,
// the second after it.
TEST(TransitionCutTest, MissingSceneCutsAtTheMiddle)
{
    for (const char16_t* scene : {u"", u"Transitions\\Nowhere.afx"}) {
        TransitionRig rig(scene);
        ASSERT_EQ(rig.setup(), S_OK);
        EXPECT_EQ(rig.transform().Client(), nullptr);
        EXPECT_EQ(rig.frameAt(0.0f), rig.first());
        EXPECT_EQ(rig.frameAt(0.5f), rig.first());
        EXPECT_EQ(rig.frameAt(0.5001f), rig.second());
        EXPECT_EQ(rig.frameAt(1.0f), rig.second());
    }
}

TEST(TransitionCutTest, PropertiesStoreAndReturnTheirValues)
{
    const auto transform = CQX3DTransform::Create();
    LONG quality = -1;
    float aspect = -1.0f;
    Bstr source;
    ASSERT_EQ(transform->get_Quality(&quality), S_OK);
    ASSERT_EQ(transform->get_AspectRatio(&aspect), S_OK);
    ASSERT_EQ(transform->get_Source(source.out()), S_OK);
    EXPECT_EQ(quality, 0);
    EXPECT_EQ(aspect, 0.0f);
    EXPECT_EQ(source.view(), u"");

    transform->put_Quality(-7);
    transform->put_AspectRatio(1.5f);
    ASSERT_EQ(transform->get_Quality(&quality), S_OK);
    ASSERT_EQ(transform->get_AspectRatio(&aspect), S_OK);
    EXPECT_EQ(quality, -7);
    EXPECT_EQ(aspect, 1.5f);

    // The field holds 259 characters and its terminator.
    const Bstr longName(std::u16string(300, u'x'));
    ASSERT_EQ(transform->put_Source(longName.get()), S_OK);
    ASSERT_EQ(transform->get_Source(source.out()), S_OK);
    EXPECT_EQ(source.view(), std::u16string(259, u'x'));
    ASSERT_EQ(transform->put_Source(nullptr), S_OK);
    ASSERT_EQ(transform->get_Source(source.out()), S_OK);
    EXPECT_EQ(source.view(), u"");

    EXPECT_EQ(transform->get_Quality(nullptr), E_POINTER);
    EXPECT_EQ(transform->get_Source(nullptr), E_POINTER);
    EXPECT_EQ(transform->get_AspectRatio(nullptr), E_POINTER);
    void* dual = nullptr;
    ASSERT_EQ(transform->QueryInterface(IQX3DTransform::iid, &dual), S_OK);
    static_cast<IUnknown*>(dual)->Release();
}

// A second input smaller than the first cannot be locked over the first's bounds: that
// status comes back and the output is left alone. One input is refused at set-up.
TEST(TransitionCutTest, InputsItCannotUseGiveTheirStatus)
{
    TransitionRig rig(u"", kWidth / 2, kHeight);
    ASSERT_EQ(rig.setup(), S_OK);
    rig.markOutput();
    EXPECT_EQ(rig.execute(0.2f), E_INVALIDARG);
    EXPECT_EQ(rig.output(), std::vector<uint32_t>(size_t(kWidth * kHeight), 0xFF123456u));

    const auto transform = CQX3DTransform::Create();
    const std::shared_ptr<transform::DXSurface> one[] = {transform::DXSurface::create(8, 8)};
    EXPECT_EQ(transform->Setup(one, transform::DXSurface::create(8, 8), 0), E_INVALIDARG);
    EXPECT_EQ(transform->Execute(nullptr, nullptr, nullptr), DXTERR_UNINITIALIZED);
}

// Every sample, transparent ones included, comes out as it went in, over the part asked.
TEST(OverlayTest, PassesItsInputThrough)
{
    const auto overlay = CQXOverlay::Create();
    auto input = transform::DXSurface::create(16, 8);
    auto output = transform::DXSurface::create(16, 8);
    std::vector<uint32_t> samples(16 * 8);
    for (size_t i = 0; i < samples.size(); ++i) samples[i] = uint32_t(i * 0x01030507u);
    writeSurface(*input, samples);
    const std::shared_ptr<transform::DXSurface> inputs[] = {input};
    ASSERT_EQ(overlay->Setup(inputs, output, 0), S_OK);
    EXPECT_EQ(overlay->Width(), 16);
    EXPECT_EQ(overlay->Height(), 8);
    ASSERT_EQ(overlay->Execute(nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(readSurface(*output), samples);

    const std::shared_ptr<transform::DXSurface> two[] = {input, input};
    EXPECT_EQ(overlay->Setup(two, output, 0), E_INVALIDARG);
}

}  // namespace
}  // namespace qx::test
