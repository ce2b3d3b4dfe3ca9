// Short names stored in place, long ones on the heap; the string form on demand.
#include "utils/settings/ItemName.h"

#include <cstring>
#include <cwchar>

namespace kiv_settings_detail {

ItemName::ItemName(std::wstring_view text) : length_(static_cast<std::uint32_t>(text.size())) {
    if (length_ > kInline) {
        heap_ = new wchar_t[length_];
        std::wmemcpy(heap_, text.data(), length_);
        return;
    }
    // A short name is copied in place, eight bytes a step: a call into the C library
    // costs more than the copy.
    constexpr std::uint32_t kStep = 8 / sizeof(wchar_t);
    std::uint32_t i = 0;
    for (; i + kStep <= length_; i += kStep) std::memcpy(inline_ + i, text.data() + i, 8);
    for (; i < length_; ++i) inline_[i] = text[i];
}

ItemName::~ItemName() {
    if (length_ > kInline) delete[] heap_;
    delete string_;
}

const CKivStringT& ItemName::AsString() const {
    if (!string_) string_ = new CKivStringT(view());
    return *string_;
}

}  // namespace kiv_settings_detail
