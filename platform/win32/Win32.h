// The Win32 subset the library calls, one header per API family. On Windows the real
// <windows.h> stands in for all of it, and Desktop.h adds what the handheld has and a
// desktop does not.
#pragma once

#ifdef _WIN32
#include <windows.h>
#include "platform/win32/Desktop.h"
#else
#include "platform/win32/Win32Types.h"
#include "platform/win32/Handles.h"
#if __has_include("platform/win32/Files.h")
#include "platform/win32/Files.h"
#endif
#if __has_include("platform/win32/Sync.h")
#include "platform/win32/Sync.h"
#endif
#if __has_include("platform/win32/Registry.h")
#include "platform/win32/Registry.h"
#endif
#if __has_include("platform/win32/Windows.h")
#include "platform/win32/Windows.h"
#endif
#if __has_include("platform/win32/Keyboard.h")
#include "platform/win32/Keyboard.h"
#endif
#if __has_include("platform/win32/Modules.h")
#include "platform/win32/Modules.h"
#endif
#if __has_include("platform/win32/Memory.h")
#include "platform/win32/Memory.h"
#endif
#include "platform/win32/Clipboard.h"
#include "platform/win32/FileFind.h"
#include "platform/win32/GlobalMemory.h"
#if __has_include("platform/win32/Gdi.h")
#include "platform/win32/Gdi.h"
#include "platform/win32/GdiBlit.h"
#include "platform/win32/GdiLines.h"
#include "platform/win32/GdiShapes.h"
#include "platform/win32/GdiText.h"
#endif
#endif
