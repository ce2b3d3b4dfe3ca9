// The selection list: its order, its membership, and the messages a window receives.
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/TestSupport.h"
#include "utils/runtime/GisSelection.h"

namespace {

constexpr TGisFeature Point(int i) { return TGisFeature{TPickResult::ePoint, i}; }
constexpr TGisFeature Line(int i) { return TGisFeature{TPickResult::eLine, i}; }

struct Change {
    int change, kind;
    LPARAM value;
    bool operator==(const Change&) const = default;
};

class GisSelection : public ::testing::Test {
protected:
    void SetUp() override {
        view = kiv_test::MakePlainWindow(240, 320);
    }
    void TearDown() override { DestroyWindow(view); }
    // The change messages queued for the view, in order.
    std::vector<Change> Changes(UINT message = CGisSelectionList::kDefaultChangeMessage) {
        std::vector<Change> changes;
        MSG m;
        while (PeekMessageW(&m, view, message, message, PM_REMOVE)) {
            changes.push_back(Change{LOWORD(m.wParam), HIWORD(m.wParam), m.lParam});
        }
        return changes;
    }

    kiv_test::TempDeviceRoot root;
    HWND view = nullptr;
};

TEST_F(GisSelection, KeepsSelectionOrderAndTellsPointsFromLinesOfTheSameIndex) {
    CGisSelectionList list;
    EXPECT_TRUE(list.Add(Point(7)));
    EXPECT_TRUE(list.Add(Line(7)));
    EXPECT_TRUE(list.Add(Point(2)));
    EXPECT_FALSE(list.Add(Point(7)));
    EXPECT_FALSE(list.Add(TGisFeature{TPickResult::eNone, 1}));
    EXPECT_FALSE(list.Add(Point(-1)));
    TPickResult picked;
    picked.kind = TPickResult::eLine;
    picked.index = 0;
    EXPECT_TRUE(list.Add(picked));

    EXPECT_TRUE(list.Remove(Line(7)));
    EXPECT_FALSE(list.Remove(Line(7)));
    EXPECT_FALSE(list.Toggle(Point(2)));
    EXPECT_TRUE(list.Toggle(Line(7)));  // selected again: now last
    std::vector<TGisFeature> order(list.begin(), list.end());
    EXPECT_EQ(order, (std::vector<TGisFeature>{Point(7), Line(0), Line(7)}));
    EXPECT_TRUE(list.IsSelected(Point(7)));
    EXPECT_FALSE(list.IsSelected(Line(2)));
    EXPECT_EQ(list.GetAt(1), Line(0));

    CGisSelectionList copy = list;
    copy.Clear();
    EXPECT_EQ(list.GetCount(), 3);
    EXPECT_TRUE(copy.IsEmpty());
}

TEST_F(GisSelection, PostsOneMessagePerChangeAndNoneWhenNothingChanged) {
    CGisSelectionList list;
    list.SetNotifyWindow(view);
    list.Add(Point(4));
    list.Add(Point(4));
    list.Toggle(Line(9));
    list.Remove(Point(5));
    list.Toggle(Point(4));
    list.Add(Point(1));
    list.Clear();
    list.Clear();
    using L = CGisSelectionList;
    EXPECT_EQ(Changes(), (std::vector<Change>{{L::eAdded, TPickResult::ePoint, 4},
                                              {L::eAdded, TPickResult::eLine, 9},
                                              {L::eRemoved, TPickResult::ePoint, 4},
                                              {L::eAdded, TPickResult::ePoint, 1},
                                              {L::eCleared, 0, 2}}));

    list.SetNotifyWindow(view, WM_APP + 5);
    list.Add(Line(3));
    EXPECT_EQ(Changes(WM_APP + 5), (std::vector<Change>{{L::eAdded, TPickResult::eLine, 3}}));
    list.SetNotifyWindow(nullptr);
    list.Add(Line(4));
    DestroyWindow(view);
    list.SetNotifyWindow(view);  // a window that has gone hears nothing, and nothing fails
    EXPECT_TRUE(list.Add(Line(5)));
    view = nullptr;
}

DWORD WINAPI SelectOnAnotherThread(LPVOID parameter) {
    auto* list = static_cast<CGisSelectionList*>(parameter);
    for (int i = 0; i < 100; ++i) list->Add(Point(i));
    list->Clear();
    return 0;
}

TEST_F(GisSelection, ChangesMadeOnAWorkerReachTheWindowsThreadInOrder) {
    CGisSelectionList list;
    list.SetNotifyWindow(view);
    HANDLE worker = CreateThread(nullptr, 0, SelectOnAnotherThread, &list, 0, nullptr);
    ASSERT_NE(worker, nullptr);
    WaitForSingleObject(worker, INFINITE);
    CloseHandle(worker);
    const auto changes = Changes();
    ASSERT_EQ(changes.size(), 101u);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(changes[i], (Change{CGisSelectionList::eAdded, TPickResult::ePoint, i}));
    EXPECT_EQ(changes[100], (Change{CGisSelectionList::eCleared, 0, 100}));
}

}  // namespace
