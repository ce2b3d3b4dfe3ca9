// Short names stored in place, long ones on the heap; the string form on demand.
#include "utils/settings/ItemName.h"

#include <cwchar>

namespace kiv_settings_detail {

ItemName::ItemName(std::wstring_view text) : length_(static_cast<std::uint32_t>(text.size())) {
    wchar_t* to = inline_;
    if (length_ > kInline) to = heap_ = new wchar_t[length_];
    if (length_ > 0) std::wmemcpy(to, text.data(), length_);
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
