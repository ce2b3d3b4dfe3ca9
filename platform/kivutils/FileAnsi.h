// CFileAnsi: reads a text file line by line as wide text, whatever the tool that wrote
// it: ANSI (read as Latin-1), UTF-8 with or without a byte-order mark, or UTF-16LE with
// its mark; lines end in LF or CR LF. The file is streamed, never read whole.
#pragma once

#include <string>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"
#include "platform/win32/Win32Types.h"

class CFileAnsi : public SharedHeapObject {
public:
    CFileAnsi() = default;
    explicit CFileAnsi(const wchar_t* path) { Open(path); }
    ~CFileAnsi();
    CFileAnsi(const CFileAnsi&) = delete;
    CFileAnsi& operator=(const CFileAnsi&) = delete;

    // Opens the file for reading (others may read and write it); false when it cannot.
    bool Open(const wchar_t* path);
    void Close();
    bool IsOpen() const { return file_ != nullptr; }

    // The next line without its line end; false at the end of the file.
    bool ReadNextWCLine(CKivStringT& line);
    // The next line that holds more than blanks, as it stands; its length in characters
    // (always positive), 0 at the end of the file, -1 when no file is open.
    int ReadNextNonBlankWCLine(CKivStringT& line);

    // A line longer than this many bytes is handed out in pieces of this size, so that a
    // file without line ends cannot make the reader hold it whole.
    static constexpr size_t kMaxLineBytes = 1 << 20;

private:
    enum class Form { Unmarked, Utf8Bom, Utf16Le };
    bool NextLineBytes(std::string& bytes);
    bool Refill();
    size_t FindLineEnd() const;
    size_t PieceLength() const;
    std::wstring Decode(std::string& bytes) const;

    HANDLE file_ = nullptr;
    Form form_ = Form::Unmarked;
    std::string buffer_;    // bytes read and not yet handed out, from start_
    size_t start_ = 0;
    size_t scanned_ = 0;    // bytes from start_ already known to hold no line end
    bool atEnd_ = false;
};
