// kivutil dialog and calc --dialog as a user runs them: typing into the sample, the
// handlers reported, bad key names, and the pictures written.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/TestSupport.h"
#include "tests/tools/kivutil/RunKivutil.h"

using kivutil_test::Kivutil;
using kivutil_test::ToolRun;

TEST(KivutilDialog, TypingEditsTheFieldsAsAPersonExpects) {
    // The name field opens focused and selected: typing replaces it, Backspace takes the
    // last character, Tab goes to the next field and selects it too.
    const ToolRun run = Kivutil("dialog keys 'Pt 7x{BACK}{TAB}wall{F2}{DOWN}'");
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("Point name: \"Pt 7\""), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Code: \"wall\""), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("fired: FunctionKeyF2 ArrowDownKey ArrowDownKey_Keyup"), std::string::npos) << run.out;

    const ToolRun enter = Kivutil("dialog keys '{ENTER}'");
    EXPECT_NE(enter.out.find("fired: EnterKey OnOK"), std::string::npos) << enter.out;
    EXPECT_NE(enter.out.find("dialog ended"), std::string::npos) << enter.out;
}

TEST(KivutilDialog, BadKeyNamesAreRefusedWithWhatIsAccepted) {
    const ToolRun run = Kivutil("dialog keys 'ab{NOPE}'");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out.rfind("kivutil: unknown key {NOPE}; accepted: {ALPHA}", 0), 0u) << run.out;
    EXPECT_EQ(Kivutil("dialog keys 'ab{TAB'").status, 2);
}

TEST(KivutilDialog, DemoAndCalculatorWritePictures) {
    kiv_test::TempDeviceRoot root;
    const std::string dialog = root.path() + "/dialog.png", calc = root.path() + "/calc.png";
    const ToolRun demo = Kivutil("dialog demo -o '" + dialog + "'");
    EXPECT_EQ(demo.status, 0) << demo.out;
    EXPECT_EQ(kiv_test::ReadFileBytes(dialog).substr(1, 3), "PNG");
    const ToolRun run = Kivutil("calc --dialog -o '" + calc + "' '12.5*4'");
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(run.out.substr(0, 3), "50\n");
    EXPECT_EQ(kiv_test::ReadFileBytes(calc).substr(1, 3), "PNG");
    EXPECT_EQ(Kivutil("calc --dialog -o '" + calc + "' '12.5*'").status, 2);
}
