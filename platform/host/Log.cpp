// The log sink every log of the platform and the library ends in. The default sink
// writes entries at or below KIV_LOG_LEVEL (default 1) to stderr, one line each.
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "platform/host/Host.h"
#include "platform/host/TextCodec.h"

namespace kiv_host {
namespace {

std::mutex& SinkLock() {
    static std::mutex* m = new std::mutex;
    return *m;
}

LogSink& Sink() {
    static LogSink* sink = new LogSink;
    return *sink;
}

int DefaultLevel() {
    static const int level = [] {
        const char* v = std::getenv("KIV_LOG_LEVEL");
        return v ? std::atoi(v) : 1;
    }();
    return level;
}

void WriteToStderr(const LogEntry& e) {
    if (e.level > DefaultLevel()) return;
    static const char* const names[] = {"error", "warning", "notice", "debug"};
    const char* name = (e.level >= 0 && e.level <= 3) ? names[e.level] : "log";
    std::string line;
    line.append("[").append(name).append("] ").append(e.source);
    if (e.line > 0) line.append(":").append(std::to_string(e.line));
    // Messages that end in their own line break keep one line each.
    std::wstring_view text = e.text;
    while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r')) text.remove_suffix(1);
    line.append(": ").append(kiv_text::ToUtf8(text)).append("\n");
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

void SetLogSink(LogSink sink) {
    std::lock_guard g(SinkLock());
    Sink() = std::move(sink);
}

void Log(int level, std::string_view source, int line, std::wstring_view text) {
    LogEntry entry{level, std::string(source), line, std::wstring(text)};
    LogSink sink;
    {
        std::lock_guard g(SinkLock());
        sink = Sink();
    }
    if (sink) sink(entry);
    else WriteToStderr(entry);
}

}  // namespace kiv_host
