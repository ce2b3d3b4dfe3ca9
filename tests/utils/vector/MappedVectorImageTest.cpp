// Loading an image through a mapping: the same image as the ordinary load, with every
// page still the file's own where pointer words are offsets (as /proc/self/smaps reports
// the view), and a file that a later change of the image never reaches.
#include "utils/vector/MappedVectorImage.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/support/TestSupport.h"
#include "utils/vector/Quadtree.h"
#include "utils/vector/VectorImageLibrary.h"
#include "utils/vector/VectorImageProducer.h"

namespace {

std::shared_ptr<VectorBlob> survey(int points, int lines) {
    VectorImageProducer producer;
    const int dot = producer.addPointStyle(RGB(10, 20, 30));
    const int pen = producer.addLineStyle(RGB(200, 0, 0));
    for (int i = 0; i < points; ++i) producer.addPoint({i * 0.5, i * 0.25, 1.0}, dot);
    for (int i = 0; i < lines; ++i) producer.addLine({i * 1.0, 0, 0}, {i * 1.0, 5, 0}, pen);
    return producer.build();
}

#ifndef _WIN32
// The first line of the region holding `address` in a maps-style `table`; empty if none.
std::string regionLine(const char* table, const void* address) {
    std::ifstream lines(table);
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    for (std::string line; std::getline(lines, line);) {
        std::uintptr_t start = 0, end = 0;
        char dash = 0;
        std::istringstream header(line);
        if (line.find(':') > line.find(' ') && header >> std::hex >> start >> dash >> end && dash == '-' &&
            at >= start && at < end)
            return line;
    }
    return {};
}

// The kilobytes of the view holding `address` that smaps counts under `field`
// ("Anonymous" are pages the process copied; "Rss" all pages present); -1 if not found.
long viewKilobytes(const void* address, const std::string& field) {
    std::ifstream smaps("/proc/self/smaps");
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    bool inside = false;
    for (std::string line; std::getline(smaps, line);) {
        std::uintptr_t start = 0, end = 0;
        char dash = 0;
        std::istringstream header(line);
        if (line.find(':') > line.find(' ') && header >> std::hex >> start >> dash >> end && dash == '-') {
            inside = at >= start && at < end;
            continue;
        }
        if (inside && line.rfind(field + ":", 0) == 0) return std::stol(line.substr(field.size() + 1));
    }
    return -1;
}
#endif

// A site of about 2.5 MB saved as \Maps\site.vec, read the ordinary way and mapped.
class MappedSite : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(library.saveImage(L"site.vec", survey(60000, 20000)));
        file = kiv_test::ReadFileBytes(root.HostPath(L"\\Maps\\site.vec"));
        read = library.getImage(L"site.vec");
        mapped = loadMappedVectorImage(L"\\Maps\\SITE.vec", &result);
        ASSERT_TRUE(read && mapped);
    }

    kiv_test::TempDeviceRoot root;
    VectorImageLibrary library{L"\\Maps"};
    std::string file;
    std::shared_ptr<VectorBlob> read, mapped;
    EMappedLoadResult result = EMappedLoadResult::eNoFile;
};

TEST_F(MappedSite, LoadsTheSameImageAsTheOrdinaryLoadAndNeverWritesTheFile) {
    EXPECT_EQ(result, EMappedLoadResult::eLoaded);
    EXPECT_EQ(mapped->getPointCount(), 60000u);
    EXPECT_EQ(mapped->getLineCount(), read->getLineCount());
    TPointStyle style;
    ASSERT_TRUE(mapped->getPointStyle(59999, style));
    EXPECT_EQ(style.colour, RGB(10, 20, 30));
    TLineStyle pen;
    ASSERT_TRUE(mapped->getLineStyle(19999, pen));
    EXPECT_EQ(pen.colour, RGB(200, 0, 0));
    EXPECT_EQ(buildQuadtree(*mapped)->getRoot()->getBBox().right, buildQuadtree(*read)->getRoot()->getBBox().right);

    // Loading (which writes every pointer field where words are addresses) and saving
    // (which writes them all) change the view, never the file, and the saved words are
    // the file's again.
    ASSERT_TRUE(library.saveImage(L"copy.vec", mapped));
    EXPECT_EQ(kiv_test::ReadFileBytes(root.HostPath(L"\\Maps\\site.vec")), file);
    EXPECT_EQ(kiv_test::ReadFileBytes(root.HostPath(L"\\Maps\\copy.vec")), file);
}

// Windows reports no page counts of a view as the Linux kernel's smaps does; there the
// image and the untouched file are what the test above checks.
#ifndef _WIN32
TEST_F(MappedSite, CopiesOnlyThePagesItWritesAndGoesWithTheLastCopyOfTheBlob) {
    const void* view = mapped->getDirectory();
    const std::string region = regionLine("/proc/self/maps", view);
    ASSERT_NE(region.find("site.vec"), std::string::npos) << "the view is not the file's mapping: " << region;
    if (regionLine("/proc/self/smaps", view) != region)
        GTEST_SKIP() << "/proc/self/smaps does not describe this process's own mappings (qemu's user-mode "
                        "emulator shows its own, at host addresses), so copied pages cannot be counted here";

    // Every page has been read by now. Where pointer words are offsets, loading wrote
    // nothing and no page is a copy; where they are addresses, loading added the view's
    // address to every pointer field, as the device does, and those pages are copies.
    ASSERT_EQ(mapped->getPointCount(), 60000u);
    EXPECT_GT(viewKilobytes(view, "Rss"), 2000);
    if constexpr (sizeof(void*) > sizeof(std::uint32_t))
        EXPECT_EQ(viewKilobytes(view, "Anonymous"), 0);
    else
        EXPECT_GT(viewKilobytes(view, "Anonymous"), 0);

    // Saving writes the pointer fields, and so copies their pages.
    ASSERT_TRUE(library.saveImage(L"copy.vec", mapped));
    EXPECT_GT(viewKilobytes(view, "Anonymous"), 0);
    mapped.reset();
    EXPECT_EQ(viewKilobytes(view, "Rss"), -1) << "the view goes with the last copy of the blob";
}
#endif

TEST(MappedVectorImage, RefusesWhatTheOrdinaryLoadRefuses) {
    kiv_test::TempDeviceRoot root;
    kiv_test::LogCapture log;
    EMappedLoadResult result = EMappedLoadResult::eLoaded;
    EXPECT_EQ(loadMappedVectorImage(L"\\none.vec", &result), nullptr);
    EXPECT_EQ(result, EMappedLoadResult::eNoFile);
    kiv_test::WriteFileBytes(root.HostPath(L"\\empty.vec"), "");
    EXPECT_EQ(loadMappedVectorImage(L"\\empty.vec", &result), nullptr);
    EXPECT_EQ(result, EMappedLoadResult::eEmpty);
    // A directory that names a pool beyond the file's end.
    kiv_test::WriteFileBytes(root.HostPath(L"\\bad.vec"), std::string("\x00\x00\x01\x00\x08\x00\x00\x00"
                                                                       "\x00\x00\x02\x00\xF0\xFF\x00\x00",
                                                                       16));
    EXPECT_EQ(loadMappedVectorImage(L"\\bad.vec", &result), nullptr);
    EXPECT_EQ(result, EMappedLoadResult::eNotAnImage);
}

}  // namespace
