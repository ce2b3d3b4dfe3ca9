// Modules of the Win32 subset: LoadLibraryW finds an in-process module registered with
// kiv_host::RegisterModule first, then a shared object of the host ("MirelLib.dll" is
// looked for as MirelLib.so and libMirelLib.so in KIV_MODULE_PATH, then on the loader's
// own path). Loads are counted: the same module gives the same handle until freed as
// often as it was loaded.
#pragma once

#include "platform/win32/Win32Types.h"

// The generic function pointer that compilers let callers cast to any function type
// without a warning; callers always cast it to the export's real type before calling.
using FARPROC = void(WINAPI*)();

HMODULE LoadLibraryW(LPCWSTR fileName);
// The device's wide-name form; names are matched exactly, as exported.
FARPROC GetProcAddressW(HMODULE module, LPCWSTR procName);
FARPROC GetProcAddress(HMODULE module, LPCSTR procName);
BOOL FreeLibrary(HMODULE module);
