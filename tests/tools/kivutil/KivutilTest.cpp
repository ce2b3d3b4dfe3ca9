// kivutil settings and history, run as a user runs them: exit status and output.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/TestSupport.h"
#include "tests/tools/kivutil/RunKivutil.h"

using kivutil_test::Kivutil;
using kivutil_test::ToolRun;

TEST(KivutilSettings, AnEmptyTextIsWrittenAndSaidToBeStoredAsNull) {
    kiv_test::TempDeviceRoot root;
    const std::string file = "'" + root.path() + "/settings.xml'";
    const ToolRun set = Kivutil("settings set " + file + " Job/Code --string ''");
    EXPECT_EQ(set.status, 0) << set.out;
    EXPECT_NE(set.out.find("empty text, stored as null"), std::string::npos) << set.out;
    const ToolRun get = Kivutil("settings get " + file + " Job/Code");
    EXPECT_EQ(get.status, 0) << get.out;
    EXPECT_EQ(get.out, " (str)\n");

    // Still exactly one kind: an empty text next to a number is refused as before.
    const ToolRun both = Kivutil("settings set " + file + " Job/Code --string '' --int 3");
    EXPECT_EQ(both.status, 2);
    EXPECT_EQ(both.out, "kivutil: give exactly one of --int, --double, --bool, --string\n");
}

TEST(KivutilHistory, AnExistingFileThatIsNoHistoryIsLeftAlone) {
    kiv_test::TempDeviceRoot root;
    const std::string host = root.path() + "/notes.xml";
    for (const std::string content : {"", "hello"}) {
        kiv_test::WriteFileBytes(host, content);
        const ToolRun run = Kivutil("history append '" + host + "' Point P1");
        EXPECT_EQ(run.status, 2) << run.out;
        EXPECT_EQ(kiv_test::ReadFileBytes(host), content);
    }
}
