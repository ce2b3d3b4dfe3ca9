// The selection list: an ordered list for iteration and a hash set for membership.
#include "utils/runtime/GisSelection.h"

#include <algorithm>

CGisSelectionList::CGisSelectionList(const CGisSelectionList& other)
    : order_(other.order_), selected_(other.selected_) {}

CGisSelectionList& CGisSelectionList::operator=(const CGisSelectionList& other) {
    if (this != &other) {
        order_ = other.order_;
        selected_ = other.selected_;
    }
    return *this;
}

void CGisSelectionList::SetNotifyWindow(HWND window, UINT message) {
    window_ = window;
    message_ = message;
}

bool CGisSelectionList::IsFeature(const TGisFeature& feature) {
    return (feature.kind == TPickResult::ePoint || feature.kind == TPickResult::eLine) && feature.index >= 0;
}

void CGisSelectionList::Notify(EChange change, const TGisFeature& feature, LPARAM value) const {
    // Posted, not sent: the list's owner never waits for the window's thread. A window
    // that has gone simply hears nothing.
    if (window_) PostMessageW(window_, message_, MAKEWPARAM(change, change == eCleared ? 0 : feature.kind), value);
}

bool CGisSelectionList::Add(const TGisFeature& feature) {
    if (!IsFeature(feature) || !selected_.insert(feature).second) return false;
    order_.push_back(feature);
    Notify(eAdded, feature, feature.index);
    return true;
}

bool CGisSelectionList::Remove(const TGisFeature& feature) {
    if (selected_.erase(feature) == 0) return false;
    order_.erase(std::find(order_.begin(), order_.end(), feature));
    Notify(eRemoved, feature, feature.index);
    return true;
}

bool CGisSelectionList::Toggle(const TGisFeature& feature) {
    if (Remove(feature)) return false;
    return Add(feature);
}

void CGisSelectionList::Clear() {
    if (order_.empty()) return;
    const auto count = static_cast<LPARAM>(order_.size());
    order_.clear();
    selected_.clear();
    Notify(eCleared, TGisFeature{}, count);
}

bool CGisSelectionList::IsSelected(const TGisFeature& feature) const { return selected_.count(feature) != 0; }
