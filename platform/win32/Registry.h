// The registry of the Win32 subset: keys and values held in memory under the predefined
// roots, names compared without regard to case and kept as written, subkeys and values
// enumerated in creation order. String data is held in the host's wide characters, so
// sizes are bytes of wchar_t (a .reg file holds UTF-16 and is converted at its boundary).
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include <string>
#include <string_view>

#include "platform/win32/Win32Types.h"

#define HKEY_CLASSES_ROOT (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000000u)))
#define HKEY_CURRENT_USER (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000001u)))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000002u)))
#define HKEY_USERS (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000003u)))

constexpr DWORD REG_NONE = 0;
constexpr DWORD REG_SZ = 1;
constexpr DWORD REG_EXPAND_SZ = 2;
constexpr DWORD REG_BINARY = 3;
constexpr DWORD REG_DWORD = 4;
constexpr DWORD REG_DWORD_LITTLE_ENDIAN = 4;
constexpr DWORD REG_DWORD_BIG_ENDIAN = 5;
constexpr DWORD REG_LINK = 6;
constexpr DWORD REG_MULTI_SZ = 7;
constexpr DWORD REG_QWORD = 11;

constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
constexpr REGSAM KEY_SET_VALUE = 0x0002;
constexpr REGSAM KEY_CREATE_SUB_KEY = 0x0004;
constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
constexpr REGSAM KEY_NOTIFY = 0x0010;
constexpr REGSAM KEY_READ = 0x20019;
constexpr REGSAM KEY_WRITE = 0x20006;
constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;

constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
constexpr DWORD REG_OPTION_VOLATILE = 1;
constexpr DWORD REG_CREATED_NEW_KEY = 1;
constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

// Longest key name component and value name, in characters, as on the device.
constexpr DWORD kMaxRegKeyNameLength = 255;
constexpr DWORD kMaxRegValueNameLength = 16383;

// A null or empty subkey opens a new handle to `key` itself.
LONG RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD options, REGSAM access, PHKEY result);
// Keys nest at most 512 levels below their root (the import takes no deeper path either);
// a key that would lie deeper is refused with ERROR_INVALID_PARAMETER, as a malformed
// path is, and nothing of the path is created.
LONG RegCreateKeyExW(HKEY key, LPCWSTR subKey, DWORD reserved, LPWSTR keyClass, DWORD options, REGSAM access,
                     LPSECURITY_ATTRIBUTES attributes, PHKEY result, LPDWORD disposition);
// `nameLength` gives the buffer's size in characters including the terminator and
// receives the name's length without it.
LONG RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD reserved, LPWSTR keyClass,
                   LPDWORD classLength, FILETIME* lastWriteTime);
LONG RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD reserved, LPDWORD type,
                   LPBYTE data, LPDWORD dataSize);
// The size protocol: a null `data` with a `dataSize` asks for the size; a buffer that is
// too small gives ERROR_MORE_DATA and the size needed.
LONG RegQueryValueExW(HKEY key, LPCWSTR valueName, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD dataSize);
LONG RegSetValueExW(HKEY key, LPCWSTR valueName, DWORD reserved, DWORD type, const BYTE* data, DWORD dataSize);
LONG RegDeleteValueW(HKEY key, LPCWSTR valueName);
// Deletes the subkey with all its subkeys and values, as the device does; handles still
// open on a deleted key fail with ERROR_KEY_DELETED. A path of no names ("", "\\")
// would be the key itself: ERROR_INVALID_PARAMETER.
LONG RegDeleteKeyW(HKEY key, LPCWSTR subKey);
LONG RegCloseKey(HKEY key);
// Counts and longest lengths (characters without terminator; data in bytes).
LONG RegQueryInfoKeyW(HKEY key, LPWSTR keyClass, LPDWORD classLength, LPDWORD reserved, LPDWORD subKeys,
                      LPDWORD maxSubKeyLength, LPDWORD maxClassLength, LPDWORD values, LPDWORD maxValueNameLength,
                      LPDWORD maxValueLength, LPDWORD securityDescriptorSize, FILETIME* lastWriteTime);

namespace kiv_win32 {

// The whole registry as .reg text ("Windows Registry Editor Version 5.00", UTF-16LE with
// its byte-order mark, CR LF line ends), and the import of such text (also "REGEDIT4").
// The import is all or nothing: on the first malformed line it reports the line number
// and reason in `error` and leaves the registry as it was. kiv_host::ImportRegistry and
// ExportRegistry are these two over files.
std::string ExportRegistryText();
bool ImportRegistryText(std::string_view bytes, std::wstring* error = nullptr);

}  // namespace kiv_win32
#endif  // _WIN32
