// FileFuncs: the family's file and folder checks and the path-name helpers the library
// uses, over the Win32 file calls; paths may use '\' (device) or '/' (host) separators.
// Also the three base folders of the application (GetExeDir, GetRootDir, GetDocsDir).
#pragma once

#include <string_view>

#include "platform/kivutils/KivString.h"

namespace FileFuncs {

bool IsFileExist(const wchar_t* path);  // an existing file, not a folder
bool IsDirExist(const wchar_t* path);   // an existing folder

// Creates the folder and every missing folder above it; true when it exists afterwards.
bool CreateDir(const wchar_t* path);

// "\a\b.c.txt" gives "txt"; a last component without a dot gives "".
CKivStringT ExtractFileNameExtFromPathName(const wchar_t* path);
// "\a\b.txt" gives "b.txt".
CKivStringT ExtractFileNameFromPathName(const wchar_t* path);
// "\a\b.txt" gives "b".
CKivStringT ExtractFileTitleFromPathName(const wchar_t* path);
// "\a\b.txt" gives "\a\"; a bare name gives "".
CKivStringT ExtractDirNameWithSlashFromPathName(const wchar_t* path);
// "\a\b.txt" gives "\a"; "\b.txt" and a bare name give "".
CKivStringT ExtractDirNameWithoutSlashFromPathName(const wchar_t* path);
// Joins a folder and a name with exactly one backslash between them.
CKivStringT CombinePath(const wchar_t* folder, const wchar_t* name);

// Writes `bytes` as the whole new content of `path`: a sibling temporary file is written,
// flushed and renamed over the target, so a crash or a refused rename leaves the old
// file as it was. The hidden flag of the old file is kept. False when nothing changed.
bool WriteWholeFile(const wchar_t* path, std::string_view bytes);

}  // namespace FileFuncs

// The application's base folders as device paths without a trailing backslash: the
// installed programs, the data root and the user's documents (set on the host by
// kiv_host::SetBaseFolders or the KIV_EXE_DIR, KIV_ROOT_DIR, KIV_DOCS_DIR variables).
CKivStringT GetExeDir();
CKivStringT GetRootDir();
CKivStringT GetDocsDir();
