// The language table is immutable once loaded and published through an atomic pointer;
// replaced tables are kept (they are small) so that returned texts never dangle.
#include "platform/kivutils/Xlate.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/KivLog.h"
#include "platform/win32/WholeFile.h"

namespace {

struct ViewHash {
    using is_transparent = void;
    size_t operator()(std::wstring_view v) const noexcept { return std::hash<std::wstring_view>()(v); }
};
using Table = std::unordered_map<std::wstring, std::wstring, ViewHash, std::equal_to<>>;

std::atomic<const Table*> current{nullptr};
std::mutex retiredLock;
std::vector<std::unique_ptr<Table>>& Retired() {
    static auto* tables = new std::vector<std::unique_ptr<Table>>;
    return *tables;
}

constexpr size_t kMaxFileBytes = 16u << 20;

bool Unescape(std::wstring_view in, std::wstring& out) {
    out.clear();
    for (size_t i = 0; i < in.size(); ++i) {
        if (in[i] != L'\\') {
            out.push_back(in[i]);
            continue;
        }
        if (++i == in.size()) return false;
        switch (in[i]) {
            case L't': out.push_back(L'\t'); break;
            case L'n': out.push_back(L'\n'); break;
            case L'\\': out.push_back(L'\\'); break;
            default: return false;
        }
    }
    return true;
}

void Publish(std::unique_ptr<Table> table) {
    std::lock_guard g(retiredLock);
    current.store(table.get());
    Retired().push_back(std::move(table));
    kiv_host::AddResetHook("Xlate", [] { current.store(nullptr); });
}

}  // namespace

const wchar_t* Xlate(const wchar_t* text) {
    const Table* table = current.load(std::memory_order_acquire);
    if (!table || !text) return text;
    const auto it = table->find(std::wstring_view(text));
    return it == table->end() ? text : it->second.c_str();
}

bool LoadLanguageFile(const wchar_t* path) {
    if (!path) return false;
    std::string bytes;
    if (!kiv_win32::ReadWholeFile(path, bytes, kMaxFileBytes)) {
        LOGMESSAGE(1, L"cannot read language file %s (at most 16 MiB)", path);
        return false;
    }
    const std::wstring text = kiv_text::DecodeText(bytes);
    auto table = std::make_unique<Table>();
    size_t lineNo = 0;
    for (size_t pos = 0; pos <= text.size();) {
        size_t end = text.find(L'\n', pos);
        if (end == std::wstring::npos) end = text.size();
        std::wstring_view line(text.data() + pos, end - pos);
        pos = end + 1;
        ++lineNo;
        if (!line.empty() && line.back() == L'\r') line.remove_suffix(1);
        if (line.empty() || line.front() == L'#') continue;
        const size_t tab = line.find(L'\t');
        std::wstring original, translated;
        if (tab == std::wstring_view::npos || !Unescape(line.substr(0, tab), original) ||
            !Unescape(line.substr(tab + 1), translated)) {
            LOGMESSAGE(1, L"language file %s: line %d is not an original, a tab and a translation", path,
                       static_cast<int>(lineNo));
            return false;
        }
        table->insert_or_assign(std::move(original), std::move(translated));
    }
    Publish(std::move(table));
    return true;
}

void UnloadLanguage() { current.store(nullptr); }
