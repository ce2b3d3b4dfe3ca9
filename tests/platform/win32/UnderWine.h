// Whether the Windows build runs under Wine: the few things Wine does not do as Windows
// does are skipped there alone, each with its reason.
#pragma once

#include "platform/win32/Win32.h"

namespace kiv_test {

inline bool UnderWine() {
#ifdef _WIN32
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    return ntdll && GetProcAddress(ntdll, "wine_get_version") != nullptr;
#else
    return false;
#endif
}

}  // namespace kiv_test
