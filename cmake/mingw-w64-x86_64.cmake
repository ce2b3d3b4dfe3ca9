# Cross build for 64-bit Windows with Debian's mingw-w64 (the posix thread model, which
# std::thread and std::mutex need). Tests run under Wine through cmake/wine-run.sh.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(KIV_MINGW_TRIPLE x86_64-w64-mingw32)

set(CMAKE_C_COMPILER ${KIV_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KIV_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${KIV_MINGW_TRIPLE}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${KIV_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Executables and DLLs carry their C++ runtime and thread library, so Wine needs no DLL
# path. A DLL loaded from a folder of its own (a device library under KIV_MODULE_PATH) is
# refused by the loader if it needs libwinpthread-1.dll, which no folder on its path holds.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run.sh)
