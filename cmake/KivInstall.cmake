# cmake --install: the headers under include/kiv (rooted as in the source tree), the
# library with its platform, a CMake package giving utils::utils with its dependencies
# found, and a pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(KIV_INSTALL_TARGETS utils mfc kivutils win32 kivmath kivhost)
set(KIV_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/kiv)
set(KIV_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/utils)

foreach(target ${KIV_INSTALL_TARGETS})
  target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${KIV_INSTALL_INCLUDEDIR}>)
endforeach()
install(TARGETS ${KIV_INSTALL_TARGETS} EXPORT utilsTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${KIV_ROOT}/platform ${KIV_ROOT}/utils DESTINATION ${KIV_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
install(EXPORT utilsTargets NAMESPACE utils:: DESTINATION ${KIV_INSTALL_CMAKEDIR})

# The packages behind the libraries' imported dependencies, found again by consumers;
# each only when this build links it.
set(KIV_PACKAGE_DEPENDENCIES "find_dependency(Threads)\nfind_dependency(fmt)\n")
set(KIV_PC_REQUIRES "fmt")
foreach(dependency "Freetype;Freetype::Freetype;freetype2" "harfbuzz CONFIG;harfbuzz::harfbuzz;harfbuzz"
                   "PNG;PNG::PNG;libpng" "Boost;Boost::headers;")
  list(GET dependency 0 package)
  list(GET dependency 1 imported)
  list(GET dependency 2 module)
  if(TARGET ${imported})
    string(APPEND KIV_PACKAGE_DEPENDENCIES "find_dependency(${package})\n")
    if(module)
      string(APPEND KIV_PC_REQUIRES " ${module}")
    endif()
  endif()
endforeach()

configure_package_config_file(${KIV_ROOT}/cmake/utilsConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/utilsConfig.cmake
                              INSTALL_DESTINATION ${KIV_INSTALL_CMAKEDIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/utilsConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/utilsConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/utilsConfigVersion.cmake
        DESTINATION ${KIV_INSTALL_CMAKEDIR})

# Static libraries list their own dependencies for pkg-config, in link order.
set(KIV_PC_SANITIZE "")
if(KIV_SANITIZE)
  set(KIV_PC_SANITIZE "-fsanitize=address,undefined")
endif()
configure_file(${KIV_ROOT}/cmake/utils.pc.in ${CMAKE_CURRENT_BINARY_DIR}/utils.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/utils.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
