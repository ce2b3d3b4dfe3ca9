// Beacon list files in the encodings the lists come in, the beacon's numbers, and the
// satellite names both ways.
#include "utils/devices/Beacons.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/TestSupport.h"

namespace {

class BeaconFile : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;

    CKivArray<TBeacon*> Load(const std::string& bytes) {
        kiv_test::WriteFileBytes(root.path() + "/beacons.txt", bytes);
        CKivArray<TBeacon*> beacons;
        EXPECT_TRUE(LoadBeaconsFile(CKivStringT(root.path().c_str()) + L"/beacons.txt", beacons));
        return beacons;
    }
    ~BeaconFile() override {}
};

std::string Latin1ToUtf8(const std::string& latin1) {
    std::string out;
    for (unsigned char c : latin1) {
        if (c < 0x80) out.push_back(static_cast<char>(c));
        else out += {static_cast<char>(0xC0 | (c >> 6)), static_cast<char>(0x80 | (c & 0x3F))};
    }
    return out;
}

std::string Latin1ToUtf16(const std::string& latin1) {
    std::string out = "\xFF\xFE";
    for (unsigned char c : latin1) out += {static_cast<char>(c), '\0'};
    return out;
}

// Latin-1 text; the degree sign is byte B0.
const std::string kList =
    "<HTML><BODY>\r\n"
    "<BR><B>Cape Race</B>\r\n"
    "Status: Operational\r\n"
    "Antenna Location: 45\xB0" "30.0' N;75\xB0" "15.0' W\r\n"
    "Transmission Frequency:288.0 kHz\r\n"
    "Transmission Rate:200 bps\r\n"
    "\r\n"
    "Country: Canada\r\n"
    "Name:Alpha\r\n"
    "Name:Bravo\r\n"
    "Status: Not Operational\r\n"
    "Name:\r\n"
    "Antenna Location: 45 30.0 N;75 15.0 W\r\n"
    "Country: Mexico\r\n"
    "Name: Charlie \r\n";

}  // namespace

TEST_F(BeaconFile, RecordsFollowNameLinesAndCountryLinesInEveryEncoding) {
    for (const std::string& bytes : {kList, Latin1ToUtf8(kList), Latin1ToUtf16(kList)}) {
        CKivArray<TBeacon*> beacons = Load(bytes);
        ASSERT_EQ(beacons.GetSize(), 4);
        TBeacon& cape = *beacons[0];
        EXPECT_EQ(cape.country, L"USA");  // before any country line
        EXPECT_EQ(cape.name, L"Cape Race");
        EXPECT_EQ(cape.status, L"Operational");
        EXPECT_EQ(cape.transmissionFrequency, L"288.0 kHz");
        double lat = 0, lon = 0;
        ASSERT_TRUE(cape.GetPosition(lat, lon));
        EXPECT_DOUBLE_EQ(lat, 45.5);
        EXPECT_DOUBLE_EQ(lon, -75.25);
        EXPECT_DOUBLE_EQ(cape.GetFrequency(), 288.0);
        EXPECT_DOUBLE_EQ(cape.GetBaudRate(), 200.0);

        // Two name lines in a row: the first beacon has its name and the country only.
        EXPECT_EQ(beacons[1]->name, L"Alpha");
        EXPECT_EQ(beacons[1]->country, L"Canada");
        EXPECT_EQ(beacons[1]->status, L"");
        // An empty name line starts nothing: its fields still fill Bravo.
        TBeacon& bravo = *beacons[2];
        EXPECT_EQ(bravo.name, L"Bravo");
        EXPECT_TRUE(bravo.GetStatus());  // "Not Operational" holds the word too
        ASSERT_TRUE(bravo.GetPosition(lat, lon));
        EXPECT_DOUBLE_EQ(lat, 45.5);
        EXPECT_DOUBLE_EQ(lon, -75.25);
        EXPECT_EQ(beacons[3]->country, L"Mexico");
        EXPECT_EQ(beacons[3]->name, L"Charlie");
        DeleteBeacons(beacons);
        EXPECT_EQ(beacons.GetSize(), 0);
    }
}

TEST_F(BeaconFile, AppendsAndAMissingFileAddsNothing) {
    CKivArray<TBeacon*> beacons;
    beacons.Add(nullptr);
    EXPECT_TRUE(LoadBeaconsFile(L"/nonexistent/beacons.txt", beacons));
    EXPECT_EQ(beacons.GetSize(), 1);
    kiv_test::WriteFileBytes(root.path() + "/one.txt", "Name:Solo\n");
    EXPECT_TRUE(LoadBeaconsFile(CKivStringT(root.path().c_str()) + L"/one.txt", beacons));
    ASSERT_EQ(beacons.GetSize(), 2);
    EXPECT_EQ(beacons[1]->name, L"Solo");
    DeleteBeacons(beacons);  // a null element is passed over
}

TEST(BeaconPosition, ThreeSpellingsAndTheirLimits) {
    TBeacon b;
    double lat = 1, lon = 1;
    b.antennaLocation = L"12 06.0 S;003 30.0 E";
    ASSERT_TRUE(b.GetPosition(lat, lon));
    EXPECT_DOUBLE_EQ(lat, -12.1);
    EXPECT_DOUBLE_EQ(lon, 3.5);
    // The apostrophe spelling marks the latitude's minutes only; a marked longitude
    // reads the apostrophe as its hemisphere and stays east.
    b.antennaLocation = L"45 30.0' N;75 15.0  W";
    ASSERT_TRUE(b.GetPosition(lat, lon));
    EXPECT_DOUBLE_EQ(lon, -75.25);
    b.antennaLocation = L"45 30.0' N;75 15.0' W";
    ASSERT_TRUE(b.GetPosition(lat, lon));
    EXPECT_DOUBLE_EQ(lon, 75.25);
    b.antennaLocation = L"45\u00B030.0' N";
    EXPECT_FALSE(b.GetPosition(lat, lon));
    EXPECT_DOUBLE_EQ(lat, 45.5);  // written even when the rest is missing
    b.antennaLocation = L"";
    EXPECT_FALSE(b.GetPosition(lat, lon));
}

TEST(OmnistarNames, ReportedNamesAndShownNamesAreNotInverse) {
    EXPECT_EQ(OmniStarSatNameToEnum(L"AMSC_EAST"), eOmniAmscEast);  // not MSC_E, tested later
    EXPECT_EQ(OmniStarSatNameToEnum(L"XMSC_E1"), eOmniMsvEast);
    EXPECT_EQ(OmniStarSatNameToEnum(L"MSC_W"), eOmniMsvWest);
    EXPECT_EQ(OmniStarSatNameToEnum(L"sat AM_SAT"), eOmniApAmSat);
    EXPECT_EQ(OmniStarSatNameToEnum(L"AF_SAT"), eOmniAfSat);
    EXPECT_EQ(OmniStarSatNameToEnum(L"MSV_East"), eOmniUserDefined);  // a shown name
    EXPECT_EQ(OmniStarSatNameToEnum(L"IORH"), eOmniUserDefined);
    EXPECT_EQ(OmniStarSatNameToEnum(L"ea_sat"), eOmniUserDefined);  // case matters

    EXPECT_EQ(OmniStarEnumToSatName(eOmniOcsat), L"OCSAT");  // shown, never recognised
    EXPECT_EQ(OmniStarEnumToSatName(static_cast<OmnistarSats>(4)), L"");
    EXPECT_EQ(OmniStarEnumToSatName(static_cast<OmnistarSats>(23)), L"");
}
