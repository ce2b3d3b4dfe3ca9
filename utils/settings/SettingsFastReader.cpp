// The strict settings reader: one pass checks the whole text and records where each
// group and value lies; only a text that passes becomes a tree. Whatever the platform's
// tokenizer might read differently (entities, comments, odd markup, other encodings,
// nameless groups, stray text) makes it decline.
#include "utils/settings/SettingsFastReader.h"

#include <string>
#include <vector>

#include "platform/host/TextCodec.h"
#include "utils/settings/XmlConfigStorage.h"

namespace kiv_settings_detail {

namespace {

struct Item {
    enum Kind { OpenGroup, CloseGroup, Value } kind;
    std::string_view name;
    std::string_view type;
    std::string_view content;
};

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool IsNameChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == ':' ||
           c == '-' || c == '.';
}

// Text that both readers take exactly as it stands: no markup, entity or control
// character (and, inside an attribute, no quote).
bool IsPlainText(std::string_view s, bool attribute) {
    for (char c : s) {
        const auto u = static_cast<unsigned char>(c);
        if (u < 0x20 || c == '<' || c == '>' || c == '&') return false;
        if (attribute && (c == '"' || c == '\'')) return false;
    }
    return true;
}

class Scanner {
public:
    explicit Scanner(std::string_view text) : s_(text) {}

    bool Run(std::vector<Item>& items) {
        if (!Prolog() || !Literal("<kiv_config>")) return false;
        int depth = 0;
        for (;;) {
            SkipBlanks();
            if (Literal("</kiv_config>")) break;
            if (Literal("</group>")) {
                if (--depth < 0) return false;
                items.push_back({Item::CloseGroup, {}, {}, {}});
                continue;
            }
            std::string_view tag;
            Attributes attributes;
            if (!StartTag(tag, attributes)) return false;
            if (tag == "group") {
                if (attributes.name.empty() || ++depth > kMaxGroupDepth) return false;
                items.push_back({Item::OpenGroup, attributes.name, {}, {}});
            } else if (tag == "value" && depth > 0) {
                const size_t end = s_.find('<', pos_);
                if (end == std::string_view::npos) return false;
                const std::string_view content = s_.substr(pos_, end - pos_);
                if (!IsPlainText(content, false)) return false;
                pos_ = end;
                if (!Literal("</value>")) return false;
                if (!attributes.name.empty() && !attributes.type.empty())
                    items.push_back({Item::Value, attributes.name, attributes.type, content});
            } else {
                return false;
            }
        }
        SkipBlanks();
        return depth == 0 && pos_ == s_.size();
    }

private:
    struct Attributes {
        std::string_view name, type;
        bool sawName = false, sawType = false;
    };

    bool Prolog() {
        SkipBlanks();
        if (s_.substr(pos_, 5) == "<?xml") {
            const size_t end = s_.find("?>", pos_);
            if (end == std::string_view::npos || !IsPlainDeclaration(s_.substr(pos_ + 5, end - pos_ - 5))) return false;
            pos_ = end + 2;
        }
        SkipBlanks();
        return true;
    }

    static bool IsPlainDeclaration(std::string_view body) {
        for (char c : body)
            if (c == '<' || c == '>' || (static_cast<unsigned char>(c) < 0x20 && !IsBlank(c))) return false;
        return true;
    }

    // "<name attr="v" ...>" with double-quoted plain values; the first of each name counts.
    bool StartTag(std::string_view& tag, Attributes& attributes) {
        if (pos_ >= s_.size() || s_[pos_] != '<') return false;
        size_t i = pos_ + 1;
        const size_t nameStart = i;
        while (i < s_.size() && IsNameChar(s_[i])) ++i;
        tag = s_.substr(nameStart, i - nameStart);
        if (tag.empty()) return false;
        for (;;) {
            const size_t blanks = i;
            while (i < s_.size() && IsBlank(s_[i])) ++i;
            if (i < s_.size() && s_[i] == '>') {
                pos_ = i + 1;
                return true;
            }
            if (i == blanks) return false;
            const size_t attrStart = i;
            while (i < s_.size() && IsNameChar(s_[i])) ++i;
            const std::string_view attr = s_.substr(attrStart, i - attrStart);
            if (attr.empty() || i + 1 >= s_.size() || s_[i] != '=' || s_[i + 1] != '"') return false;
            const size_t valueStart = i + 2;
            const size_t close = s_.find('"', valueStart);
            if (close == std::string_view::npos) return false;
            const std::string_view value = s_.substr(valueStart, close - valueStart);
            if (!IsPlainText(value, true)) return false;
            if (attr == "name" && !attributes.sawName) attributes.name = value, attributes.sawName = true;
            if (attr == "type" && !attributes.sawType) attributes.type = value, attributes.sawType = true;
            i = close + 1;
        }
    }

    bool Literal(std::string_view text) {
        if (s_.substr(pos_, text.size()) != text) return false;
        pos_ += text.size();
        return true;
    }

    void SkipBlanks() {
        while (pos_ < s_.size() && IsBlank(s_[pos_])) ++pos_;
    }

    std::string_view s_;
    size_t pos_ = 0;
};

CKivStringT Wide(std::string_view utf8) {
    std::wstring out(utf8.size(), L'\0');
    for (size_t i = 0; i < utf8.size(); ++i) {
        const auto c = static_cast<unsigned char>(utf8[i]);
        if (c >= 0x80) return CKivStringT(kiv_text::FromUtf8(utf8));
        out[i] = static_cast<wchar_t>(c);
    }
    return CKivStringT(std::move(out));
}

bool IsAscii(std::string_view s) {
    for (char c : s)
        if (static_cast<unsigned char>(c) >= 0x80) return false;
    return true;
}

}  // namespace

bool ReadOrdinarySettings(std::string_view bytes, CConfigGroup& root) {
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
    if (!IsAscii(bytes) && !kiv_text::IsValidUtf8(bytes)) return false;
    std::vector<Item> items;
    items.reserve(bytes.size() / 48);
    if (!Scanner(bytes).Run(items)) return false;
    std::vector<CConfigGroup*> open{&root};
    for (const Item& item : items) {
        switch (item.kind) {
            case Item::OpenGroup: open.push_back(new CXmlConfigGroup(*open.back(), Wide(item.name))); break;
            case Item::CloseGroup: open.pop_back(); break;
            case Item::Value:
                CreateLoadedValue(static_cast<CXmlConfigGroup&>(*open.back()), Wide(item.name), Wide(item.type),
                                  Wide(item.content));
                break;
        }
    }
    return true;
}

}  // namespace kiv_settings_detail
