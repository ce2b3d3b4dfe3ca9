// CGisSelectionList: the map features the user has selected, by entity kind and index
// as the map's pick returns them, kept in the order they were selected. A window can
// ask to hear of every change: each one posts it a message that says what changed, so
// the receiver never has to read the list from another thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "platform/kivutils/Heap.h"
#include "platform/win32/Win32.h"
#include "utils/vector/RenderableBuffers.h"

// A selected feature: a point or a polyline of the image, by its index.
struct TGisFeature {
    TPickResult::EKind kind = TPickResult::eNone;
    int index = -1;

    friend bool operator==(const TGisFeature& a, const TGisFeature& b) { return a.kind == b.kind && a.index == b.index; }
};

class CGisSelectionList : public SharedHeapObject {
public:
    // The change message's default number. wParam: LOWORD the change, HIWORD the
    // feature's kind (0 for eCleared); lParam: the feature's index, or for eCleared the
    // number of features that were selected.
    static constexpr UINT kDefaultChangeMessage = WM_APP + 0x3A10;
    enum EChange { eAdded = 1, eRemoved = 2, eCleared = 3 };

    CGisSelectionList() = default;
    // Copies hold the same features and notify nobody.
    CGisSelectionList(const CGisSelectionList& other);
    CGisSelectionList& operator=(const CGisSelectionList& other);

    // The window (null: nobody) that hears of each change through `message`.
    void SetNotifyWindow(HWND window, UINT message = kDefaultChangeMessage);
    HWND GetNotifyWindow() const { return window_; }

    // Each change notifies; a call that changes nothing (adding a selected feature,
    // removing one that is not, clearing an empty list) does not. A feature of kind
    // eNone or a negative index is never selected.
    bool Add(const TGisFeature& feature);   // true when it was not selected before
    bool Add(const TPickResult& picked) { return Add(TGisFeature{picked.kind, picked.index}); }
    bool Remove(const TGisFeature& feature);  // true when it was selected
    // Selects the feature when it is not selected, else deselects it; the result is
    // whether it is selected afterwards.
    bool Toggle(const TGisFeature& feature);
    void Clear();

    bool IsSelected(const TGisFeature& feature) const;
    int GetCount() const { return static_cast<int>(order_.size()); }
    bool IsEmpty() const { return order_.empty(); }
    // The features in the order they were selected (a feature selected again after it
    // was removed counts from its new selection).
    const TGisFeature& GetAt(int position) const { return order_[static_cast<std::size_t>(position)]; }
    std::vector<TGisFeature>::const_iterator begin() const { return order_.begin(); }
    std::vector<TGisFeature>::const_iterator end() const { return order_.end(); }

private:
    struct Hash {
        std::size_t operator()(const TGisFeature& f) const noexcept {
            return std::hash<std::uint64_t>()((std::uint64_t(f.kind) << 32) | static_cast<std::uint32_t>(f.index));
        }
    };
    static bool IsFeature(const TGisFeature& feature);
    void Notify(EChange change, const TGisFeature& feature, LPARAM count) const;

    std::vector<TGisFeature> order_;
    std::unordered_set<TGisFeature, Hash> selected_;
    HWND window_ = nullptr;
    UINT message_ = kDefaultChangeMessage;
};
