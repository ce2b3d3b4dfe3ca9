# The 32-bit Linux lane: gcc -m32 with the multilib C and C++ runtimes of the host, and
# every other library found in the private i386 sysroot that
# scripts/fetch-i386-sysroot.sh unpacks. A 64-bit x86 host runs the binaries (directly,
# or under an emulator, below), so this is not a cross build: tests are discovered and
# run as usual.
#
# KIV_I386_SYSROOT names the sysroot (default: build-32/sysroot of the source tree).

if(NOT KIV_I386_SYSROOT)
  if(DEFINED ENV{KIV_I386_SYSROOT})
    set(KIV_I386_SYSROOT "$ENV{KIV_I386_SYSROOT}")
  else()
    get_filename_component(KIV_I386_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build-32/sysroot" ABSOLUTE)
  endif()
endif()
set(KIV_I386_SYSROOT "${KIV_I386_SYSROOT}" CACHE PATH "The i386 sysroot of the 32-bit lane")
# Compiler checks run in projects of their own; they need the same sysroot.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KIV_I386_SYSROOT)

set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
# Doubles are computed in SSE2 registers, each operation rounded to double, as on the
# handheld and on every 64-bit host. The i386 default, the x87 unit, keeps intermediates
# in 80 bits, and number text that repeats the device's arithmetic step by step (feet and
# inches, rounding at a half) then lands on the other side of a boundary.
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")

# The sysroot's libraries load libraries of their own (FreeType loads zlib and Brotli,
# HarfBuzz loads GLib) that no 64-bit host has in its search path. An old-style RPATH,
# unlike RUNPATH, also serves those indirect loads, so the test binaries and kivutil run
# from anywhere without LD_LIBRARY_PATH.
set(_kiv_i386_libdirs "${KIV_I386_SYSROOT}/usr/lib/i386-linux-gnu" "${KIV_I386_SYSROOT}/lib/i386-linux-gnu")
set(_kiv_i386_link "-m32 -Wl,--disable-new-dtags")
foreach(dir ${_kiv_i386_libdirs})
  string(APPEND _kiv_i386_link " -Wl,-rpath,${dir} -Wl,-rpath-link,${dir}")
endforeach()
set(CMAKE_EXE_LINKER_FLAGS_INIT "${_kiv_i386_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${_kiv_i386_link}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${_kiv_i386_link}")

# Packages, libraries and headers come from the sysroot only, so a 64-bit library of
# the host is never picked by mistake; programs (ccache, the compilers) from the host.
set(CMAKE_FIND_ROOT_PATH "${KIV_I386_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# A kernel without 32-bit support runs i386 programs only under qemu's user-mode
# emulator; the fetch script provides it exactly then. Test discovery, ctest and the
# suites that start kivutil go through it.
if(EXISTS "${KIV_I386_SYSROOT}/host/qemu-i386")
  set(CMAKE_CROSSCOMPILING_EMULATOR "${KIV_I386_SYSROOT}/host/qemu-i386")
endif()
# Boost's headers are the host's, linked into the sysroot; its CMake package is not.
set(Boost_NO_BOOST_CMAKE ON)
