// kivutil settings, run as a user runs it: the binary, its exit status and its output.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/support/TestSupport.h"

namespace {

struct ToolRun {
    int status = -1;
    std::string out;
};

// Runs kivutil with `args` (already quoted for the shell); stderr joins stdout.
ToolRun Kivutil(const std::string& args) {
    ToolRun run;
    FILE* pipe = ::popen((std::string(KIVUTIL_EXE) + " " + args + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return run;
    char buffer[256];
    while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) run.out += buffer;
    const int status = ::pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

}  // namespace

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
