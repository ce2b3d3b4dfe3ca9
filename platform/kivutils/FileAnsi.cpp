// CFileAnsi: lines are split on the bytes (LF, or the UTF-16 unit 000A) and each line
// is decoded on its own, so an unmarked file may mix plain ANSI lines and UTF-8 lines.
#include "platform/kivutils/FileAnsi.h"

#include "platform/host/TextCodec.h"
#include "platform/win32/Win32.h"

namespace {

constexpr DWORD kChunkBytes = 64 * 1024;

bool IsBlankLine(const std::wstring& line) {
    for (wchar_t c : line)
        if (!kiv_strings::IsBlank(c)) return false;
    return true;
}

}  // namespace

CFileAnsi::~CFileAnsi() { Close(); }

bool CFileAnsi::Open(const wchar_t* path) {
    Close();
    HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    file_ = file;
    while (buffer_.size() < 3 && Refill()) {
    }
    if (buffer_.compare(0, 2, "\xFF\xFE") == 0) {
        form_ = Form::Utf16Le;
        start_ = 2;
    } else if (buffer_.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        form_ = Form::Utf8Bom;
        start_ = 3;
    }
    return true;
}

void CFileAnsi::Close() {
    if (file_) CloseHandle(file_);
    file_ = nullptr;
    form_ = Form::Unmarked;
    buffer_.clear();
    start_ = scanned_ = 0;
    atEnd_ = false;
}

bool CFileAnsi::ReadNextWCLine(CKivStringT& line) {
    std::string bytes;
    if (!NextLineBytes(bytes)) return false;
    line = CKivStringT(Decode(bytes));
    return true;
}

int CFileAnsi::ReadNextNonBlankWCLine(CKivStringT& line) {
    if (!file_) return -1;
    std::string bytes;
    while (NextLineBytes(bytes)) {
        std::wstring text = Decode(bytes);
        if (IsBlankLine(text)) continue;
        line = CKivStringT(std::move(text));
        return line.GetLength();
    }
    return 0;
}

bool CFileAnsi::Refill() {
    if (atEnd_ || !file_) return false;
    if (start_ > 0 && start_ >= buffer_.size() / 2) {
        buffer_.erase(0, start_);
        start_ = 0;
    }
    const size_t had = buffer_.size();
    buffer_.resize(had + kChunkBytes);
    DWORD read = 0;
    const bool ok = ReadFile(file_, buffer_.data() + had, kChunkBytes, &read, nullptr);
    buffer_.resize(had + (ok ? read : 0));
    if (!ok || read == 0) atEnd_ = true;  // a read error ends the file where it failed
    return buffer_.size() > had;
}

// The offset (from start_) of the next line end, or npos.
size_t CFileAnsi::FindLineEnd() const {
    const std::string_view pending(buffer_.data() + start_, buffer_.size() - start_);
    if (form_ != Form::Utf16Le) return pending.find('\n', scanned_);
    for (size_t k = scanned_ & ~size_t(1); k + 1 < pending.size(); k += 2)
        if (pending[k] == '\n' && pending[k + 1] == '\0') return k;
    return std::string_view::npos;
}

// The length of a piece cut from an overlong line: never through a character.
size_t CFileAnsi::PieceLength() const {
    size_t length = kMaxLineBytes;
    if (form_ == Form::Utf16Le) {
        const auto high = static_cast<unsigned char>(buffer_[start_ + length - 1]);
        if (high >= 0xD8 && high <= 0xDB) length -= 2;  // keeps a surrogate pair together
        return length;
    }
    for (int back = 0; back < 3 && (static_cast<unsigned char>(buffer_[start_ + length]) & 0xC0) == 0x80; ++back)
        --length;
    return length;
}

bool CFileAnsi::NextLineBytes(std::string& bytes) {
    if (!file_) return false;
    const size_t unit = form_ == Form::Utf16Le ? 2 : 1;
    for (;;) {
        const size_t end = FindLineEnd();
        if (end != std::string::npos && end <= kMaxLineBytes) {
            bytes.assign(buffer_, start_, end);
            start_ += end + unit;
            scanned_ = 0;
            return true;
        }
        const size_t pending = buffer_.size() - start_;
        if (pending > kMaxLineBytes) {
            const size_t piece = PieceLength();
            bytes.assign(buffer_, start_, piece);
            start_ += piece;
            scanned_ = 0;
            return true;
        }
        scanned_ = pending;
        if (!Refill()) {
            if (pending == 0) return false;
            bytes.assign(buffer_, start_, pending);  // the last line has no line end
            start_ = buffer_.size();
            scanned_ = 0;
            return true;
        }
    }
}

std::wstring CFileAnsi::Decode(std::string& bytes) const {
    if (form_ == Form::Utf16Le) {
        if (bytes.size() >= 2 && bytes[bytes.size() - 2] == '\r' && bytes.back() == '\0') bytes.resize(bytes.size() - 2);
        return kiv_text::FromUtf16Le(bytes);
    }
    if (!bytes.empty() && bytes.back() == '\r') bytes.pop_back();
    if (form_ == Form::Utf8Bom || kiv_text::IsValidUtf8(bytes)) return kiv_text::FromUtf8(bytes);
    return kiv_text::FromLatin1(bytes);
}
