// CFile over the Win32 file family, mapping MFC's flags the way MFC does (shareCompat
// is exclusive, modeCreate with modeNoTruncate opens or creates).
#include "platform/mfc/File.h"

const HANDLE CFile::hFileNull = INVALID_HANDLE_VALUE;

int CFileException::OsErrorToException(LONG osError) {
    switch (static_cast<DWORD>(osError)) {
        case NO_ERROR: return none;
        case ERROR_FILE_NOT_FOUND: return fileNotFound;
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_FILENAME_EXCED_RANGE: return badPath;
        case ERROR_TOO_MANY_OPEN_FILES: return tooManyOpenFiles;
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS: return accessDenied;
        case ERROR_INVALID_HANDLE: return invalidFile;
        case ERROR_NEGATIVE_SEEK: return badSeek;
        case ERROR_READ_FAULT:
        case ERROR_WRITE_FAULT: return hardIO;
        case ERROR_SHARING_VIOLATION: return sharingViolation;
        case ERROR_LOCK_VIOLATION: return lockViolation;
        case ERROR_DISK_FULL: return diskFull;
        case ERROR_HANDLE_EOF: return endOfFile;
        default: return genericException;
    }
}

CFile::~CFile() {
    if (IsOpen() && m_bCloseOnDelete) Close();
}

BOOL CFile::Open(LPCWSTR fileName, UINT openFlags, CFileException* error) {
    if (IsOpen()) Close();
    DWORD access;
    switch (openFlags & 3) {
        case modeRead: access = GENERIC_READ; break;
        case modeWrite: access = GENERIC_WRITE; break;
        case modeReadWrite: access = GENERIC_READ | GENERIC_WRITE; break;
        default: access = 0; break;
    }
    DWORD share = 0;
    switch (openFlags & 0x70) {
        case shareDenyWrite: share = FILE_SHARE_READ; break;
        case shareDenyRead: share = FILE_SHARE_WRITE; break;
        case shareDenyNone: share = FILE_SHARE_READ | FILE_SHARE_WRITE; break;
        default: share = 0; break;  // shareCompat and shareExclusive
    }
    const DWORD disposition =
        openFlags & modeCreate ? (openFlags & modeNoTruncate ? OPEN_ALWAYS : CREATE_ALWAYS) : OPEN_EXISTING;

    HANDLE file = INVALID_HANDLE_VALUE;
    if (access == 0 || (openFlags & 0x70) > shareDenyNone) SetLastError(ERROR_INVALID_PARAMETER);
    else file = CreateFileW(fileName, access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        if (error) {
            error->m_lOsError = static_cast<LONG>(GetLastError());
            error->m_cause = CFileException::OsErrorToException(error->m_lOsError);
            error->m_strFileName = fileName;
        }
        return FALSE;
    }
    m_hFile = file;
    m_bCloseOnDelete = TRUE;
    m_strFileName = fileName;
    return TRUE;
}

void CFile::Close() {
    if (IsOpen()) CloseHandle(m_hFile);
    m_hFile = hFileNull;
    m_bCloseOnDelete = FALSE;
    m_strFileName.Empty();
}

void CFile::Abort() { Close(); }

UINT CFile::Read(void* buffer, UINT count) {
    DWORD read = 0;
    if (count == 0 || !ReadFile(m_hFile, buffer, count, &read, nullptr)) return 0;
    return read;
}

void CFile::Write(const void* buffer, UINT count) {
    if (count == 0) return;
    DWORD written = 0;
    WriteFile(m_hFile, buffer, count, &written, nullptr);
}

void CFile::Flush() {
    if (IsOpen()) FlushFileBuffers(m_hFile);
}

LONG CFile::Seek(LONG offset, UINT from) {
    const DWORD position = SetFilePointer(m_hFile, offset, nullptr, from);
    if (position == INVALID_SET_FILE_POINTER) return -1;
    return static_cast<LONG>(position);
}

DWORD CFile::GetPosition() const {
    const DWORD position = SetFilePointer(m_hFile, 0, nullptr, FILE_CURRENT);
    return position == INVALID_SET_FILE_POINTER ? 0 : position;
}

DWORD CFile::GetLength() const {
    const DWORD length = GetFileSize(m_hFile, nullptr);
    return length == INVALID_FILE_SIZE ? 0 : length;
}

void CFile::SetLength(DWORD newLength) {
    // As in MFC, the position is left at the new end.
    if (Seek(static_cast<LONG>(newLength), begin) != -1) SetEndOfFile(m_hFile);
}
