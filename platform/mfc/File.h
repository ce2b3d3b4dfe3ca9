// CFile and CFileException of the MFC subset: a binary file over a Win32 file handle,
// with MFC's open flags. Where MFC would throw, these report: Open returns FALSE and
// fills the exception object, Read returns what it read, Seek returns -1, and the Win32
// error of a failed call stays in GetLastError.
#pragma once

#include "platform/kivutils/KivString.h"
#include "platform/mfc/Afx.h"

class CFileException : public CObject {
public:
    enum {
        none,
        genericException,
        fileNotFound,
        badPath,
        tooManyOpenFiles,
        accessDenied,
        invalidFile,
        removeCurrentDir,
        directoryFull,
        badSeek,
        hardIO,
        sharingViolation,
        lockViolation,
        diskFull,
        endOfFile
    };
    explicit CFileException(int cause = none, LONG osError = -1) : m_cause(cause), m_lOsError(osError) {}
    static int OsErrorToException(LONG osError);

    int m_cause;
    LONG m_lOsError;
    CKivStringT m_strFileName;
};

class CFile : public CObject {
public:
    enum OpenFlags : UINT {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareCompat = 0x0000,
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        modeNoInherit = 0x0080,
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
        typeText = 0x4000,  // for CStdioFile; a CFile is always binary
        typeBinary = 0x8000,
    };
    enum SeekPosition : UINT { begin = 0x0, current = 0x1, end = 0x2 };

    static const HANDLE hFileNull;

    CFile() = default;
    explicit CFile(HANDLE file) : m_hFile(file), m_bCloseOnDelete(FALSE) {}
    ~CFile() override;
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    // Opens (closing first what was open); FALSE when it cannot, with the reason in
    // `error` when one is given.
    virtual BOOL Open(LPCWSTR fileName, UINT openFlags, CFileException* error = nullptr);
    virtual void Close();
    virtual void Abort();  // Close that never fails, for clean-up paths

    // The number of bytes read: fewer at the end of the file, 0 on failure.
    virtual UINT Read(void* buffer, UINT count);
    // Writes every byte or sets the Win32 error; a closed file ignores the write.
    virtual void Write(const void* buffer, UINT count);
    virtual void Flush();

    // The new position from the start, or -1 (the position unchanged) when the move
    // would end before the start or no file is open.
    virtual LONG Seek(LONG offset, UINT from);
    void SeekToBegin() { Seek(0, begin); }
    DWORD SeekToEnd() { return static_cast<DWORD>(Seek(0, end)); }
    virtual DWORD GetPosition() const;
    virtual DWORD GetLength() const;
    virtual void SetLength(DWORD newLength);

    bool IsOpen() const { return m_hFile != hFileNull; }
    const CKivStringT& GetFilePath() const { return m_strFileName; }

    HANDLE m_hFile = hFileNull;

protected:
    BOOL m_bCloseOnDelete = FALSE;
    CKivStringT m_strFileName;
};
