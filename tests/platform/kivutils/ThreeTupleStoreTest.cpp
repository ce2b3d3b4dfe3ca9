// The INI record store: order of first insertion, lookups without regard to case, and
// the edits a settings dialog makes (replace in place, remove, add only when absent).
#include <gtest/gtest.h>

#include "platform/kivutils/ThreeTupleStore.h"

namespace {

using kiv_settings::CThreeTupleStore;

TEST(ThreeTupleStore, FindsNamesWithoutRegardToCaseAndKeepsTheFirstSpelling) {
    CThreeTupleStore store;
    store.SetValue(L"Channel\u00C4", L"TransHeight", L"1.5");
    store.SetValue(L"CHANNEL\u00E4", L"TRANSHEIGHT", L"2.5");  // the same record
    EXPECT_EQ(store.GetSectionCount(), 1);
    EXPECT_EQ(store.GetKeyCount(0), 1);
    EXPECT_EQ(store.GetSectionName(0), L"Channel\u00C4");
    EXPECT_EQ(store.GetKeyName(0, 0), L"TransHeight");
    EXPECT_EQ(store.GetValue(L"channel\u00E4", L"transheight"), L"2.5");
    EXPECT_TRUE(store.HasSection(L"CHANNEL\u00C4"));
    // Names that only fold alike within ASCII are not confused with longer or shorter ones.
    EXPECT_FALSE(store.HasValue(L"Channel\u00C4", L"TransHeigh"));
    EXPECT_FALSE(store.HasValue(L"Channel", L"TransHeight"));
    EXPECT_EQ(store.GetValue(L"Channel\u00C4", L"Missing", L"dflt"), L"dflt");
}

TEST(ThreeTupleStore, ReplacesInPlaceAndAppendsNewRecordsAndSectionsAtTheEnd) {
    CThreeTupleStore store;
    store.SetValue(L"A", L"k1", L"1");
    store.SetValue(L"B", L"k1", L"x");
    store.SetValue(L"A", L"k2", L"2");
    store.SetValue(L"A", L"k1", L"a much longer value than before");
    store.SetValue(L"A", L"k1", L"");
    ASSERT_EQ(store.GetSectionCount(), 2);
    EXPECT_EQ(store.GetSectionName(1), L"B");
    ASSERT_EQ(store.GetKeyCount(0), 2);
    EXPECT_EQ(store.GetKeyName(0, 0), L"k1");
    EXPECT_EQ(store.GetValueAt(0, 0), L"");
    EXPECT_TRUE(store.HasValue(L"A", L"k1"));
    EXPECT_EQ(store.GetValueAt(0, 1), L"2");
    // Out of range positions give empty text rather than failing.
    EXPECT_EQ(store.GetSectionName(2), L"");
    EXPECT_EQ(store.GetKeyName(0, 2), L"");
    EXPECT_EQ(store.GetValueAt(-1, 0), L"");
    EXPECT_EQ(store.GetKeyCount(5), 0);
}

TEST(ThreeTupleStore, AddValueKeepsAnExistingRecord) {
    CThreeTupleStore store;
    EXPECT_TRUE(store.AddValue(L"S", L"Key", L"first"));
    EXPECT_FALSE(store.AddValue(L"s", L"KEY", L"second"));
    EXPECT_EQ(store.GetValue(L"S", L"Key"), L"first");
    store.AddSection(L"Empty");
    EXPECT_TRUE(store.HasSection(L"EMPTY"));
    EXPECT_EQ(store.GetKeyCount(1), 0);
    EXPECT_FALSE(store.AddValueAt(7, L"k", L"v"));  // no such section
}

TEST(ThreeTupleStore, RemovalsKeepTheOrderAndTheLookupsOfWhatRemains) {
    CThreeTupleStore store;
    for (int s = 0; s < 3; ++s)
        for (int k = 0; k < 20; ++k)
            store.SetValue((L"S" + std::to_wstring(s)).c_str(), (L"K" + std::to_wstring(k)).c_str(),
                           std::to_wstring(s * 100 + k).c_str());
    EXPECT_TRUE(store.RemoveValue(L"s1", L"k0"));
    EXPECT_FALSE(store.RemoveValue(L"S1", L"K0"));
    EXPECT_FALSE(store.RemoveValue(L"S9", L"K1"));
    EXPECT_EQ(store.GetKeyCount(1), 19);
    EXPECT_EQ(store.GetKeyName(1, 0), L"K1");
    EXPECT_EQ(store.GetValue(L"S1", L"K19"), L"119");
    EXPECT_TRUE(store.RemoveSection(L"s0"));
    EXPECT_FALSE(store.RemoveSection(L"S0"));
    ASSERT_EQ(store.GetSectionCount(), 2);
    EXPECT_EQ(store.GetSectionName(0), L"S1");
    EXPECT_EQ(store.GetValue(L"S2", L"K7"), L"207");
    EXPECT_FALSE(store.HasSection(L"S0"));
    // A removed name can come back; it goes to the end.
    store.SetValue(L"S1", L"K0", L"new");
    EXPECT_EQ(store.GetKeyName(0, 19), L"K0");
    store.Clear();
    EXPECT_TRUE(store.IsEmpty());
    EXPECT_FALSE(store.HasValue(L"S1", L"K1"));
}

TEST(ThreeTupleStore, ManyRewritesOfOneValueKeepEveryOtherRecord) {
    CThreeTupleStore store;
    store.SetValue(L"S", L"keep", L"kept");
    for (int i = 0; i < 5000; ++i) store.SetValue(L"S", L"counter", std::to_wstring(i).c_str());
    EXPECT_EQ(store.GetValue(L"S", L"counter"), L"4999");
    EXPECT_EQ(store.GetValue(L"S", L"keep"), L"kept");
    CThreeTupleStore copy = store;
    store.SetValue(L"S", L"keep", L"changed");
    EXPECT_EQ(copy.GetValue(L"S", L"keep"), L"kept");
    EXPECT_FALSE(copy == store);
    copy.SetValue(L"S", L"keep", L"changed");
    EXPECT_TRUE(copy == store);
}

TEST(ThreeTupleStore, NullNamesAreTheEmptyName) {
    CThreeTupleStore store;
    store.SetValue(nullptr, L"k", nullptr);
    EXPECT_TRUE(store.HasValue(L"", L"k"));
    EXPECT_EQ(store.GetValue(L"", L"k", L"d"), L"");
}

}  // namespace
