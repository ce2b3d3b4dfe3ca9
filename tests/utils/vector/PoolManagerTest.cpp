// PoolManager: the file it writes, the spent pointers it leaves, the images it refuses to
// load, and moving a pool that points into itself.
#include "utils/vector/PoolManager.h"

#include <gtest/gtest.h>

#include "tests/support/TestSupport.h"
#include "tests/utils/vector/ImageBytes.h"

using namespace VectorFormat;
using vector_test::ImageBytes;
using vector_test::wordAt;

namespace {

using PoolEntity = PoolManager::Entity;

PoolEntity* newPool(PoolManager& pools, std::uint32_t id, std::uint32_t payload) {
    auto* entity = reinterpret_cast<PoolEntity*>(pools.alloc(static_cast<int>(8 + payload)));
    entity->setId(id);
    entity->setSize(payload);
    std::memset(entity->data(), 0, payload);
    return entity;
}

// A pointer field at `at` in `from` naming byte `to` of `target`'s payload.
void link(PoolManager& pools, PoolEntity* from, std::uint32_t at, PoolEntity* target, std::uint32_t to) {
    writeU32(from->data() + at, pools.toWord(target->data() + to));
    pools.getPointerCollector()->processPointer(from->data() + at);
}

std::string serializeToFile(PoolManager& pools, const kiv_test::TempDeviceRoot& root) {
    CEntityWriter writer(L"\\image.vec");
    EXPECT_TRUE(pools.serialize(writer));
    EXPECT_TRUE(writer.close());
    return kiv_test::ReadFileBytes(root.HostPath(L"\\image.vec"));
}

bool loads(ImageBytes image) { return PoolManager().deserialize(image.data(), image.size()); }

}  // namespace

TEST(PoolSerialize, EmptyManagerWritesSixteenByteDirectoryThenFixupHeader) {
    kiv_test::TempDeviceRoot root;
    PoolManager pools;
    EXPECT_EQ(pools.getFixupTableOffset(), 16u);
    const std::string file = serializeToFile(pools, root);
    ASSERT_EQ(file.size(), 24u);
    const std::uint32_t expected[] = {0x00010000u, 8u, 0x00020000u, 16u, 0x00020000u, 0u};
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(wordAt(file, 4 * i), expected[i]) << i;

    std::vector<unsigned char> image(file.begin(), file.end());
    PoolManager loaded;
    EXPECT_TRUE(loaded.deserialize(image.data(), static_cast<int>(image.size())));
    EXPECT_EQ(loaded.getPoolCount(), 0);
}

TEST(PoolSerialize, LeavesPointersSpentAsOffsetDifferences) {
    kiv_test::TempDeviceRoot root;
    PoolManager pools;
    PoolEntity* points = newPool(pools, ePointsList, 56);
    PoolEntity* styles = newPool(pools, ePointStylesList, 16);
    pools.registerPool(points);
    pools.registerPool(styles);
    link(pools, points, 24, styles, 8);
    link(pools, points, 52, styles, 0);
    const std::string file = serializeToFile(pools, root);

    const std::uint32_t pointsAt = 8 * 5 + 4 * 2, stylesAt = pointsAt + 8 + 56;
    EXPECT_EQ(readU32(points->data() + 24), (stylesAt + 8 + 8) - (pointsAt + 8 + 24));
    EXPECT_EQ(readU32(points->data() + 52), (stylesAt + 8) - (pointsAt + 8 + 52));
    EXPECT_EQ(wordAt(file, pointsAt + 8 + 24), stylesAt + 16);
}

TEST(PoolDeserialize, ChecksOnlyTheKindHalfOfTheFirstWord) {
    ImageBytes image({{eFixupTable, 0}});
    image.set(0, 0x0001ABCD);
    EXPECT_TRUE(loads(image));
    image.set(0, 0x0002ABCD);
    EXPECT_FALSE(loads(image));
    EXPECT_FALSE(PoolManager().deserialize(nullptr, 100));
    EXPECT_FALSE(PoolManager().deserialize(image.data(), 4));
}

TEST(PoolDeserialize, RefusesDirectoriesAndEntitiesThatRunPastTheEnd) {
    ImageBytes image({{eFixupTable, 0}, {ePointsList, 28}});
    EXPECT_TRUE(loads(image));  // the points end exactly at the end
    EXPECT_FALSE(PoolManager().deserialize(image.data(), image.size() - 1));

    ImageBytes grown = image;
    grown.set(grown.payloadOf(1) - 4, 29);  // the points' size word, one byte too many
    EXPECT_FALSE(loads(grown));
    ImageBytes longDirectory = image;
    longDirectory.set(4, static_cast<std::uint32_t>(image.size()));
    EXPECT_FALSE(loads(longDirectory));
    ImageBytes negativeOffset = image;  // a signed comparison would let this through
    negativeOffset.set(20, 0xFFFFFFF8u);
    EXPECT_FALSE(loads(negativeOffset));
}

TEST(PoolDeserialize, RefusesRepeatedIdsAndImagesWithoutFixupTable) {
    EXPECT_FALSE(loads(ImageBytes({{ePointsList, 0}, {ePointsList, 0}, {eFixupTable, 0}})));
    EXPECT_FALSE(loads(ImageBytes(vector_test::Kinds{})));

    ImageBytes noTable({{ePointsList, 0}, {eLinesList, 0}});
    PoolManager pools;
    EXPECT_FALSE(pools.deserialize(noTable.data(), noTable.size()));
    EXPECT_EQ(pools.getPoolCount(), 2);  // what was registered stays
    EXPECT_NE(pools.getPool(eLinesList), nullptr);
}

TEST(PoolDeserialize, FixupTablesOfZeroToThreeBytesConvertNothing) {
    for (std::uint32_t size = 0; size <= 3; ++size) {
        ImageBytes image({{ePointsList, 28}, {eFixupTable, size}});
        PoolManager pools;
        ASSERT_TRUE(pools.deserialize(image.data(), image.size())) << size;
        EXPECT_EQ(pools.getPointerList().GetSize(), 0) << size;
    }
}

TEST(PoolDeserialize, RefusesFixupsThatNameOrReachOutsideTheImage) {
    ImageBytes image({{ePointsList, 28}, {eFixupTable, 4}});
    const std::size_t points = image.payloadOf(0), table = image.payloadOf(1);
    image.set(table, static_cast<std::uint32_t>(image.size() - 2));  // field straddles the end
    EXPECT_FALSE(loads(image));

    image.set(table, static_cast<std::uint32_t>(points + 24));
    image.set(points + 24, static_cast<std::uint32_t>(image.size()));  // target past the end
    EXPECT_FALSE(loads(image));
    image.set(points + 24, static_cast<std::uint32_t>(image.size() - 1));
    EXPECT_TRUE(loads(image));
}

TEST(PoolDeserialize, PointerListNamesEveryFixupFieldInTableOrderInTheManagerAndItsCopies) {
    ImageBytes image({{ePointsList, 56}, {eFixupTable, 8}});
    const std::size_t points = image.payloadOf(0), table = image.payloadOf(1);
    image.set(table, static_cast<std::uint32_t>(points + 52));  // second point's field first
    image.set(table + 4, static_cast<std::uint32_t>(points + 24));
    image.set(points + 24, static_cast<std::uint32_t>(points));
    image.set(points + 52, static_cast<std::uint32_t>(points + 28));
    PoolManager pools;
    ASSERT_TRUE(pools.deserialize(image.data(), image.size()));
    const PoolManager copy(pools);
    for (const PoolManager* manager : {static_cast<const PoolManager*>(&pools), &copy}) {
        const auto& list = manager->getPointerList();
        ASSERT_EQ(list.GetSize(), 2);
        EXPECT_EQ(list[0], image.data() + points + 52);
        EXPECT_EQ(list[1], image.data() + points + 24);
    }
    // A loaded field names its target. Where words are offsets, loading leaves it as it
    // was (the image is its own arena); where they are addresses, it adds the image's.
    const std::uint32_t word = readU32(image.data() + points + 52);
    EXPECT_EQ(pools.fromWord(word, 4), image.data() + points + 28);
    if constexpr (sizeof(void*) > sizeof(std::uint32_t))
        EXPECT_EQ(word, points + 28);
    else
        EXPECT_EQ(word, reinterpret_cast<std::uintptr_t>(image.data() + points + 28));
    // A field added through the collector goes after the loaded ones.
    pools.getPointerCollector()->processPointer(image.data() + points);
    EXPECT_EQ(pools.getPointerList().GetSize(), 3);
}

TEST(PoolExpand, AdjustsTheWordThatNowStandsWhereAMovedFieldIsRecorded) {
    PoolManager pools;
    PoolEntity* styles = newPool(pools, ePointStylesList, 32);  // grows
    PoolEntity* other = newPool(pools, eLinesList, 200);        // lies between old and new block
    pools.registerPool(styles);
    pools.registerPool(other);
    link(pools, styles, 4, styles, 0);  // a field of the growing pool naming its own payload

    // The arena carves the new block right after `other`: d header units away, and the
    // field's recorded address moves by 4 x d bytes, into the middle of `other`.
    const std::uintptr_t otherEnd = reinterpret_cast<std::uintptr_t>(other->data()) + 200;
    auto* next = reinterpret_cast<unsigned char*>((otherEnd + 7) & ~std::uintptr_t{7});
    const std::ptrdiff_t d = (next - styles->bytes()) / 8;
    unsigned char* landing = styles->data() + 4 + 4 * d;
    ASSERT_GE(landing, other->data());
    ASSERT_LE(landing + 4, other->data() + 200);
    writeU32(landing, 0x12345);
    const std::uint32_t selfWord = readU32(styles->data() + 4);

    PoolEntity* grown = pools.expandPool(styles, 48);
    ASSERT_EQ(grown->bytes(), next);
    EXPECT_EQ(pools.getPointerList()[0], landing);
    // The word found there is the one adjusted; the field and its copy keep the old value.
    EXPECT_EQ(readU32(landing), 0x12345u + static_cast<std::uint32_t>(d));
    EXPECT_EQ(readU32(styles->data() + 4), selfWord);
    EXPECT_EQ(readU32(grown->data() + 4), selfWord);
}
