// qxfx edit in the test's process, where the dialog can be answered: the text printed on
// OK, nothing on cancel, and the text unchanged for an effect without a dialog.
#include "apps/qxfx/EditCommand.h"
#include "tests/effects/dialogs/DialogTestSupport.h"

#include <QSpinBox>

#include <gtest/gtest.h>

namespace qx::test {
namespace {

struct EditRun {
    int exitCode;
    std::string printed;
};

EditRun Edit(std::vector<std::string_view> args)
{
    TestApplication();
    testing::internal::CaptureStdout();
    const int code = qxfx::runEdit(args);
    return {code, testing::internal::GetCapturedStdout()};
}

TEST(EditCommand, PrintsTheDialogsTextOnOk)
{
    AnswerNextDialog("OK", [](QWidget& dialog) { dialog.findChild<QSpinBox*>("edit235")->setValue(12); });
    // A short text grows to every value the dialog edits: the missing values are zeros,
    // and like the 500 they are clamped into their controls (the posterisation's 0 to 2).
    const EditRun run = Edit({"-e", "9", "-p", "500;", "--size", "64x48"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.printed, "100;12;0;0;0;0;2;0;0;\n");
}

TEST(EditCommand, StartsFromTheDefaultsAndPrintsNothingOnCancel)
{
    AnswerNextDialog("OK");
    EXPECT_EQ(Edit({"-e", "0", "--size", "64x48"}).printed, "100;100;900;900;\n");
    AnswerNextDialog("Annuler");
    const EditRun cancelled = Edit({"-e", "2001"});
    EXPECT_EQ(cancelled.exitCode, 1);
    EXPECT_EQ(cancelled.printed, "");
}

TEST(EditCommand, EffectsWithoutADialogKeepTheirText)
{
    EXPECT_EQ(Edit({"-e", "12", "-p", "4;3;12;0;"}).printed, "4;3;12;0;\n");
    EXPECT_EQ(Edit({"-e", "16"}).exitCode, 1);  // no such id
}

}  // namespace
}  // namespace qx::test
