// The per-thread last-error value of the Win32 subset.
#include "platform/win32/Win32Types.h"

namespace {
thread_local DWORD lastError = ERROR_SUCCESS;
}

DWORD GetLastError() { return lastError; }
void SetLastError(DWORD error) { lastError = error; }
