# Helpers shared by the project's CMake files. Sources are collected per folder so
# that adding a file pair to a module needs no edit of the build files.

get_filename_component(KIV_ROOT "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)

function(kiv_apply_options target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  if(KIV_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  # On a 32-bit glibc host, file offsets and times are 64-bit only when asked for; the
  # platform's files (share locks far past any data, sizes past 2 GiB) and clocks need both.
  if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
    target_compile_definitions(${target} PRIVATE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
  endif()
  if(KIV_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=address,undefined -fno-omit-frame-pointer
                                             -fno-sanitize-recover=undefined)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
endfunction()

# kiv_library(<name> DIRS <dir>... [ONLY <file name>...] [EXCLUDE <file name>...] [LINKS <target>...])
# A library made of every .cpp file in the given folders (relative to the repository
# root), of only the named ones, or of all but the excluded ones.
function(kiv_library name)
  cmake_parse_arguments(ARG "" "" "DIRS;ONLY;EXCLUDE;LINKS" ${ARGN})
  set(sources)
  foreach(dir ${ARG_DIRS})
    file(GLOB found CONFIGURE_DEPENDS ${KIV_ROOT}/${dir}/*.cpp)
    if(ARG_ONLY OR ARG_EXCLUDE)
      set(kept)
      foreach(file ${found})
        get_filename_component(file_name ${file} NAME)
        if((NOT ARG_ONLY OR file_name IN_LIST ARG_ONLY) AND NOT file_name IN_LIST ARG_EXCLUDE)
          list(APPEND kept ${file})
        endif()
      endforeach()
      set(found ${kept})
    endif()
    list(APPEND sources ${found})
  endforeach()
  add_library(${name} ${sources})
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${KIV_ROOT}>)
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_link_libraries(${name} PUBLIC ${ARG_LINKS})
  if(KIV_SANITIZE)
    target_link_options(${name} INTERFACE -fsanitize=address,undefined)
  endif()
  kiv_apply_options(${name})
endfunction()
