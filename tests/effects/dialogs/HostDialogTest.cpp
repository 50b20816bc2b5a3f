// ShowPropertiesDialog of the effect host, which loads the dialogs' library from the
// build: its codes, the list and count it writes on OK and keeps on "Annuler", and the 3D
// move's previews rendered by the scene.
#include "host/DynamicEffect.h"
#include "platform/com/Bstr.h"
#include "platform/imaging/BitmapHandle.h"
#include "tests/effects/dialogs/DialogTestSupport.h"
#include "wrap3d/Context.h"

#include <QWidget>

#include <gtest/gtest.h>

namespace qx::test {
namespace {

class HostDialogTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { TestApplication(); }

    void SetUp() override
    {
        const std::vector<uint32_t> samples = QuadrantPicture(320, 240);
        imaging::DibHeader header;
        header.width = 320;
        header.height = -240;  // top-down, as the samples are
        picture.loadDib(header, std::span(reinterpret_cast<const uint8_t*>(samples.data()), samples.size() * 4));
        ASSERT_FALSE(picture.isNull());
    }

    HRESULT show(LONG index) { return host->ShowPropertiesDialog(index, values.data(), &count, &picture); }

    com::ComPtr<CQXDynamicEffect> host = CQXDynamicEffect::Create();
    imaging::BitmapHandle picture;
    std::array<LONG, kMaxParams> values{};
    LONG count = 0;
};

TEST_F(HostDialogTest, APictureIsNeededForEveryEffectAndAnIndexInTheTable)
{
    for (LONG index = 0; index < 25; ++index)
        EXPECT_EQ(host->ShowPropertiesDialog(index, values.data(), &count, nullptr), E_INVALIDARG) << index;
    EXPECT_EQ(show(25), E_INVALIDARG);
    EXPECT_EQ(show(-1), E_INVALIDARG);
}

TEST_F(HostDialogTest, EffectsWithoutADialogAnswerAtOnce)
{
    values = List("7;8;");
    count = 2;
    EXPECT_EQ(show(11), S_OK);  // id 10, the spectrum
    EXPECT_EQ(Text(values, 3), "7;8;0;");
    EXPECT_EQ(count, 2);
    EXPECT_EQ(host->ShowPropertiesDialog(17, nullptr, nullptr, &picture), S_OK);
    // A dialog needs somewhere to write.
    EXPECT_EQ(host->ShowPropertiesDialog(9, nullptr, &count, &picture), E_POINTER);
}

TEST_F(HostDialogTest, CancelKeepsTheListAndTheCount)
{
    values = List("20;5;10;30;30;50;20;0;2;");
    count = 9;
    AnswerNextDialog("Annuler", [](QWidget& dialog) {
        // A change that cancel must drop.
        for (auto* child : dialog.findChildren<QWidget*>())
            if (child->objectName() == "edit233") child->setProperty("value", 99);
    });
    EXPECT_EQ(show(9), S_FALSE);
    EXPECT_EQ(Text(values, 10), "20;5;10;30;30;50;20;0;2;0;");
    EXPECT_EQ(count, 9);
}

TEST_F(HostDialogTest, OkWritesTheValuesAndTheRectangleDialogsTheirCount)
{
    values = List("-100;1200;900;50;");
    count = 0;
    AnswerNextDialog("OK");
    EXPECT_EQ(show(0), S_OK);
    EXPECT_EQ(Text(values, 4), "0;50;900;1000;");
    EXPECT_EQ(count, 4);

    values = List("0;0;500;500;500;500;1000;1000;");
    count = 3;
    AnswerNextDialog("OK");
    EXPECT_EQ(show(6), S_OK);
    EXPECT_EQ(count, 8);

    // The others leave the count to the caller.
    values = List("255;");
    count = 5;
    AnswerNextDialog("OK");
    EXPECT_EQ(show(7), S_OK);
    EXPECT_EQ(Text(values, 1), "255;");
    EXPECT_EQ(count, 5);
}

TEST_F(HostDialogTest, TheMoveInDepthPreviewsWithTheScene)
{
    if (!IsContextReady()) {
        Bstr dataPath(std::u16string(u"" QX_DATA_DIR));
        host->SetGlobalDataPath(dataPath.get());
    }
    if (!IsContextReady()) GTEST_SKIP() << "the scene context can't start here (no EGL device)";
    LONG index = 0;
    ASSERT_EQ(host->GetIndexFromID(5002, &index), S_OK);
    ASSERT_EQ(host->GetEffectDefaults(index, values.data(), &count), S_OK);
    ASSERT_EQ(count, 12);
    bool rendered = false;
    AnswerNextDialog("OK", [&rendered](QWidget& dialog) {
        SaveScreenshot(dialog, "207-3d-rotation");
        // The picture starts far away: its red corner no longer fills the preview's corner.
        const QImage start = dialog.findChild<QWidget*>("preview254")->grab().toImage();
        rendered = start.pixelColor(2, 2) != QColor(0xE0, 0x20, 0x20);
    });
    EXPECT_EQ(show(index), S_OK);
    EXPECT_TRUE(rendered);
    EXPECT_EQ(count, 12);
}

}  // namespace
}  // namespace qx::test
