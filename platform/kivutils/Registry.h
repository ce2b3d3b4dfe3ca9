// kiv_registry: the family's registry helpers over the Win32 registry functions. Each
// opens the key named by a root and a path, does one thing and reports success.
#pragma once

#include <cstddef>  // KivArray.h uses size_t without including it

#include "platform/kivutils/KivArray.h"
#include "platform/kivutils/KivString.h"
#include "platform/win32/Win32.h"

namespace kiv_registry {

// The names of the subkeys of root\keyPath in their order; false when the key cannot be
// opened. `sections` is emptied first.
bool EnumSections(HKEY root, const wchar_t* keyPath, CKivArray<CKivStringT>& sections);
// A REG_SZ or REG_EXPAND_SZ value (not expanded), without its terminator.
bool ReadStringValue(HKEY root, const wchar_t* keyPath, const wchar_t* valueName, CKivStringT& value);
bool ReadDwordValue(HKEY root, const wchar_t* keyPath, const wchar_t* valueName, DWORD& value);
// Creates the key when needed.
bool WriteStringValue(HKEY root, const wchar_t* keyPath, const wchar_t* valueName, const wchar_t* value);
bool WriteDwordValue(HKEY root, const wchar_t* keyPath, const wchar_t* valueName, DWORD value);

}  // namespace kiv_registry
