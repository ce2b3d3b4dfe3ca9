// Feeds arbitrary bytes to the history verifier, which must end with a verdict, never
// read outside the input or crash; then to the history writer as an existing file,
// which must keep it byte for byte when nothing is written, and every byte before the
// place it may continue from when a session is appended.
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "fuzz/ScratchFolder.h"
#include "platform/host/TextCodec.h"
#include "utils/settings/HistoryVerifier.h"
#include "utils/settings/XMLWriter.h"

namespace {

const std::string& FilePath() {
    static ScratchFolder scratch("kivfuzz-history");
    static const std::string file = (scratch.ready() ? scratch.path() : std::string("/tmp")) + "/history.xml";
    return file;
}

void Put(const std::string& bytes) {
    std::ofstream out(FilePath(), std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string Get() {
    std::ifstream in(FilePath(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

char16_t UnitAt(const std::string& b, size_t i) {
    return static_cast<char16_t>(static_cast<unsigned char>(b[2 * i]) | static_cast<unsigned char>(b[2 * i + 1]) << 8);
}

// The first byte a reopening writer may replace: where the root's end tag starts when
// the last 18 or 20 characters hold it; else the start of a last line cut inside a tag
// (a '<' with no '>' after it, a CR LF before it); else the end of the last whole character.
size_t MayRewriteFrom(const std::string& b) {
    const std::u16string tag = u"</NurvoJobHistory>";
    const size_t chars = b.size() / 2, whole = 2 * chars, length = tag.size();
    if (chars < length) return whole;
    const size_t n = length + (chars >= (length + 2) * 2 ? 2 : 0);
    std::u16string window;
    for (size_t i = chars - n; i < chars; ++i) window += UnitAt(b, i);
    if (const size_t k = window.find(tag); k != std::u16string::npos) return whole - 2 * n + 2 * k;
    bool insideTag = false;
    for (size_t i = chars; i-- > 0;) {
        const char16_t c = UnitAt(b, i);
        if (c == u'\r' && i + 1 < chars && UnitAt(b, i + 1) == u'\n') return insideTag ? 2 * (i + 2) : whole;
        if (insideTag) continue;
        if (c == u'>') return whole;
        insideTag = c == u'<';
    }
    return whole;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const auto verdict = kiv_history::VerifyHistory(input);
    if (verdict.ok && !verdict.problem.empty()) __builtin_trap();

    const CKivStringT path(kiv_text::FromUtf8(FilePath()));
    bool created = true;
    Put(input);
    {
        CXMLWriter writer;
        if (!writer.Open(path, created) || created) __builtin_trap();
        writer.Close();
    }
    if (Get() != input) __builtin_trap();
    {
        CXMLWriter writer;
        if (!writer.Open(path, created) || created) __builtin_trap();
        writer.WriteElementString(L"Point", L"P17");
        writer.WriteCheckSum();
        writer.WriteEndElement();
        writer.Close();
    }
    const std::string after = Get();
    const size_t kept = MayRewriteFrom(input);
    if (after.size() < kept || after.compare(0, kept, input, 0, kept) != 0) __builtin_trap();
    (void)kiv_history::VerifyHistory(after);
    return 0;
}
