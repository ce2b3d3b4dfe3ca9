// The clipboard of the Win32 subset, shared by every thread of the process: one window
// (or thread) opens it at a time, EmptyClipboard makes the opener its owner, and data
// handed over with SetClipboardData belongs to the clipboard from then on.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/GlobalMemory.h"
#include "platform/win32/Windows.h"

constexpr UINT CF_TEXT = 1;
constexpr UINT CF_UNICODETEXT = 13;

constexpr DWORD ERROR_CLIPBOARD_NOT_OPEN = 1418;

// FALSE (ERROR_ACCESS_DENIED) while another window or thread has it open. A null
// window opens it for the calling thread.
BOOL OpenClipboard(HWND owner);
BOOL CloseClipboard();  // FALSE (ERROR_CLIPBOARD_NOT_OPEN) unless this thread opened it
// Frees every format's data and makes the opening window the owner.
BOOL EmptyClipboard();
// Replaces the format's data with the block, which the clipboard then frees; the caller
// must not touch it again. Null when the clipboard is not open by this thread.
HANDLE SetClipboardData(UINT format, HANDLE memory);
// The clipboard's own block for the format (lock it to read; do not free it); null when
// the clipboard is not open by this thread or holds no such data.
HANDLE GetClipboardData(UINT format);
BOOL IsClipboardFormatAvailable(UINT format);
HWND GetClipboardOwner();

#endif  // _WIN32
