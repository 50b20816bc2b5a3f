// Each property dialog as a user works it: the list fills the controls (clamped into
// their ranges), the controls give the list back on OK, and a screenshot of each dialog
// is kept under the build's screenshots folder.
#include "effects/dialogs/3DRotationDialog.h"
#include "effects/dialogs/DialogFactory.h"
#include "effects/dialogs/PreviewArea.h"
#include "host/EffectCatalog.h"
#include "tests/effects/dialogs/DialogTestSupport.h"

#include <QCheckBox>
#include <QLabel>
#include <QSlider>
#include <QSpinBox>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace qx::test {
namespace {

using dialogs::PropertiesDialog;

class DialogTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { TestApplication(); }

    /// The dialog of effect `id` as the host makes it, over the quadrant picture.
    std::unique_ptr<PropertiesDialog> open(LONG id, const std::string& text,
                                           dialogs::PreviewRenderer* preview = nullptr)
    {
        values = List(text);
        dialogs::DialogRequest request;
        request.effectId = id;
        request.table = findEffect(id)->params;
        request.params = values.data();
        request.paramCount = &count;
        request.picture = {picture.data(), 320, 240};
        request.preview = preview;
        auto dialog = dialogs::makeDialog(request);
        if (dialog) dialog->show();
        return dialog;
    }

    template <typename Control>
    static Control* find(const PropertiesDialog& dialog, const QString& name)
    {
        auto* control = dialog.findChild<Control*>(name);
        EXPECT_NE(control, nullptr) << name.toStdString();
        return control;
    }

    static void type(QSpinBox* box, const QString& text)
    {
        box->selectAll();
        QTest::keyClicks(box, text);
    }

    std::vector<uint32_t> picture = QuadrantPicture(320, 240);
    std::array<LONG, kMaxParams> values{};
    LONG count = 0;
};

TEST_F(DialogTest, DeplacementShowsTheRegionAndTakesADrag)
{
    const auto dialog = open(2, "250;250;750;750;");
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->windowTitle(), "Propriétés du déplacement");
    EXPECT_EQ(find<QLabel>(*dialog, "readout0")->text(), "250");
    EXPECT_EQ(find<QLabel>(*dialog, "readout3")->text(), "750");
    SaveScreenshot(*dialog, "201-deplacement");

    // From right to left: the list still starts with the smaller coordinates.
    auto* area = find<QWidget>(*dialog, "picture201");
    QTest::mousePress(area, Qt::LeftButton, {}, QPoint(201, 133));
    QTest::mouseMove(area, QPoint(37, 51));
    QTest::mouseRelease(area, Qt::LeftButton, {}, QPoint(37, 51));
    EXPECT_EQ(Stored(*dialog, 4), "120;210;630;560;");
    EXPECT_EQ(find<QLabel>(*dialog, "readout1")->text(), "210");
    EXPECT_EQ(dialog->storedCount(), 4);

    // Keeping the proportions fits the rectangle to the frame's shape at once: as wide as
    // high in thousandths of the frame.
    find<QCheckBox>(*dialog, "check203")->click();
    EXPECT_EQ(Stored(*dialog, 4), "110;40;630;560;");
}

TEST_F(DialogTest, DeplacementCutsSidesOutsideThePicture)
{
    const auto dialog = open(0, "-100;1200;900;50;");
    ASSERT_TRUE(dialog);
    // Cut to 0..1000, then top and bottom change places.
    EXPECT_EQ(Stored(*dialog, 4), "0;50;900;1000;");
}

TEST_F(DialogTest, FreeMoveBoxesAndRectanglesFollowEachOther)
{
    const auto dialog = open(6, "0;0;500;500;500;500;1000;1000;");
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->windowTitle(), "Propriétés du déplacement libre");
    EXPECT_EQ(find<QSpinBox>(*dialog, "edit227")->value(), 50);
    EXPECT_EQ(find<QSpinBox>(*dialog, "edit237")->value(), 100);
    SaveScreenshot(*dialog, "202-free-move");

    type(find<QSpinBox>(*dialog, "edit227"), "75");  // the source's right side, in percent
    auto* destination = find<QWidget>(*dialog, "picture214");
    QTest::mousePress(destination, Qt::LeftButton, {}, QPoint(160, 120));
    QTest::mouseMove(destination, QPoint(1, 1));  // (0, 0) would mean the centre to QTest
    QTest::mouseRelease(destination, Qt::LeftButton, {}, QPoint(1, 1));
    EXPECT_EQ(find<QSpinBox>(*dialog, "edit235")->value(), 50);
    EXPECT_EQ(Stored(*dialog, 8), "0;0;750;500;0;0;500;500;");
    EXPECT_EQ(dialog->storedCount(), 8);
}

TEST_F(DialogTest, FadeGivesItsColourBackUnchanged)
{
    for (const std::string text : {"4227327;", "-1;", "0;"}) {
        const auto dialog = open(7, text);
        ASSERT_TRUE(dialog);
        EXPECT_EQ(Stored(*dialog, 1), text);
        EXPECT_FALSE(dialog->storedCount());
    }
    // 4227199 is 0x40807F: red 0x7F in the lowest byte, then green 0x80, then blue 0x40.
    const auto dialog = open(8, "4227199;");
    EXPECT_EQ(dialog->windowTitle(), "Fondu");
    EXPECT_TRUE(find<QWidget>(*dialog, "button246")->styleSheet().contains("#7f8040"));
    SaveScreenshot(*dialog, "210-fade");
}

TEST_F(DialogTest, OldMovieMapsNineValuesAndClampsThem)
{
    auto dialog = open(9, "20;5;10;30;30;50;20;0;2;");
    ASSERT_TRUE(dialog);
    EXPECT_EQ(find<QSpinBox>(*dialog, "edit235")->value(), 5);
    EXPECT_EQ(find<QSpinBox>(*dialog, "edit243")->value(), 50);
    EXPECT_EQ(find<QSlider>(*dialog, "slider245")->value(), 20);
    SaveScreenshot(*dialog, "209-old-movie");
    type(find<QSpinBox>(*dialog, "edit235"), "12");
    QTest::keyClick(find<QSlider>(*dialog, "slider247"), Qt::Key_End);
    QTest::keyClick(find<QSlider>(*dialog, "slider246"), Qt::Key_Right);
    EXPECT_EQ(Stored(*dialog, 9), "20;12;10;30;30;50;20;1;20;");

    dialog = open(9, "500;0;99;-1;101;50;1;200;21;");
    EXPECT_EQ(Stored(*dialog, 9), "100;1;50;0;100;50;2;100;20;");
}

TEST_F(DialogTest, RippleSliderHoldsTheDrops)
{
    auto dialog = open(2001, "3;");
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->windowTitle(), "Gouttes d'eau");
    EXPECT_EQ(find<QSlider>(*dialog, "slider232")->value(), 3);
    SaveScreenshot(*dialog, "208-ripple");
    QTest::keyClick(find<QSlider>(*dialog, "slider232"), Qt::Key_End);
    EXPECT_EQ(Stored(*dialog, 1), "10;");
    dialog = open(2001, "0;");
    EXPECT_EQ(Stored(*dialog, 1), "1;");
}

TEST_F(DialogTest, CubeRowsAreAxesAndColumnsStartAndEnd)
{
    auto dialog = open(5000, "0;360;0;360;0;360;10;");
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->windowTitle(), "Propriétés de la rotation");
    SaveScreenshot(*dialog, "211-cube");
    type(find<QSpinBox>(*dialog, "edit235"), "-90");  // Y at the start
    type(find<QSpinBox>(*dialog, "edit241"), "720");  // Z at the end
    QTest::keyClick(find<QSlider>(*dialog, "slider231"), Qt::Key_Home);
    EXPECT_EQ(Stored(*dialog, 7), "0;360;-90;360;0;720;0;");

    dialog = open(5000, "-5000;5000;0;0;0;0;99;");
    EXPECT_EQ(Stored(*dialog, 7), "-3600;3600;0;0;0;0;40;");
}

// Stands for the scene: paints the frame with the progress in its red channel, and keeps
// what it was asked.
class RecordingPreview final : public dialogs::PreviewRenderer {
public:
    bool render(std::span<const LONG> values, float progress, std::span<uint32_t> frame) override
    {
        calls.push_back({std::vector<LONG>(values.begin(), values.end()), progress});
        std::fill(frame.begin(), frame.end(), progress == 0.0f ? 0xFF000000u : 0xFFFF0000u);
        return true;
    }
    struct Call {
        std::vector<LONG> values;
        float progress;
    };
    std::vector<Call> calls;
};

TEST_F(DialogTest, RotationPreviewsFollowTheirOwnColumn)
{
    RecordingPreview preview;
    const auto dialog = open(5002, "0;0;0;360;0;0;0;0;0;0;-400;-200;", &preview);
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->windowTitle(), "Propriétés du déplacement 3D");
    EXPECT_EQ(find<QSpinBox>(*dialog, "edit237")->value(), 360);
    EXPECT_EQ(find<QSlider>(*dialog, "slider250")->value(), -400);
    EXPECT_EQ(find<QSlider>(*dialog, "slider253")->value(), -200);
    ASSERT_EQ(preview.calls.size(), 2u);
    EXPECT_EQ(preview.calls[0].progress, 0.0f);
    EXPECT_EQ(preview.calls[1].progress, 1.0f);
    EXPECT_EQ(preview.calls[0].values.size(), 12u);
    const auto& end = static_cast<const dialogs::C3DRotationDialog&>(*dialog);
    EXPECT_EQ(end.preview(1).image().pixel(5, 5), 0xFFFF0000u);

    // The end's horizontal position redraws the end only; a start rotation the start only.
    QTest::keyClick(find<QSlider>(*dialog, "slider251"), Qt::Key_End);
    ASSERT_EQ(preview.calls.size(), 3u);
    EXPECT_EQ(preview.calls[2].progress, 1.0f);
    EXPECT_EQ(preview.calls[2].values[7], 1000);
    type(find<QSpinBox>(*dialog, "edit227"), "45");
    EXPECT_EQ(preview.calls.back().progress, 0.0f);
    EXPECT_EQ(Stored(*dialog, 12), "45;0;0;360;0;0;0;1000;0;0;-400;-200;");
}

TEST_F(DialogTest, RotationWithoutASceneShowsThePicture)
{
    const auto dialog = open(5002, "0;0;0;360;0;0;0;0;0;0;-400;-200;");
    ASSERT_TRUE(dialog);
    const auto& rotation = static_cast<const dialogs::C3DRotationDialog&>(*dialog);
    EXPECT_EQ(rotation.preview(0).image().pixel(10, 10), 0xFFE02020u);  // the red quadrant
    SaveScreenshot(*dialog, "207-3d-rotation-plain");
}

TEST_F(DialogTest, OnlyTheSevenDialogsExist)
{
    for (const LONG id : {10, 11, 12, 13, 14, 15, 2000, 5003, 5004, 5005, 10000, 15000}) {
        values = {};
        EXPECT_FALSE(open(id, "")) << id;
    }
}

TEST(PreviewFit, WidthFirstThenHeight)
{
    // A wide picture fills the width; a tall one fills the height.
    EXPECT_EQ(dialogs::PreviewArea::fit({0, 0, 240, 180}, {320, 120}).size(), QSize(240, 90));
    EXPECT_EQ(dialogs::PreviewArea::fit({0, 0, 240, 180}, {100, 200}).size(), QSize(90, 180));
}

}  // namespace
}  // namespace qx::test
