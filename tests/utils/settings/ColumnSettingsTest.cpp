#include "utils/settings/ColumnSettings.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>

#include "platform/kivutils/IniFile.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

const wchar_t kFile[] = L"\\Zeb\\columns.ini";

class ColumnSettingsTest : public ::testing::Test {
protected:
    ColumnSettingsTest() {
        kiv_host::SetBaseFolders(L"", L"\\Zeb", L"");
        CreateDirectoryW(L"\\Zeb", nullptr);
    }
    void WriteRecords(std::initializer_list<std::array<const wchar_t*, 3>> records) {
        kiv_settings::CThreeTupleStore store;
        for (auto& r : records) store.SetValue(r[0], r[1], r[2]);
        ASSERT_TRUE(kiv_settings::writeSettingsAsIni(kFile, store, kiv_settings::eEncodingUtf16LE));
    }
    kiv_settings::CThreeTupleStore ReadBack() {
        kiv_settings::CThreeTupleStore store;
        kiv_settings::ETextEncoding encoding;
        EXPECT_TRUE(kiv_settings::readSettingsAsIni(kFile, store, encoding));
        return store;
    }
    kiv_test::TempDeviceRoot root_;
};

}  // namespace

TEST_F(ColumnSettingsTest, NewListIsWrittenOnDestructionBesideOtherLists) {
    WriteRecords({{L"Points", L"order", L"Name Code"}, {L"Points", L"show", L"1 1"}, {L"P", L"order", L"a b"}});
    {
        CColumnSettings c(L"Lines");
        EXPECT_EQ(c.getColumnCount(), 0);
        c.addColumn(L"Start", true);
        c.addColumn(L"End", false);
    }
    {
        CColumnSettings c(L"P");
        c.clear();
    }
    const auto store = ReadBack();
    EXPECT_EQ(store.GetValue(L"Lines", L"order"), L"Start End");
    EXPECT_EQ(store.GetValue(L"Lines", L"show"), L"1 0");
    EXPECT_EQ(store.GetValue(L"Points", L"order"), L"Name Code");
    EXPECT_EQ(store.GetValue(L"P", L"order", L"none"), L"");
}

TEST_F(ColumnSettingsTest, FileOverTheReadersCapKeepsEveryList) {
    WriteRecords({{L"Points", L"order", L"Name Code"}, {L"Points", L"show", L"1 0"}});
    const std::string host = root_.HostPath(kFile);
    const std::uintmax_t size = kiv_settings::kMaxIniFileBytes + 2;
    std::filesystem::resize_file(host, size);
    const std::string before = kiv_test::ReadFileHead(host, 4096);
    kiv_test::LogCapture log;
    {
        CColumnSettings c(L"Lines");
        EXPECT_EQ(c.getColumnCount(), 0);
        c.addColumn(L"Start", true);
    }
    EXPECT_EQ(std::filesystem::file_size(host), size);
    EXPECT_EQ(kiv_test::ReadFileHead(host, 4096), before);
    ASSERT_EQ(log.count(), 1u);
    EXPECT_EQ(log.entries()[0].level, 1);

    // A file that is missing is still made at destruction.
    std::filesystem::remove(host);
    { CColumnSettings(L"Lines").addColumn(L"Start", true); }
    EXPECT_EQ(ReadBack().GetValue(L"Lines", L"order"), L"Start");
}
