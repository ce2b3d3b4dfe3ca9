// The image library: its folder, the path helpers, loading and saving by name, and the
// atomic replacement of an image file.
#include "utils/vector/VectorImageLibrary.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/kivutils/FileFuncs.h"
#include "tests/support/TestSupport.h"
#include "utils/vector/VectorImageProducer.h"

namespace {

std::shared_ptr<VectorBlob> points(int count, COLORREF colour) {
    VectorImageProducer producer;
    const int dot = producer.addPointStyle(colour);
    for (int i = 0; i < count; ++i) producer.addPoint({i * 1.0, 2, i * 3.0}, dot);
    return producer.build();
}

int filesIn(const kiv_test::TempDeviceRoot& root, const wchar_t* folder) {
    int files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(root.HostPath(folder))) ++files;
    return files;
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
    const struct {
        const wchar_t *path, *name, *library;
    } cases[] = {
        {L"\\Maps\\Old\\site.vec", L"site.vec", L"\\Maps\\Old"},
        {L"site.vec", L"site.vec", L"site.vec"},
        {L"\\Maps\\", L"\\Maps\\", L"\\Maps\\"},
        {L"\\site.vec", L"site.vec", L""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(VectorImageLibrary::getImageNameFromFilePath(c.path), c.name);
        EXPECT_EQ(VectorImageLibrary::getLibraryPathFromFilePath(c.path), c.library);
    }
}

TEST(VectorImageLibraryImages, SavedImageLoadsBackAndEachLoadIsIndependent) {
    kiv_test::TempDeviceRoot root;
    VectorImageLibrary library(L"\\Maps");
    ASSERT_TRUE(library.saveImage(L"site.vec", points(2, RGB(9, 8, 7))));
    auto first = library.getImage(L"site.vec");
    auto second = library.getImage(L"site.vec");
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first->getPointsList(), second->getPointsList());
    ASSERT_EQ(first->getPointCount(), 2u);
    EXPECT_EQ(first->getPointsList()->getPosition(1).z, 3.0);
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

TEST(VectorImageLibraryImages, ReadOnlyTargetRefusesAndLeavesTheImageFitToSaveAgain) {
    kiv_test::TempDeviceRoot root;
    VectorImageLibrary library(L"\\Maps");
    ASSERT_TRUE(library.saveImage(L"site.vec", points(2, RGB(9, 8, 7))));
    const std::string before = kiv_test::ReadFileBytes(root.HostPath(L"\\Maps\\site.vec"));

    auto image = points(50, RGB(200, 100, 50));
    ASSERT_TRUE(SetFileAttributesW(L"\\Maps\\site.vec", FILE_ATTRIBUTE_READONLY));
    EXPECT_FALSE(library.saveImage(L"site.vec", image));
    EXPECT_EQ(kiv_test::ReadFileBytes(root.HostPath(L"\\Maps\\site.vec")), before);
    EXPECT_EQ(filesIn(root, L"\\Maps"), 1);

    // The refused image was not written, so its pointers are whole and it saves as new.
    ASSERT_TRUE(SetFileAttributesW(L"\\Maps\\site.vec", FILE_ATTRIBUTE_NORMAL));
    ASSERT_TRUE(library.saveImage(L"site.vec", image));
    auto loaded = library.getImage(L"site.vec");
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->getPointCount(), 50u);
    TPointStyle style;
    ASSERT_TRUE(loaded->getPointStyle(49, style));
    EXPECT_EQ(style.colour, RGB(200, 100, 50));
    EXPECT_EQ(filesIn(root, L"\\Maps"), 1);
    EXPECT_FALSE(library.saveImage(L"site.vec", nullptr));
}

TEST(VectorImageLibraryImages, TargetsThatCannotBeCreatedRefuseBeforeTheImageIsWritten) {
    kiv_test::TempDeviceRoot root;
    VectorImageLibrary library(L"\\Maps");
    auto image = points(50, RGB(1, 2, 3));
    ASSERT_TRUE(CreateDirectoryW(L"\\Maps\\folder.vec", nullptr));
    EXPECT_FALSE(library.saveImage(L"folder.vec", image));
    EXPECT_FALSE(library.saveImage(L"no such folder\\site.vec", image));

    // A reader that denies writing holds the file: creating it would fail, so does saving.
    ASSERT_TRUE(library.saveImage(L"held.vec", points(2, RGB(9, 8, 7))));
    HANDLE reader = CreateFileW(L"\\Maps\\held.vec", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(library.saveImage(L"held.vec", image));
    CloseHandle(reader);

    // A sibling name left behind by a folder is passed over.
    ASSERT_TRUE(CreateDirectoryW(L"\\Maps\\site.vec.kivtmp", nullptr));
    ASSERT_TRUE(library.saveImage(L"site.vec", image));
    TPointStyle style;
    ASSERT_TRUE(library.getImage(L"site.vec")->getPointStyle(0, style));
    EXPECT_EQ(style.colour, RGB(1, 2, 3));
    EXPECT_EQ(filesIn(root, L"\\Maps"), 4);  // folder.vec, held.vec, site.vec, site.vec.kivtmp
}

TEST(VectorImageLibraryImages, ANewFileThatCannotBePutInPlaceLeavesTheOldOneWhole) {
    kiv_test::TempDeviceRoot root;
    VectorImageLibrary library(L"\\Maps");
    ASSERT_TRUE(library.saveImage(L"site.vec", points(2, RGB(9, 8, 7))));
    const std::string before = kiv_test::ReadFileBytes(root.HostPath(L"\\Maps\\site.vec"));

    // The reader lets others write but not rename over the file: the new file is
    // written in full and then cannot replace the old one.
    HANDLE reader = CreateFileW(L"\\Maps\\site.vec", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(library.saveImage(L"site.vec", points(50, RGB(7, 7, 7))));
    CloseHandle(reader);
    EXPECT_EQ(kiv_test::ReadFileBytes(root.HostPath(L"\\Maps\\site.vec")), before);
    EXPECT_EQ(filesIn(root, L"\\Maps"), 1);  // no temporary file left behind
    EXPECT_EQ(library.getImage(L"site.vec")->getPointCount(), 2u);
}
