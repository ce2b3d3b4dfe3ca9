// The image library: its folder, the path helpers, loading and saving by name, and the
// atomic replacement of an image file.
#include "utils/vector/VectorImageLibrary.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/kivutils/FileFuncs.h"
#include "tests/support/TestSupport.h"
#include "utils/vector/VectorImageProducer.h"

namespace {

std::shared_ptr<VectorBlob> twoPoints() {
    VectorImageProducer producer;
    const int dot = producer.addPointStyle(RGB(9, 8, 7));
    producer.addPoint({1, 2, 3}, dot);
    producer.addPoint({4, 5, 6}, dot);
    return producer.build();
}

}  // namespace

TEST(VectorImageLibraryFolder, DropsOneTrailingBackslashAndCreatesTheFolder) {
    kiv_test::TempDeviceRoot root;
    EXPECT_EQ(VectorImageLibrary(L"\\Maps\\").getLibraryName(), L"\\Maps");
    EXPECT_TRUE(FileFuncs::IsDirExist(L"\\Maps"));
    EXPECT_EQ(VectorImageLibrary(L"\\Maps").getLibraryName(), L"\\Maps");
    EXPECT_EQ(VectorImageLibrary(L"\\Maps\\\\").getLibraryName(), L"\\Maps\\");
    VectorImageLibrary nested(L"\\Data\\Site 4\\Vectors");
    EXPECT_TRUE(FileFuncs::IsDirExist(L"\\Data\\Site 4\\Vectors"));
}

TEST(VectorImageLibraryPaths, SplitAtTheLastBackslash) {
    EXPECT_EQ(VectorImageLibrary::getImageNameFromFilePath(L"\\Maps\\site.vec"), L"site.vec");
    EXPECT_EQ(VectorImageLibrary::getImageNameFromFilePath(L"site.vec"), L"site.vec");
    EXPECT_EQ(VectorImageLibrary::getImageNameFromFilePath(L"\\Maps\\"), L"\\Maps\\");
    EXPECT_EQ(VectorImageLibrary::getLibraryPathFromFilePath(L"\\Maps\\Old\\site.vec"), L"\\Maps\\Old");
    EXPECT_EQ(VectorImageLibrary::getLibraryPathFromFilePath(L"site.vec"), L"site.vec");
    EXPECT_EQ(VectorImageLibrary::getLibraryPathFromFilePath(L"\\Maps\\"), L"\\Maps\\");
    EXPECT_EQ(VectorImageLibrary::getLibraryPathFromFilePath(L"\\site.vec"), L"");
}

TEST(VectorImageLibraryImages, SavedImageLoadsBackAndEachLoadIsIndependent) {
    kiv_test::TempDeviceRoot root;
    VectorImageLibrary library(L"\\Maps");
    ASSERT_TRUE(library.saveImage(L"site.vec", twoPoints()));
    auto first = library.getImage(L"site.vec");
    auto second = library.getImage(L"site.vec");
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first->getPointsList(), second->getPointsList());
    ASSERT_EQ(first->getPointCount(), 2u);
    EXPECT_EQ(first->getPointsList()->getPosition(1).z, 6.0);
    TPointStyle style;
    ASSERT_TRUE(second->getPointStyle(0, style));
    EXPECT_EQ(style.colour, RGB(9, 8, 7));
}

TEST(VectorImageLibraryImages, AbsentOrMalformedFilesGiveNoImage) {
    kiv_test::TempDeviceRoot root;
    VectorImageLibrary library(L"\\Maps");
    EXPECT_EQ(library.getImage(L"none.vec"), nullptr);
    kiv_test::WriteFileBytes(root.HostPath(L"\\Maps\\text.vec"), "not a vector image");
    EXPECT_EQ(library.getImage(L"text.vec"), nullptr);
    kiv_test::WriteFileBytes(root.HostPath(L"\\Maps\\empty.vec"), "");
    EXPECT_EQ(library.getImage(L"empty.vec"), nullptr);

    // A well-formed image without its required kinds: refused, with the loader's lines.
    kiv_test::WriteFileBytes(root.HostPath(L"\\Maps\\bare.vec"),
                             std::string("\x00\x00\x01\x00\x08\x00\x00\x00\x00\x00\x02\x00\x10\x00\x00\x00"
                                         "\x00\x00\x02\x00\x00\x00\x00\x00",
                                         24));
    kiv_test::LogCapture log;
    EXPECT_EQ(library.getImage(L"bare.vec"), nullptr);
    EXPECT_EQ(log.count(), 10u);
}

TEST(VectorImageLibraryImages, ReplacesTheOldFileWholeOrNotAtAll) {
    kiv_test::TempDeviceRoot root;
    VectorImageLibrary library(L"\\Maps");
    ASSERT_TRUE(library.saveImage(L"site.vec", twoPoints()));
    const std::string before = kiv_test::ReadFileBytes(root.HostPath(L"\\Maps\\site.vec"));

    VectorImageProducer bigger;
    const int dot = bigger.addPointStyle(0);
    for (int i = 0; i < 50; ++i) bigger.addPoint({i * 1.0, 0, 0}, dot);
    ASSERT_TRUE(SetFileAttributesW(L"\\Maps\\site.vec", FILE_ATTRIBUTE_READONLY));
    EXPECT_FALSE(library.saveImage(L"site.vec", bigger.build()));
    EXPECT_EQ(kiv_test::ReadFileBytes(root.HostPath(L"\\Maps\\site.vec")), before);
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(root.HostPath(L"\\Maps"))) {
        (void)entry;
        ++files;
    }
    EXPECT_EQ(files, 1);  // no temporary file left behind

    ASSERT_TRUE(SetFileAttributesW(L"\\Maps\\site.vec", FILE_ATTRIBUTE_NORMAL));
    EXPECT_TRUE(library.saveImage(L"site.vec", bigger.build()));
    EXPECT_EQ(library.getImage(L"site.vec")->getPointCount(), 50u);
    EXPECT_FALSE(library.saveImage(L"site.vec", nullptr));
}
