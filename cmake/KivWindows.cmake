# The dependencies of a Windows build. Debian ships none of them for mingw-w64, so the
# header-only ones ({fmt}, Boost, CLI11) are taken from the host's headers through a
# folder that holds only them, and GoogleTest is built from its Debian sources with the
# cross compiler. Text and pictures need no library: GDI draws text, and pictures are
# written by our own PNG encoder (platform/win32/PngWriter) and read through WIC.

set(KIV_HOST_HEADERS ${CMAKE_BINARY_DIR}/host-headers)
file(MAKE_DIRECTORY ${KIV_HOST_HEADERS})
foreach(dir fmt boost CLI)
  if(NOT EXISTS ${KIV_HOST_HEADERS}/${dir} AND EXISTS /usr/include/${dir})
    file(CREATE_LINK /usr/include/${dir} ${KIV_HOST_HEADERS}/${dir} SYMBOLIC)
  endif()
endforeach()

function(kiv_header_only target)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  set_target_properties(${target} PROPERTIES INTERFACE_SYSTEM_INCLUDE_DIRECTORIES ${KIV_HOST_HEADERS}
                                             INTERFACE_INCLUDE_DIRECTORIES ${KIV_HOST_HEADERS})
endfunction()

kiv_header_only(fmt::fmt)
set_property(TARGET fmt::fmt PROPERTY INTERFACE_COMPILE_DEFINITIONS FMT_HEADER_ONLY=1)
kiv_header_only(Boost::headers)
kiv_header_only(CLI11::CLI11)
set(Boost_FOUND TRUE)
set(CLI11_FOUND TRUE)

if(KIV_BUILD_TESTS)
  set(KIV_GTEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest sources built for Windows")
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(${KIV_GTEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  # Recent GoogleTest sources name their own GTest:: aliases.
  foreach(lib gtest gtest_main gmock)
    if(NOT TARGET GTest::${lib})
      add_library(GTest::${lib} ALIAS ${lib})
    endif()
  endforeach()
  set(GTest_FOUND TRUE)
  set(GTEST_FOUND TRUE)
endif()

# The Win32 subset is the system's own here, wide-character throughout.
# M_PI and its kin, which the C library keeps behind this switch here.
add_compile_definitions(UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601 _USE_MATH_DEFINES)
