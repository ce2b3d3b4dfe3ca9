// The laser line protocol, the height offsets and the transmitter data file, read and
// written through real files under a temporary device root.
#include "utils/devices/LumaroParams.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"
#include "utils/settings/AppStrPaths.h"

using namespace LumaroParams;

namespace {

std::string Frame(const char* cmd, bool sensor = false) {
    std::vector<char> out(std::strlen(cmd) + 13);
    return sensor ? MakeSensorCommand(cmd, out.data()) : MakeTransmitterCommand(cmd, out.data());
}

// A reply as the transmitter sends it: the frame of its text, type letter first.
std::string Reply(const char* text, bool sensor = false) { return Frame(text, sensor); }

}  // namespace

TEST(LaserFrame, CarriesPrefixChecksumOfTheCommandOnlyAndCrLf) {
    EXPECT_EQ(Frame(""), std::string("%NSP>T%@01\r\n"));
    // By hand: 0x41; rotate to 0x05, XOR '@' gives 0x45; the last rotation gives 0x15.
    EXPECT_EQ(Frame("A"), std::string("%NSP>T%A@15\r\n"));
    EXPECT_EQ(Frame("A", true), std::string("%NSP>R%A@15\r\n"));
}

TEST(LaserFrame, GrowsWithLongCommandsAndMayFrameInPlace) {
    const std::string cmd(5000, 'x');
    const std::string framed = Frame(cmd.c_str());
    ASSERT_EQ(framed.size(), cmd.size() + 12);
    EXPECT_EQ(framed.substr(7, cmd.size()), cmd);
    std::vector<char> buffer(64);
    std::strcpy(buffer.data(), "P,1,2,abc");
    MakeTransmitterCommand(buffer.data(), buffer.data());
    EXPECT_EQ(std::string(buffer.data()), Frame("P,1,2,abc"));
}

TEST(LaserReply, FramedDataReadsBackWithChannelSlotAndPayload) {
    for (const char* type : {"Z", "P", "J"}) {
        std::string reply = Reply((std::string(type) + ",4,1,CAL 0.25 -1.5").c_str());
        int channel = -9, slot = -9;
        std::vector<char> data(reply.size() + 1);
        EXPECT_EQ(ParseTransmitterData(reply.data(), &channel, &slot, data.data()), ParseOk) << type;
        EXPECT_EQ(channel, 3);
        EXPECT_EQ(slot, 0);
        EXPECT_STREQ(data.data(), "CAL 0.25 -1.5");  // the checksum and line end are cut off
    }
}

TEST(LaserReply, ErrorsComeInTheirOrder) {
    int channel = -9, slot = -9;
    char data[64];
    // "ER" wins even over a valid reply behind it.
    std::string reply = "ER" + Reply("Z,1,1,x");
    EXPECT_EQ(ParseTransmitterData(reply.data(), &channel, &slot, data), ParseDeviceError);
    char noPrefix[] = "%NSP>R%Z,1,1,x";
    EXPECT_EQ(ParseTransmitterData(noPrefix, &channel, &slot, data), ParseBadFormat);
    char tilt[] = "junk%NSP>T%eX,Y Tilt Offset Over";
    EXPECT_EQ(ParseTransmitterData(tilt, &channel, &slot, data), ParseTiltOffsetOver);
    char wrongType[] = "%NSP>T%Q,1,1,x";
    EXPECT_EQ(ParseTransmitterData(wrongType, &channel, &slot, data), ParseBadFormat);
    // Without the out-arguments the reply is only checked.
    std::string ok = Reply("J,9,9,x");
    EXPECT_EQ(ParseTransmitterData(ok.data(), nullptr, &slot, data), ParseOk);
}

TEST(LaserReply, ChannelDigitsOutOfRangeAreStoredThenRefused) {
    int channel = -9, slot = -9;
    char data[64];
    std::string zero = Reply("Z,0,1,x");
    EXPECT_EQ(ParseTransmitterData(zero.data(), &channel, &slot, data), ParseBadFormat);
    EXPECT_EQ(channel, -1);
    std::string five = Reply("Z,5,1,x");
    EXPECT_EQ(ParseTransmitterData(five.data(), &channel, &slot, data), ParseBadFormat);
    EXPECT_EQ(channel, 4);
    std::string badSlot = Reply("Z,2,5,x");
    EXPECT_EQ(ParseTransmitterData(badSlot.data(), &channel, &slot, data), ParseBadFormat);
    EXPECT_EQ(slot, 4);
    // A reply that ends inside the header reads no further than its end.
    char cut[] = "%NSP>T%Z,1";
    EXPECT_EQ(ParseTransmitterData(cut, &channel, &slot, data), ParseBadFormat);
    EXPECT_EQ(channel, 0);
}

TEST(LaserReply, LowercaseOrShortChecksumIsRefusedAndItsAtStaysCut) {
    std::string reply;
    size_t at = 0;
    for (char c = 'a'; c <= 'z'; ++c) {  // a payload whose checksum has a letter digit
        reply = Reply((std::string("Z,1,1,") + c).c_str());
        at = reply.find('@');
        if (std::isalpha(static_cast<unsigned char>(reply[at + 1])) || std::isalpha(static_cast<unsigned char>(reply[at + 2])))
            break;
    }
    reply[at + 1] = static_cast<char>(std::tolower(static_cast<unsigned char>(reply[at + 1])));
    reply[at + 2] = static_cast<char>(std::tolower(static_cast<unsigned char>(reply[at + 2])));
    int channel, slot;
    char data[64];
    EXPECT_EQ(ParseTransmitterData(reply.data(), &channel, &slot, data), ParseChecksumError);
    EXPECT_EQ(reply[at], '\0');
    char shortSum[] = "%NSP>T%Z,1,1,x@";
    EXPECT_EQ(ParseTransmitterData(shortSum, &channel, &slot, data), ParseChecksumError);
}

TEST(LaserReply, VersionsAndSensorData) {
    CKivStringT version = L"stale";
    std::string reply = Reply("P,V2.31,build 7");
    EXPECT_EQ(ParseTransmitterVersion(reply.data(), version), ParseOk);
    EXPECT_EQ(version, L"V2.31");
    std::string sensor = Reply("P,S1.05", true);
    EXPECT_EQ(ParseSensorVersion(sensor.data(), version), ParseOk);
    EXPECT_EQ(version, L"S1.05");
    std::string notP = Reply("Z,V2.31");
    EXPECT_EQ(ParseTransmitterVersion(notP.data(), version), ParseBadFormat);
    EXPECT_TRUE(version.IsEmpty());
    char tilt[] = "%NSP>R%eY Tilt Offset Over";
    EXPECT_EQ(ParseSensorVersion(tilt, version), ParseTiltOffsetOver);

    char bare[] = "%NSP>R%X";
    EXPECT_EQ(ParseSensorData(bare), ParseOk);
    std::string any = Reply("anything at all", true);
    EXPECT_EQ(ParseSensorData(any.data()), ParseOk);
    std::string flipped = Reply("anything at all", true);
    flipped[flipped.find('@') + 1] ^= 1;
    EXPECT_EQ(ParseSensorData(flipped.data()), ParseChecksumError);
    char transmitter[] = "%NSP>T%X";
    EXPECT_EQ(ParseSensorData(transmitter), ParseBadFormat);
}

TEST(LaserHeights, OffsetsOfSensorTransmitterMarkAndBase) {
    EXPECT_DOUBLE_EQ(ComputeSensorLenseHeight(1.0), 0.93);
    EXPECT_DOUBLE_EQ(ComputeTransmitterLaserHeight(1.0, true), 1.223);
    EXPECT_DOUBLE_EQ(ComputeTransmitterMarkHeight(1.0), 0.85);
    EXPECT_DOUBLE_EQ(ComputeTransmitterBaseHeight(1.0), 0.777);
    // A slant height is the hypotenuse over the instrument's radius of 0.083.
    const double slant = std::hypot(0.5, 0.083);
    EXPECT_NEAR(ComputeTransmitterLaserHeight(slant, false), 0.65, 1e-12);
    EXPECT_NEAR(ComputeTransmitterLaserHeight(-slant, false), -0.35, 1e-12);
}

TEST(LaserStartParams, OnlyTheFirstTransmitterIsSpelledAndOddChannelsAreAuto) {
    const bool firstOff[4] = {false, true, true, true};
    EXPECT_EQ(StartParams::GetTransListAsString(firstOff), L"off");
    EXPECT_EQ(StartParams::GetTransChannelAsString(eChannel4), L"4");
    EXPECT_EQ(StartParams::GetTransChannelAsString(static_cast<ETransmitterChannel>(-1)), L"auto");
    EXPECT_EQ(StartParams::GetSensorPortAsChar(kiv_df::eCommNone), 'd');
}

// ---- the data file ------------------------------------------------------------------------

namespace {

class TransmitterFile : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;
    std::string folder;

    void SetUp() override {
        folder = root.HostPath(AppStrPaths::GetSessionSettingsPath().str());
        std::filesystem::create_directories(folder);
    }
    void WriteData(const std::string& name, const std::string& version, const std::string& height) {
        std::string text = "[VERSION]\r\nversion=" + version + "\r\n[CHANNEL2]\r\nSN=T-0042\r\n";
        for (int b = 1; b <= 4; ++b) text += "DataBlock" + std::to_string(b) + "=block" + std::to_string(b) + "\r\n";
        text += "TransHeight=" + height + "\r\nTransName=North\r\nKnownName=BM7\r\nKnownOffset=0.25\r\n";
        kiv_test::WriteFileBytes(folder + "/" + name, text);
    }
    // Every field of every channel set to something a load must replace.
    static TransInfo Dirty() {
        TransInfo info;
        for (int i = 0; i < 4; ++i) {
            info.data[i].valid = true;
            info.data[i].serialNumber = L"old";
            info.data[i].channel = 3;
            info.pos[i].transmitterName = L"old";
            info.pos[i].transmitterHeight = 9.0;
            info.pos[i].vertical = false;
            info.pos[i].heightSet = true;
        }
        return info;
    }
};

}  // namespace

TEST_F(TransmitterFile, HeightsByVersionAndUnitLetter) {
    struct Case {
        const char* version;
        const char* height;
        double expected;
        bool vertical;
    } cases[] = {
        {"0.50", "1.500000V", 1.427, true},  // version 0.5 stored the height to the base
        {"1.00", "1.500000V", 1.5, true},
        {"0.50", "1.500000S", 1.5, false},
        {"1.00", "1.500000S", 1.5, false},
    };
    for (const Case& c : cases) {
        WriteData("LumaroData.ini", c.version, c.height);
        TransInfo info = Dirty();
        ASSERT_TRUE(LoadTransmitterInfo(info)) << c.version << " " << c.height;
        EXPECT_NEAR(info.pos[1].transmitterHeight, c.expected, 1e-12) << c.version << " " << c.height;
        EXPECT_EQ(info.pos[1].vertical, c.vertical);
        EXPECT_FALSE(info.pos[1].heightSet);  // the user confirms the height each session
        EXPECT_EQ(info.pos[1].transmitterName, L"North");
        EXPECT_EQ(info.pos[1].knownOffset, 0.25);
        EXPECT_TRUE(info.data[1].valid);
        EXPECT_EQ(info.data[1].channel, 1);
        EXPECT_EQ(info.data[1].dataBlocks[3], L"block4");
        // Channels without data come back reset.
        EXPECT_FALSE(info.data[0].valid);
        EXPECT_EQ(info.data[0].channel, -1);
        EXPECT_EQ(info.pos[0].transmitterName, L"");
    }
}

TEST_F(TransmitterFile, FixedMountsAndPositionsThatDoNotRead) {
    WriteData("LumaroData.ini", "1.00", "Fixed:17");
    TransInfo info;
    ASSERT_TRUE(LoadTransmitterInfo(info));
    EXPECT_EQ(info.pos[1].transmitterHeight, 0.0);
    EXPECT_EQ(info.pos[1].fixedHeightCode, 17);
    EXPECT_TRUE(info.pos[1].vertical);

    WriteData("LumaroData.ini", "1.00", "Fixed:18");
    ASSERT_TRUE(LoadTransmitterInfo(info));
    EXPECT_EQ(info.pos[1].transmitterHeight, 1.8);

    // A height that does not read resets the set-up but keeps the transmitter's data.
    for (const char* bad : {"", "1.5", "Fixed:x", "tall"}) {
        WriteData("LumaroData.ini", "1.00", bad);
        info = Dirty();
        ASSERT_TRUE(LoadTransmitterInfo(info));
        EXPECT_TRUE(info.data[1].valid) << bad;
        EXPECT_EQ(info.pos[1].transmitterName, L"") << bad;
        EXPECT_EQ(info.pos[1].transmitterHeight, 0.0) << bad;
    }

    // Before version 0.5 the file kept no set-up at all.
    WriteData("LumaroData.ini", "0.30", "2.000000V");
    ASSERT_TRUE(LoadTransmitterInfo(info));
    EXPECT_TRUE(info.data[1].valid);
    EXPECT_EQ(info.pos[1].transmitterHeight, 0.0);
    EXPECT_EQ(info.pos[1].transmitterName, L"");
}

TEST_F(TransmitterFile, UnknownVersionFailsWithEveryChannelReset) {
    for (const char* version : {"2.00", "0.6", "", "one"}) {
        WriteData("LumaroData.ini", version, "1.500000V");
        TransInfo info = Dirty();
        EXPECT_FALSE(LoadTransmitterInfo(info)) << version;
        for (int i = 0; i < 4; ++i) {
            EXPECT_FALSE(info.data[i].valid) << version;
            EXPECT_EQ(info.data[i].serialNumber, L"");
            EXPECT_EQ(info.pos[i].transmitterHeight, 0.0);
        }
    }
}

TEST_F(TransmitterFile, OlderNameIsMovedOnceAndNoFileLeavesInfoUntouched) {
    TransInfo info = Dirty();
    EXPECT_FALSE(LoadTransmitterInfo(info));
    EXPECT_EQ(info.pos[2].transmitterName, L"old");

    WriteData("OrbekData.ini", "1.00", "1.500000V");
    ASSERT_TRUE(LoadTransmitterInfo(info));
    EXPECT_EQ(info.data[1].serialNumber, L"T-0042");
    EXPECT_FALSE(std::filesystem::exists(folder + "/OrbekData.ini"));
    ASSERT_TRUE(std::filesystem::exists(folder + "/LumaroData.ini"));
    // A newer older-named file left by an old program is not taken again.
    WriteData("OrbekData.ini", "1.00", "3.000000V");
    ASSERT_TRUE(LoadTransmitterInfo(info));
    EXPECT_EQ(info.pos[1].transmitterHeight, 1.5);
}

TEST_F(TransmitterFile, SavedFileIsUtf16AndLoadsBack) {
    TransInfo info;
    info.data[0].valid = true;
    info.data[0].serialNumber = L"SN-1";
    for (int b = 0; b < 4; ++b) info.data[0].dataBlocks[b] = L"B" + CKivStringT(static_cast<wchar_t>(L'1' + b));
    info.pos[0].heightSet = true;
    info.pos[0].transmitterHeight = 1.25;
    info.pos[0].vertical = false;
    info.pos[0].knownOffset = -0.5;
    info.pos[0].knownPointName = L"BM\u00E9";
    info.data[2] = info.data[0];
    info.pos[2].heightSet = true;
    info.pos[2].fixedHeightCode = 15;
    info.data[3] = info.data[0];  // valid, but its height was never confirmed
    ASSERT_TRUE(SaveTransmitterInfo(info));

    const std::string bytes = kiv_test::ReadFileBytes(folder + "/LumaroData.ini");
    ASSERT_GE(bytes.size(), 2u);
    EXPECT_EQ(bytes.substr(0, 2), std::string("\xFF\xFE"));
    std::string ascii;  // the low bytes of the UTF-16 text
    for (size_t i = 2; i < bytes.size(); i += 2) ascii.push_back(bytes[i]);
    EXPECT_NE(ascii.find("version=1.00"), std::string::npos);
    EXPECT_NE(ascii.find("TransHeight=1.250000S"), std::string::npos);
    EXPECT_NE(ascii.find("TransHeight=Fixed:15"), std::string::npos);
    EXPECT_NE(ascii.find("KnownOffset=0.000000"), std::string::npos);  // an empty channel

    TransInfo back;
    ASSERT_TRUE(LoadTransmitterInfo(back));
    EXPECT_EQ(back.data[0].dataBlocks[3], L"B4");
    EXPECT_EQ(back.pos[0].transmitterHeight, 1.25);
    EXPECT_FALSE(back.pos[0].vertical);
    EXPECT_EQ(back.pos[0].knownOffset, -0.5);
    EXPECT_EQ(back.pos[0].knownPointName, L"BM\u00E9");
    EXPECT_EQ(back.pos[2].transmitterHeight, 1.5);
    EXPECT_FALSE(back.data[1].valid);
    EXPECT_TRUE(back.data[3].valid);  // an unconfirmed height loses the set-up only
    EXPECT_EQ(back.pos[3].transmitterName, L"");
}
