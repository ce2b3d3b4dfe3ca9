// The settings tree's model over a small recording back end.
#include "utils/settings/ConfigStorage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "tests/support/TestSupport.h"

namespace {

// The back end's "file": persisted groups (by path) and values (path -> text or int).
struct Backing {
    Backing(std::vector<std::wstring> g = {}, std::map<std::wstring, CKivStringT> t = {},
            std::map<std::wstring, int> i = {})
        : groups(std::move(g)), texts(std::move(t)), integers(std::move(i)) {}
    std::vector<std::wstring> groups;
    std::map<std::wstring, CKivStringT> texts;
    std::map<std::wstring, int> integers;
    std::vector<std::wstring> events;
    std::vector<std::pair<std::wstring, int>> listed;  // what LoadAllValues finds, duplicates allowed
    int findValueCalls = 0;
    int loadAllValuesCalls = 0;
    int groupsAlive = 0;
};

std::wstring PathOf(CConfigGroup& g) {
    if (!g.GetParent()) return L"";
    const std::wstring parent = PathOf(*g.GetParent());
    return parent.empty() ? g.GetName().str() : parent + L"/" + g.GetName().str();
}

class RecValue : public CConfigValue {
public:
    RecValue(CConfigGroup& parent, const CKivStringT& name, Backing& b) : CConfigValue(parent, name), b_(b) {}
    RecValue(CConfigGroup& parent, const CKivStringT& name, Backing& b, int datum) : RecValue(parent, name, b) {
        SetValue(datum);
    }

private:
    std::wstring Path() { return PathOf(GetParent()) + L"/" + GetName().str(); }
    bool DoDelete() override {
        b_.events.push_back(L"delete value " + Path());
        return true;
    }
    bool DoLoad() override {
        if (auto t = b_.texts.find(Path()); t != b_.texts.end()) SetValue(t->second);
        if (auto i = b_.integers.find(Path()); i != b_.integers.end()) SetValue(i->second);
        return true;
    }
    void DoSave(bool) override { b_.events.push_back(L"save value " + Path()); }
    void DoSave(double) override { b_.events.push_back(L"save value " + Path()); }
    void DoSave(int) override { b_.events.push_back(L"save value " + Path()); }
    void DoSave(const CKivStringT&) override { b_.events.push_back(L"save value " + Path()); }
    Backing& b_;
};

class RecGroup : public CConfigGroup {
public:
    RecGroup(CConfigGroup& parent, const CKivStringT& name, Backing& b) : CConfigGroup(parent, name), b_(b) {
        ++b_.groupsAlive;
    }
    ~RecGroup() override { --b_.groupsAlive; }

private:
    bool Persisted(const std::wstring& path) { return std::find(b_.groups.begin(), b_.groups.end(), path) != b_.groups.end(); }
    CConfigValue* CreateValue(const CKivStringT& name) override { return new RecValue(*this, name, b_); }
    CConfigGroup* CreateGroup(const CKivStringT& name) override { return new RecGroup(*this, name, b_); }
    CConfigValue* FindValue(const CKivStringT& name) override {
        ++b_.findValueCalls;
        const std::wstring path = PathOf(*this) + L"/" + name.str();
        if (b_.texts.count(path) || b_.integers.count(path)) return new RecValue(*this, name, b_);
        return nullptr;
    }
    CConfigGroup* FindGroup(const CKivStringT& name) override {
        return Persisted(PathOf(*this) + L"/" + name.str()) ? new RecGroup(*this, name, b_) : nullptr;
    }
    void DoDelete() override { b_.events.push_back(L"delete group " + PathOf(*this)); }
    void LoadAllValues() override {
        ++b_.loadAllValuesCalls;
        const std::wstring prefix = PathOf(*this) + L"/";
        for (auto& [path, datum] : b_.listed)
            if (path.rfind(prefix, 0) == 0) new RecValue(*this, CKivStringT(path.substr(prefix.size())), b_, datum);
    }
    void LoadAllGroups() override {}
    void DoSave() override { b_.events.push_back(L"save group " + PathOf(*this)); }
    Backing& b_;
};

class RecStorage : public CConfigStorage {
public:
    explicit RecStorage(Backing& b) : b_(&b) {}
    RecStorage(const RecStorage& other) = default;
    RecStorage& operator=(const RecStorage& other) = default;
    using CConfigStorage::GetNumberOfReferences;

    void OnValueAdded(CConfigValue& v) override { b_->events.push_back(L"value added " + v.GetName().str()); }
    void OnValueChanged(CConfigValue& v) override { b_->events.push_back(L"value changed " + v.GetName().str()); }
    void OnGroupAdded(CConfigGroup& g) override { b_->events.push_back(L"group added " + g.GetName().str()); }

private:
    CConfigGroup* CreateGroup(CConfigGroup& parent, const CKivStringT& name) override {
        return new RecGroup(parent, name, *b_);
    }
    CConfigGroup* FindGroup(CConfigGroup& parent, const CKivStringT& name) override {
        const bool persisted = std::find(b_->groups.begin(), b_->groups.end(), name.str()) != b_->groups.end();
        return persisted ? new RecGroup(parent, name, *b_) : nullptr;
    }
    void LoadAllGroups(CConfigGroup&) override {}
    Backing* b_;
};

using Events = std::vector<std::wstring>;

}  // namespace

TEST(ConfigValueWrites, OnlyRealChangesAreSavedAndNotified) {
    Backing b{{L"G"}, {{L"G/t", L"5"}}, {{L"G/n", 7}}};
    RecStorage s(b);
    CConfigGroup& g = s.GetGroup(L"G");
    g.SetIntegerValue(L"n", 7);
    EXPECT_EQ(b.events, Events{});
    // A type change from text to integer is a change even with the same digits.
    CConfigValue& t = g.GetValue(L"t");
    t.SetAsInteger(5);
    EXPECT_EQ(b.events, (Events{L"save value G/t", L"value changed t"}));
    EXPECT_EQ(t.GetAsString(L"dflt"), L"dflt");
    EXPECT_EQ(t.GetAsInteger(0), 5);
    b.events.clear();
    g.SetBooleanValue(L"flag", false);
    EXPECT_EQ(b.events, (Events{L"save value G/flag", L"value added flag"}));
    // Empty text is a value; setting it again changes nothing.
    b.events.clear();
    CConfigValue& e = g.GetValue(L"e");
    e.SetAsString(L"");
    e.SetAsString(L"");
    EXPECT_EQ(b.events.size(), 2u);
    EXPECT_TRUE(e.HasValue());
    EXPECT_TRUE(e.IsEqualTo(CKivStringT(L"")));
    EXPECT_FALSE(e.IsEqualTo(CKivStringT(L"x")));
    // Text is copied, and compared case-sensitively.
    {
        CKivStringT text(L"Stake");
        e.SetAsString(text);
    }
    EXPECT_EQ(e.GetAsString(), L"Stake");
    b.events.clear();
    e.SetAsString(L"stake");
    EXPECT_EQ(b.events, (Events{L"save value G/e", L"value changed e"}));
}

TEST(ConfigValueWrites, NewGroupsAreSavedOutermostFirstBeforeTheValue) {
    Backing b;
    RecStorage s(b);
    s.GetGroup(L"A").GetGroup(L"B").SetIntegerValue(L"x", 1);
    EXPECT_EQ(b.events, (Events{L"save group A", L"group added A", L"save group A/B", L"group added B",
                                L"save value A/B/x", L"value added x"}));
    b.events.clear();
    s.GetGroup(L"A").GetGroup(L"B").SetIntegerValue(L"y", 2);
    EXPECT_EQ(b.events, (Events{L"save value A/B/y", L"value added y"}));
}

TEST(ConfigValueReads, MissingValuesGiveDefaultsAndGettersNeverConvert) {
    Backing b{{L"G"}, {}, {{L"G/n", 3}}};
    RecStorage s(b);
    CConfigGroup& g = s.GetGroup(L"G");
    CConfigValue& d = g.GetValue(L"d");
    EXPECT_EQ(d.GetAsDouble(2.5), 2.5);
    EXPECT_EQ(d.GetType(), CConfigValue::Double);
    EXPECT_FALSE(d.HasValue());
    EXPECT_EQ(b.events, Events{});
    EXPECT_EQ(g.GetDoubleValue(L"n", -1.0), -1.0);
    EXPECT_EQ(g.GetBooleanValue(L"n", true), true);
    EXPECT_EQ(g.GetStringValue(L"n"), L"");
    EXPECT_EQ(g.GetIntegerValue(L"n", 0), 3);
    g.SetDoubleValue(L"d", 0.1);
    EXPECT_TRUE(g.GetValue(L"d").IsEqualTo(0.1));
    EXPECT_FALSE(g.GetValue(L"d").IsEqualTo(1));
}

TEST(ConfigGroupLookup, IndexedAndCaseSensitiveNames) {
    Backing b{{L"G"}};
    RecStorage s(b);
    CConfigGroup& g = s.GetGroup(L"G");
    EXPECT_EQ(g.GetValue(L"Code", 12).GetName(), L"Code_12");
    EXPECT_EQ(&g.GetValue(L"Code", 12), &g.GetValue(L"Code_12"));
    EXPECT_EQ(s.GetGroup(L"Point", 3).GetName(), L"Point_3");
    g.SetIntegerValue(L"Units", 1);
    g.SetIntegerValue(L"units", 2);
    EXPECT_EQ(g.GetIntegerValue(L"Units", 0), 1);
    EXPECT_EQ(g.GetIntegerValue(L"units", 0), 2);
}

TEST(ConfigGroupLookup, FirstOfDuplicateNamesWinsAndTheNextTakesOverWhenItIsDeleted) {
    Backing b{{L"G"}};
    b.listed = {{L"G/a", 1}, {L"G/b", 2}, {L"G/a", 3}};
    RecStorage s(b);
    CConfigGroup& g = s.GetGroup(L"G");
    ASSERT_EQ(g.GetNumberOfValues(), 3u);
    EXPECT_EQ(g.GetNumberOfValues(), 3u);
    EXPECT_EQ(b.loadAllValuesCalls, 1);
    EXPECT_EQ(g.GetIntegerValue(L"a", 0), 1);
    g.GetValue(L"a").Delete();
    EXPECT_EQ(g.GetIntegerValue(L"a", 0), 3);
    ASSERT_EQ(g.GetNumberOfValues(), 2u);
    EXPECT_EQ(g.GetValue(0u).GetName(), L"b");
    EXPECT_EQ(g.GetValue(1u).GetName(), L"a");
    g.GetValue(L"a").Delete();
    EXPECT_EQ(b.events, (Events{L"delete value G/a", L"delete value G/a"}));
    EXPECT_EQ(b.findValueCalls, 0);
    EXPECT_EQ(g.GetIntegerValue(L"a", -1), -1);
    EXPECT_EQ(b.findValueCalls, 1);
}

TEST(ConfigGroupLookup, NewGroupNeverAsksTheBackEnd) {
    Backing b;
    RecStorage s(b);
    CConfigGroup& g = s.GetGroup(L"Fresh");
    g.GetIntegerValue(L"x", 0);
    EXPECT_EQ(g.GetNumberOfValues(), 1u);
    EXPECT_EQ(b.findValueCalls, 0);
    EXPECT_EQ(b.loadAllValuesCalls, 0);
}

TEST(ConfigGroupLookup, TenThousandValuesAreEachFoundByName) {
    Backing b;
    RecStorage s(b);
    CConfigGroup& g = s.GetGroup(L"Big");
    for (int i = 0; i < 10000; ++i) g.SetIntegerValue(CKivStringT(std::to_wstring(i)), i);
    for (int i = 0; i < 10000; i += 7) ASSERT_EQ(g.GetIntegerValue(CKivStringT(std::to_wstring(i)), -1), i);
    EXPECT_EQ(g.GetNumberOfValues(), 10000u);
}

TEST(ConfigGroupLookup, NamesOfEveryLengthAreKeptAndFound) {
    // Short names live inside the value and long ones beside it.
    Backing b;
    RecStorage s(b);
    CConfigGroup& g = s.GetGroup(L"G");
    std::vector<std::wstring> names{L""};
    for (size_t length = 0; length <= 30; ++length) names.push_back(std::wstring(length, L'n') + L"\u00e9\U0001F600");
    for (size_t i = 0; i < names.size(); ++i) g.SetIntegerValue(CKivStringT(names[i]), static_cast<int>(i));
    for (size_t i = 0; i < names.size(); ++i) {
        CConfigValue& v = g.GetValue(CKivStringT(names[i]));
        EXPECT_EQ(v.GetName(), CKivStringT(names[i]));
        EXPECT_EQ(&v.GetName(), &v.GetName());
        EXPECT_EQ(v.GetAsInteger(-1), static_cast<int>(i));
    }
    EXPECT_EQ(g.GetNumberOfValues(), names.size());
}

TEST(ConfigGroupLookup, StandInsForMistakenAccessReadDefaultsAndTakeNoWrites) {
    kiv_test::LogCapture log;
    // G exists only in memory: a write that reached the model would save it and notify.
    Backing b;
    RecStorage s(b);
    CConfigGroup& g = s.GetGroup(L"G");
    CConfigGroup* root = g.GetParent();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->GetIntegerValue(L"x", 9), 9);
    EXPECT_EQ(root->GetNumberOfValues(), 0u);
    EXPECT_EQ(g.GetValue(5u).GetAsInteger(4), 4);
    EXPECT_EQ(s.GetGroup(40u).GetNumberOfGroups(), 0u);
    EXPECT_EQ(log.count(), 2u);
    g.GetValue(5u).SetAsInteger(3);
    root->SetIntegerValue(L"x", 2);
    s.GetGroup(40u).SetIntegerValue(L"y", 1);
    s.GetGroup(40u).GetGroup(L"Sub").SetStringValue(L"z", L"t");
    g.GetGroup(9u).GetValue(0u).SetAsBoolean(true);
    EXPECT_TRUE(b.events.empty()) << b.events.front();
    EXPECT_EQ(g.GetValue(5u).GetAsInteger(4), 4);
    EXPECT_EQ(s.GetGroup(40u).GetIntegerValue(L"y", 8), 8);
    EXPECT_EQ(s.GetGroup(40u).GetGroup(L"Sub").GetStringValue(L"z", L"d"), L"d");
    EXPECT_EQ(g.GetNumberOfValues(), 0u);
    g.SetIntegerValue(L"n", 1);
    EXPECT_EQ(b.events, (Events{L"save group G", L"group added G", L"save value G/n", L"value added n"}));
}

TEST(ConfigGroupDelete, RootIgnoresDeleteAndGroupsTakeTheirSubtree) {
    Backing b{{L"G"}};
    {
        RecStorage s(b);
        CConfigGroup& g = s.GetGroup(L"G");
        g.GetGroup(L"Sub").GetGroup(L"Leaf");
        g.GetParent()->Delete();
        EXPECT_EQ(s.GetNumberOfGroups(), 1u);
        EXPECT_EQ(b.groupsAlive, 3);
        g.Delete();
        EXPECT_EQ(b.groupsAlive, 0);
        EXPECT_EQ(s.GetNumberOfGroups(), 0u);
    }
    EXPECT_EQ(b.events, (Events{L"delete group G"}));
}

TEST(ConfigStorageSharing, CopiesSeeOneTreeThatGoesWithTheLastCopy) {
    Backing b;
    auto* first = new RecStorage(b);
    first->GetGroup(L"A").SetIntegerValue(L"x", 4);
    auto* second = new RecStorage(*first);
    EXPECT_EQ(second->GetNumberOfReferences(), 2u);
    EXPECT_EQ(second->GetGroup(L"A").GetIntegerValue(L"x", 0), 4);
    delete first;
    EXPECT_EQ(b.groupsAlive, 1);
    // The survivor now receives the tree's notifications.
    second->GetGroup(L"A").SetIntegerValue(L"x", 5);
    EXPECT_EQ(b.events.back(), L"value changed x");
    delete second;
    EXPECT_EQ(b.groupsAlive, 0);
}

TEST(ConfigStorageSharing, AssignmentDropsTheOldTreeAndSurvivesSelfAssignment) {
    Backing b1, b2;
    RecStorage one(b1), two(b2);
    one.GetGroup(L"A");
    two.GetGroup(L"B");
    one = one;
    EXPECT_EQ(one.GetNumberOfReferences(), 1u);
    one = two;
    EXPECT_EQ(b1.groupsAlive, 0);
    EXPECT_EQ(two.GetNumberOfReferences(), 2u);
    EXPECT_EQ(one.GetGroup(0u).GetName(), L"B");
}
