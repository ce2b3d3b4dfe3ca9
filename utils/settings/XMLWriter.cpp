// The forward-only XML writer and the checksummed history writer.
#include "utils/settings/XMLWriter.h"

#include <string_view>

#include "platform/kivutils/FileFuncs.h"
#include "utils/settings/HistoryCheckSum.h"

namespace {

constexpr UINT kOpenFlags = CFile::modeCreate | CFile::modeNoTruncate | CFile::shareDenyWrite | CFile::typeBinary;
const wchar_t kHistoryRoot[] = L"NurvoJobHistory";
const wchar_t kDeclaration[] = L"<?xml version=\"1.0\"?>";

unsigned long CharacterOf(wchar_t wc) {
    const auto c = static_cast<unsigned long>(wc);
    return (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) ? 0xFFFD : c;
}

// Appends the text as UTF-16LE: characters beyond the BMP as surrogate pairs, anything
// that is no character as U+FFFD. One resize, then the bytes are filled in place.
void AppendUtf16(std::string& out, std::wstring_view text) {
    size_t units = text.size();
    for (wchar_t wc : text) units += CharacterOf(wc) > 0xFFFF;
    const size_t start = out.size();
    out.resize(start + 2 * units);
    char* p = out.data() + start;
    auto put = [&p](unsigned long unit) {
        *p++ = static_cast<char>(unit & 0xFF);
        *p++ = static_cast<char>(unit >> 8);
    };
    for (wchar_t wc : text) {
        const unsigned long c = CharacterOf(wc);
        if (c < 0x10000) {
            put(c);
        } else {
            put(0xD800 + ((c - 0x10000) >> 10));
            put(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
}

std::u16string ToUnits(std::string_view utf16le) {
    std::u16string units(utf16le.size() / 2, u'\0');
    for (size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(utf16le[2 * i]) |
                                         (static_cast<unsigned char>(utf16le[2 * i + 1]) << 8));
    return units;
}

}  // namespace

// ---- CXMLWriterBase ----------------------------------------------------------------------

CXMLWriterBase::CXMLWriterBase() = default;

CXMLWriterBase::~CXMLWriterBase() { Close(); }

bool CXMLWriterBase::IsOpen() const { return m_file.IsOpen(); }

bool CXMLWriterBase::Open(const CKivStringT& path, bool& created) {
    CallScope scope(*this);
    const bool exists = FileFuncs::IsFileExist(path) != FALSE;
    if (IsOpen()) Close();
    if (!m_file.Open(path, CFile::modeReadWrite | kOpenFlags)) return false;
    m_file.SeekToEnd();
    m_cutAt = -1;
    // An existing file is never begun anew, whatever it holds: it may be somebody's.
    created = !exists;
    InitOnOpen(!exists);
    FlushPending();
    ReOpen(path);
    return true;
}

bool CXMLWriterBase::ReOpen(const CKivStringT& path) {
    FlushPending();
    const LONG position = IsOpen() ? static_cast<LONG>(m_file.GetPosition()) : 0;
    Close();
    if (!m_file.Open(path, CFile::modeWrite | kOpenFlags)) return false;
    m_file.Seek(position, CFile::begin);
    return true;
}

void CXMLWriterBase::Close() {
    FlushPending();
    if (IsOpen()) m_file.Close();
}

void CXMLWriterBase::Write(const CKivStringT& text) {
    if (!IsOpen()) return;
    AppendUtf16(m_pending, text.view());
    if (m_callDepth == 0) FlushPending();
}

void CXMLWriterBase::WriteRawBytes(const void* bytes, unsigned count) {
    if (!IsOpen()) return;
    m_pending.append(static_cast<const char*>(bytes), count);
    if (m_callDepth == 0) FlushPending();
}

void CXMLWriterBase::FlushPending() {
    if (m_pending.empty()) return;
    if (IsOpen()) {
        // A torn line that the rewind stepped back over goes only now, when its
        // replacement is written: a writer opened and closed with nothing to say
        // leaves the file exactly as it found it.
        if (m_cutAt >= 0) m_file.SetLength(static_cast<DWORD>(m_cutAt));
        m_file.Write(m_pending.data(), static_cast<UINT>(m_pending.size()));
    }
    m_cutAt = -1;
    m_pending.clear();
}

void CXMLWriterBase::InitOnOpen(bool) {}

void CXMLWriterBase::WriteLine(const CKivStringT& text) { Write(text + L"\r\n"); }

void CXMLWriterBase::FlushElementIfNeeded() {
    const int top = m_elements.GetSize() - 1;
    for (int i = m_writtenCount; i <= top; ++i) {
        m_tag.Empty();
        for (int space = 0; space < i; ++space) m_tag += L' ';
        m_tag += L'<';
        m_tag += m_elements[i];
        m_tag += i == top ? L">" : L">\r\n";
        // The innermost start tag stays open on its line for the content that follows.
        Write(m_tag);
    }
    m_writtenCount = m_elements.GetSize();
    m_startTagPending = false;
}

void CXMLWriterBase::WriteStartElement(const CKivStringT& name) {
    m_elements.Add(name);
    m_startTagPending = true;
    ++m_depth;
}

void CXMLWriterBase::WriteString(const CKivStringT& text) {
    CallScope scope(*this);
    FlushElementIfNeeded();
    // Deliberate: text goes out as it stands, unescaped, as the history files always had it.
    Write(text);
    m_startTagPending = false;
}

void CXMLWriterBase::WriteEndElement() {
    if (m_elements.IsEmpty()) return;
    CallScope scope(*this);
    FlushElementIfNeeded();
    --m_writtenCount;
    --m_depth;
    m_tag = L"</";
    m_tag += m_elements[m_elements.GetSize() - 1];
    m_tag += L">\r\n";
    m_elements.RemoveAt(m_elements.GetSize() - 1);
    // End tags are never indented: an element with children closes at the line's start.
    Write(m_tag);
    m_startTagPending = false;
}

void CXMLWriterBase::WriteElementString(const CKivStringT& name, const CKivStringT& text) {
    CallScope scope(*this);
    WriteStartElement(name);
    WriteString(text);
    WriteEndElement();
}

bool CXMLWriterBase::RewindLastTag(const CKivStringT& name) {
    FlushPending();
    if (!IsOpen()) return false;
    const CKivStringT tag = L"</" + name + L">";
    const LONG tagLength = tag.GetLength();
    const LONG chars = static_cast<LONG>(m_file.GetLength() / static_cast<DWORD>(m_bytesPerChar));
    // The end of the last whole character is taken as the file's end. A write torn by a
    // crash or a full disk may have left half of one behind, and nothing may ever follow
    // such a half: every later character would be read a byte out of step. The next
    // write replaces it; until then it stays.
    const LONG whole = chars * m_bytesPerChar;
    if (chars < tagLength) {
        // Too short to hold the end tag: kept as it is, the writer at its end.
        m_file.Seek(whole, CFile::begin);
        return false;
    }
    LONG n = tagLength;
    // Deliberate: a count of characters is compared with a count of bytes here; it only
    // decides whether the trailing CR LF is read along.
    if (!(chars < (tagLength + 2) * m_bytesPerChar)) n += 2;
    const LONG windowStart = whole - n * m_bytesPerChar;
    m_file.Seek(windowStart, CFile::begin);
    std::string bytes(static_cast<size_t>(n * m_bytesPerChar), '\0');
    const UINT got = m_file.Read(bytes.data(), static_cast<UINT>(bytes.size()));
    bytes.resize(got);
    std::string tagBytes;
    AppendUtf16(tagBytes, tag.view());
    const size_t found = ToUnits(bytes).find(ToUnits(tagBytes));
    if (found != std::u16string::npos) {
        m_file.Seek(windowStart + static_cast<LONG>(found) * m_bytesPerChar, CFile::begin);
    } else {
        // No end tag: the writer stays where the read ended, after the last whole
        // character, and appends. Complete content, with or without a final CR LF, is
        // kept as it stands. Only a last line that stops inside a tag was torn by a
        // crash or a full disk; appending to it would leave the tag open for good, so
        // the writer steps back to that line's start, and the torn line is cut when the
        // first new bytes replace it. A file without a complete line before such a tail
        // is none of ours and is appended to as it is.
        const LONG lineStart = got == bytes.size() ? TornLineStart(whole) : -1;
        m_file.Seek(lineStart >= 0 ? lineStart : whole, CFile::begin);
        if (lineStart >= 0) m_cutAt = lineStart;
    }
    m_elements.RemoveAll();
    m_elements.Add(name);
    m_startTagPending = false;
    m_depth = 1;
    m_writtenCount = 1;
    return true;
}

LONG CXMLWriterBase::TornLineStart(LONG end) {
    constexpr LONG kChunkChars = 512;
    const LONG unit = m_bytesPerChar;
    std::string bytes;
    bool lfFollows = false;  // the character just after the chunk is a line feed
    bool insideTag = false;  // a '<' was met, walking back, before any '>'
    for (LONG hi = end; hi > 0;) {
        const LONG lo = hi > kChunkChars * unit ? hi - kChunkChars * unit : 0;
        bytes.assign(static_cast<size_t>(hi - lo), '\0');
        if (m_file.Seek(lo, CFile::begin) != lo ||
            m_file.Read(bytes.data(), static_cast<UINT>(bytes.size())) != bytes.size())
            return -1;
        const std::u16string units = ToUnits(bytes);
        for (size_t i = units.size(); i-- > 0;) {
            const bool lf = i + 1 < units.size() ? units[i + 1] == u'\n' : lfFollows;
            if (units[i] == u'\r' && lf) return insideTag ? lo + static_cast<LONG>(i + 2) * unit : -1;
            if (insideTag) continue;
            if (units[i] == u'>') return -1;
            insideTag = units[i] == u'<';
        }
        lfFollows = units.front() == u'\n';
        hi = lo;
    }
    return -1;
}

// ---- CXMLWriter ---------------------------------------------------------------------------

CXMLWriter::CXMLWriter() = default;

CXMLWriter::~CXMLWriter() = default;

void CXMLWriter::Write(const CKivStringT& text) {
    if (!IsOpen()) return;
    // Folded from the bytes just encoded, before the call's one write sends them.
    CallScope scope(*this);
    const size_t before = PendingBytes().size();
    CXMLWriterBase::Write(text);
    m_checkSum = FoldEncoded(PendingBytes().substr(before), m_checkSum);
}

unsigned CXMLWriter::ContinueCheckSum(const CKivStringT& text, unsigned sum) {
    std::string encoded;
    AppendUtf16(encoded, text.view());
    return FoldEncoded(encoded, sum);
}

unsigned CXMLWriter::FoldEncoded(std::string_view utf16le, unsigned sum) {
    // Only the low byte of each code unit counts, the first byte of each pair.
    for (size_t i = 0; i + 1 < utf16le.size(); i += 2) {
        sum ^= static_cast<unsigned>(static_cast<unsigned char>(utf16le[i])) << (8 * m_lane);
        m_lane = (m_lane + 1) & 3;
    }
    return sum;
}

void CXMLWriter::InitOnOpen(bool isNewFile) {
    if (isNewFile) {
        BeginDocument();
        return;
    }
    // An existing file, even an empty one or one that is not a history at all, keeps
    // every byte: only the rewind over the end tag and the checksum restore run.
    if (RewindLastTag(kHistoryRoot)) RestoreCheckSum();
}

void CXMLWriter::BeginDocument() {
    // The byte-order mark is outside the checksum.
    static const unsigned char bom[2] = {0xFF, 0xFE};
    WriteRawBytes(bom, sizeof bom);
    WriteLine(kDeclaration);
    WriteStartDocument();
    WriteStartElement(kHistoryRoot);
}

void CXMLWriter::WriteCheckSum() {
    CallScope scope(*this);
    WriteCheckSum(m_checkSum);
}

void CXMLWriter::WriteCheckSum(unsigned value) {
    CKivStringT number;
    number.Format(L"%X", value);
    // The number is taken first; the element itself then joins the running value.
    Write(L"<CheckSum>");
    Write(number);
    WriteLine(L"</CheckSum>");
}

bool CXMLWriter::RestoreCheckSum() {
    FlushPending();
    if (!IsOpen()) return false;
    const LONG windowBytes = kiv_history::kRestoreWindow * m_bytesPerChar;
    const LONG current = static_cast<LONG>(m_file.GetPosition());
    if (current < windowBytes) return false;
    const LONG pos = m_file.Seek(-windowBytes, CFile::current);
    std::string bytes(static_cast<size_t>(windowBytes), '\0');
    const UINT got = m_file.Read(bytes.data(), static_cast<UINT>(bytes.size()));
    if (got != bytes.size()) {
        m_file.Seek(current, CFile::begin);
        return false;
    }
    const auto restored = kiv_history::RestoreFromWindow(ToUnits(bytes), pos);
    if (!restored.ok) return false;
    m_checkSum = restored.sum;
    m_lane = restored.lane;
    return true;
}
