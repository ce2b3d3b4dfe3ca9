// Forwards the family's logs to the host's sink.
#include "platform/kivutils/KivLog.h"

#include <cstdarg>
#include <string_view>

#include "platform/kivutils/KivString.h"

namespace {
// "/src/utils/vector/PoolManager.cpp" names the source "PoolManager".
std::string_view SourceStem(const char* file) {
    std::string_view s(file ? file : "");
    if (const size_t slash = s.find_last_of("/\\"); slash != std::string_view::npos) s.remove_prefix(slash + 1);
    if (const size_t dot = s.find('.'); dot != std::string_view::npos) s = s.substr(0, dot);
    return s;
}
}  // namespace

void kiv_err_log(const char* source, int line, const wchar_t* message) {
    kiv_host::Log(0, source ? source : "", line, message ? message : L"");
}

void kiv_log_message(int level, const char* file, int line, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const std::wstring text = kiv_strings::FormatWide(format, args);
    va_end(args);
    kiv_host::Log(level, SourceStem(file), line, text);
}
