// Modules of the Win32 subset: LoadLibraryW finds an in-process module registered with
// kiv_host::RegisterModule first, then a shared object of the host ("MirelLib.dll" is
// looked for as MirelLib.so and libMirelLib.so in KIV_MODULE_PATH, then on the loader's
// own path). Loads are counted: the same module gives the same handle until freed as
// often as it was loaded.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Win32Types.h"

// The export pointer as Windows declares it. Compilers warn on a cast from it to the
// export's real type, so callers cast through void (*)(), the one type exempt.
using FARPROC = INT_PTR(WINAPI*)();

HMODULE LoadLibraryW(LPCWSTR fileName);
// The device's wide-name form; names are matched exactly, as exported.
FARPROC GetProcAddressW(HMODULE module, LPCWSTR procName);
FARPROC GetProcAddress(HMODULE module, LPCSTR procName);
BOOL FreeLibrary(HMODULE module);
#endif  // _WIN32
