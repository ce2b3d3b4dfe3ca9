// The name of a settings value, kept inside the value itself when it is short (as
// setting names mostly are), so that a value read from a file costs one allocation and a
// lookup by name reads no second block. The family's string form is made only when it is
// asked for.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/kivutils/KivString.h"

namespace kiv_settings_detail {

class ItemName {
public:
    explicit ItemName(std::wstring_view text);
    ~ItemName();
    ItemName(const ItemName&) = delete;
    ItemName& operator=(const ItemName&) = delete;

    std::wstring_view view() const { return {length_ <= kInline ? inline_ : heap_, length_}; }
    // The same name as a CKivStringT, made on the first call and kept as long as the name.
    const CKivStringT& AsString() const;

private:
    static constexpr std::uint32_t kInline = 11;

    std::uint32_t length_;
    union {
        wchar_t inline_[kInline];
        wchar_t* heap_;
    };
    mutable CKivStringT* string_ = nullptr;
};

}  // namespace kiv_settings_detail
