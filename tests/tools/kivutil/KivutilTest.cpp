// kivutil settings and history, run as a user runs them: exit status and output.
#include <gtest/gtest.h>

#include <algorithm>
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

TEST(KivutilArguments, WhatTheParserRefusesIsOneLineNamingWhatIsAccepted) {
    const struct {
        const char* args;
        const char* says;
    } cases[] = {
        // The same list, in the same order, from every build.
        {"bogus", "kivutil: no command \"bogus\" in kivutil; the commands are length, angle, area, volume, calc, "
                  "settings, history, paths, vector, crc16, render, laser, beacons, bt, timer, dialog\n"},
        {"vector frob", "kivutil: no command \"frob\" in kivutil vector; the commands are sample, info,"},
        {"length 1 --decimals abc", "--decimals = abc; \"kivutil length --help\" says what is accepted"},
        {"vector info --frob", "--frob; \"kivutil vector info --help\" says what is accepted"},
        {"", "\"kivutil --help\" says what is accepted"},
    };
    for (const auto& c : cases) {
        const ToolRun run = Kivutil(c.args);
        EXPECT_EQ(run.status, 2) << c.args;
        EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 1) << run.out;
        EXPECT_NE(run.out.find(c.says), std::string::npos) << run.out;
    }
    const ToolRun help = Kivutil("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("\nUsage: kivutil [OPTIONS] SUBCOMMAND\n"), std::string::npos)
        << "the usage names the tool, not the path it was started by: " << help.out;
}

TEST(KivutilArguments, AWordBeginningWithASlashIsAPathOnEveryHost) {
    // Windows programs often take "/x" as an option; kivutil's options are "-x" and
    // "--name" alone, so a rooted path reaches the command whatever the host.
    const ToolRun run = Kivutil("vector info /no-such-folder/x.vec");
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_EQ(run.out, "kivutil: cannot load /no-such-folder/x.vec: the file does not exist or cannot be opened\n");
}
