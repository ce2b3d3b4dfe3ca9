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
    RecGroup(CConfigGroup& parent, const CKivStringT& name, Backing& b) : CConfigGroup(parent, name), b_(b) {}

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
