// PoolManager: the file it writes, the spent pointers it leaves, loading in place with
// every refusal, and the expand-pool units.
#include "utils/vector/PoolManager.h"

#include <gtest/gtest.h>

#include <limits>

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

TEST(PoolSerialize, DirectoryFollowsMemoryOrderWhilePoolsFollowRegistration) {
    kiv_test::TempDeviceRoot root;
    PoolManager pools;
    PoolEntity* low = newPool(pools, ePointsList, 28);
    PoolEntity* high = newPool(pools, ePointStylesList, 8);
    pools.registerPool(high);  // registered first, lies higher in memory
    pools.registerPool(low);
    link(pools, low, 24, high, 0);

    const std::string file = serializeToFile(pools, root);
    const std::uint32_t firstPool = 8 * (2 + 3) + 4 * 1;
    EXPECT_EQ(pools.getFixupTableOffset(), 32u);
    ASSERT_EQ(file.size(), firstPool + 16 + 36u);
    EXPECT_EQ(wordAt(file, 4), 24u);  // 8 x (P + 1)
    // Entries by memory address: the points pool first, though it is written second.
    EXPECT_EQ(wordAt(file, 16), ePointsList);
    EXPECT_EQ(wordAt(file, 20), firstPool + 16);
    EXPECT_EQ(wordAt(file, 24), ePointStylesList);
    EXPECT_EQ(wordAt(file, 28), firstPool);
    EXPECT_EQ(wordAt(file, 32), eFixupTable);
    EXPECT_EQ(wordAt(file, 36), 4u);
    EXPECT_EQ(wordAt(file, 40), firstPool + 16 + 8 + 24);  // the field's own file offset
    EXPECT_EQ(wordAt(file, firstPool), ePointStylesList);
    EXPECT_EQ(wordAt(file, firstPool + 16 + 8 + 24), firstPool + 8);  // the target's file offset
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

// A field whose target, or which itself, lies in no registered pool gets no fixup of its
// own, yet still consumes the fixup of its place in the list: the rest fall out of step.
TEST(PoolSerialize, FieldOutsideEveryPoolTakesTheFixupOfItsPlace) {
    for (bool fieldInStray : {false, true}) {
        SCOPED_TRACE(fieldInStray ? "field in the stray block" : "target in the stray block");
        kiv_test::TempDeviceRoot root;
        PoolManager pools;
        PoolEntity* points = newPool(pools, ePointsList, 56);
        PoolEntity* stray = newPool(pools, ePointStylesList, 8);  // allocated, never registered
        pools.registerPool(points);
        unsigned char* first = fieldInStray ? stray->data() + 4 : points->data() + 24;
        if (fieldInStray) link(pools, stray, 4, points, 0);
        else link(pools, points, 24, stray, 0);
        link(pools, points, 52, points, 0);
        const std::uint32_t firstBefore = readU32(first);
        const std::string file = serializeToFile(pools, root);

        const std::uint32_t pointsAt = 8 * 4 + 4 * 2;
        EXPECT_EQ(wordAt(file, 28), 4u);  // F = 1 of N = 2
        EXPECT_EQ(wordAt(file, 32), pointsAt + 8 + 52);
        if (!fieldInStray) {
            EXPECT_EQ(wordAt(file, 36), 0u);  // the reserved place left unwritten
            EXPECT_EQ(wordAt(file, pointsAt + 8 + 24), firstBefore);
        }
        EXPECT_EQ(readU32(first), firstBefore - (pointsAt + 8 + 52));
        EXPECT_EQ(readU32(points->data() + 52), pointsAt + 8);
    }
}

// Both refusals come before anything is written, so the image's pointers stay whole.
TEST(PoolSerialize, RefusalsLeaveThePointersWhole) {
    kiv_test::TempDeviceRoot root;
    PoolManager pools;
    PoolEntity* points = newPool(pools, ePointsList, 28);
    pools.registerPool(points);
    link(pools, points, 24, points, 0);
    const std::uint32_t before = readU32(points->data() + 24);
    {
        CEntityWriter writer(L"\\no such folder\\image.vec");
        EXPECT_FALSE(pools.serialize(writer));
        EXPECT_EQ(readU32(points->data() + 24), before);
    }
    auto* huge = reinterpret_cast<PoolEntity*>(pools.alloc(8));  // its size word speaks for 2 GiB
    huge->setId(eLinesList);
    huge->setSize(0x7FFFFFF0u);
    pools.registerPool(huge);
    CEntityWriter writer(L"\\image.vec");
    EXPECT_FALSE(pools.serialize(writer));
    EXPECT_EQ(readU32(points->data() + 24), before);
    EXPECT_EQ(GetFileAttributesW(L"\\image.vec"), INVALID_FILE_ATTRIBUTES);
    EXPECT_FALSE(writer.close());
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

TEST(PoolDeserialize, RegistersEntitiesInPlaceAndReportsEachFixedField) {
    ImageBytes image({{ePointsList, 28}, {ePointStylesList, 8}, {eFixupTable, 4}});
    const std::size_t points = image.payloadOf(0), styles = image.payloadOf(1), table = image.payloadOf(2);
    image.set(points + 24, static_cast<std::uint32_t>(styles));
    image.set(table, static_cast<std::uint32_t>(points + 24));
    PoolManager pools;
    ASSERT_TRUE(pools.deserialize(image.data(), image.size()));
    ASSERT_EQ(pools.getPoolCount(), 2);
    EXPECT_EQ(pools.getPool(ePointsList)->bytes(), image.data() + points - 8);  // no copy
    ASSERT_EQ(pools.getPointerList().GetSize(), 1);
    EXPECT_EQ(pools.getPointerList()[0], image.data() + points + 24);
    EXPECT_EQ(pools.fromWord(image.get(points + 24), 8), image.data() + styles);
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

TEST(PoolLookup, FindsPoolsByExactIdInRegistrationOrder) {
    PoolManager pools;
    PoolEntity* variant = newPool(pools, 0x00040001, 0);
    PoolEntity* first = newPool(pools, eLinesList, 0);
    PoolEntity* second = newPool(pools, eLinesList, 0);
    pools.registerPool(variant);
    pools.registerPool(first);
    pools.registerPool(second);
    EXPECT_EQ(pools.getPool(eLinesList), first);
    pools.unregisterPool(first);
    EXPECT_EQ(pools.getPool(eLinesList), second);
    EXPECT_EQ(pools.getPool(ePointsList), nullptr);
    EXPECT_EQ(pools.getPoolCount(), 2);
}

TEST(PoolLookup, BlockIntervalMapTakesGreatestStartAndExcludesTheEnd) {
    BlockIntervalMap map;
    BlockIntervalMap::Block found;
    EXPECT_FALSE(map.lookup(100, found));
    map.set(100, 150, 7);
    map.set(200, 210, 9);
    EXPECT_FALSE(map.lookup(99, found));
    ASSERT_TRUE(map.lookup(149, found));
    EXPECT_EQ(found.offset, 7u);
    EXPECT_FALSE(map.lookup(150, found));
    ASSERT_TRUE(map.lookup(200, found));
    EXPECT_EQ(found.start, 200u);
    EXPECT_FALSE(map.lookup(210, found));
}

TEST(PoolExpand, MovesFieldsByFourTimesAndTargetsByOnceTheHeaderUnitDistance) {
    PoolManager pools;
    PoolEntity* points = newPool(pools, ePointsList, 28);
    PoolEntity* styles = newPool(pools, ePointStylesList, 16);
    pools.registerPool(points);
    pools.registerPool(styles);
    link(pools, points, 24, styles, 8);  // into the pool that grows
    link(pools, styles, 4, points, 0);   // out of it
    const std::uint32_t intoBefore = readU32(points->data() + 24);
    const std::uint32_t outOfBefore = readU32(styles->data() + 4);

    PoolEntity* grown = pools.expandPool(styles, 64);
    ASSERT_NE(grown, nullptr);
    EXPECT_EQ(grown->getSize(), 64u);
    EXPECT_EQ(grown->getId(), ePointStylesList);
    EXPECT_EQ(readU32(grown->data() + 4), outOfBefore);  // the payload came along

    const std::int64_t d = (reinterpret_cast<std::intptr_t>(grown) - reinterpret_cast<std::intptr_t>(styles)) / 8;
    EXPECT_EQ(readU32(points->data() + 24), intoBefore + static_cast<std::uint32_t>(d));
    EXPECT_EQ(pools.getPointerList()[1], styles->data() + 4 + 4 * d);
    EXPECT_EQ(pools.getPool(ePointStylesList), styles);  // registration is the caller's
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

TEST(PoolExpand, RefusesSizesWithNoRoomForTheHeader) {
    PoolManager pools;
    PoolEntity* points = newPool(pools, ePointsList, 28);
    pools.registerPool(points);
    link(pools, points, 24, points, 0);
    const std::uint32_t before = readU32(points->data() + 24);
    for (int size : {std::numeric_limits<int>::max(), std::numeric_limits<int>::max() - 7, -1}) {
        EXPECT_EQ(pools.expandPool(points, size), nullptr) << size;
    }
    EXPECT_EQ(pools.getPointerList()[0], points->data() + 24);
    EXPECT_EQ(readU32(points->data() + 24), before);
}

TEST(EntityKinds, UnknownAndMaskedIdsAreNamedAsSuch) {
    EXPECT_STREQ(getEntityKindName(ePolyLineElementsLists), "PolyLineElementsLists");
    EXPECT_STREQ(getEntityKindName(0xFFFFFFFFu), "Unknown");
    EXPECT_STREQ(getEntityKindName(0x00030001), "Invalid entity ID");
}
