// The image library: a save refused by a read-only target leaves the image fit to save again.
#include "utils/vector/VectorImageLibrary.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/host/TextCodec.h"
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

TEST(VectorImageLibraryImages, AHostFolderKeepsItsImagesInsideIt) {
    kiv_test::TempDeviceRoot root;
    const std::wstring folder = kiv_text::FromUtf8(root.path()) + L"/maps";
    VectorImageLibrary library(folder.c_str());
    ASSERT_TRUE(library.saveImage(L"site.vec", points(3, RGB(1, 2, 3))));
    EXPECT_TRUE(std::filesystem::is_regular_file(root.path() + "/maps/site.vec"));
#ifndef _WIN32  // where a backslash also separates folders, the two names are one file
    EXPECT_FALSE(std::filesystem::exists(root.path() + "/maps\\site.vec"));
#endif
    auto loaded = library.getImage(L"site.vec");
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->getPointCount(), 3u);
}
