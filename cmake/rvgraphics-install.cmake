# Installation: the shared library, its headers under include/rvgraphics/,
# a CMake package (find_package(rvgraphics) -> rvgraphics::rvgraphics) and a
# pkg-config file. Included from src/CMakeLists.txt, where the target and the
# globbed header list RVGRAPHICS_HEADERS are defined.

include(CMakePackageConfigHelpers)

set(RVGRAPHICS_INSTALL_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/rvgraphics"
    CACHE STRING "Install directory of the CMake package files, relative to the prefix")
set(RVGRAPHICS_INSTALL_PKGCONFIGDIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    CACHE STRING "Install directory of rvgraphics.pc, relative to the prefix")

install(TARGETS rvgraphics
  EXPORT rvgraphicsTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime)

# Headers keep their place below src/: src/geometry/kopoint.h becomes
# include/rvgraphics/geometry/kopoint.h, src/rvgraphics.h becomes
# include/rvgraphics/rvgraphics.h. Only folders that hold headers are created.
# Private headers (*_p.h) hold internal kernels and are not installed.
set(_public_headers ${RVGRAPHICS_HEADERS})
list(FILTER _public_headers EXCLUDE REGEX "_p\\.h$")
foreach(_header ${_public_headers})
  file(RELATIVE_PATH _relative "${PROJECT_SOURCE_DIR}/src" "${_header}")
  get_filename_component(_subdir "${_relative}" DIRECTORY)
  install(FILES "${_header}"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/rvgraphics/${_subdir}"
    COMPONENT Development)
endforeach()

install(EXPORT rvgraphicsTargets
  NAMESPACE rvgraphics::
  FILE rvgraphicsTargets.cmake
  DESTINATION ${RVGRAPHICS_INSTALL_CMAKEDIR}
  COMPONENT Development)

configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/rvgraphicsConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/rvgraphicsConfig.cmake"
  INSTALL_DESTINATION ${RVGRAPHICS_INSTALL_CMAKEDIR})
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/rvgraphicsConfigVersion.cmake"
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/rvgraphicsConfig.cmake"
  "${PROJECT_BINARY_DIR}/rvgraphicsConfigVersion.cmake"
  DESTINATION ${RVGRAPHICS_INSTALL_CMAKEDIR}
  COMPONENT Development)

# The .pc file locates the prefix relative to itself (${pcfiledir}), so the
# installed tree stays valid when installed with `cmake --install --prefix`
# or moved. Absolute install directories are written as they are.
if(IS_ABSOLUTE "${RVGRAPHICS_INSTALL_PKGCONFIGDIR}")
  set(RVGRAPHICS_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH _up "/prefix/${RVGRAPHICS_INSTALL_PKGCONFIGDIR}" "/prefix")
  string(REGEX REPLACE "/$" "" _up "${_up}")
  set(RVGRAPHICS_PC_PREFIX "\${pcfiledir}/${_up}")
endif()
foreach(_kind LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${_kind}}")
    set(RVGRAPHICS_PC_${_kind} "${CMAKE_INSTALL_${_kind}}")
  else()
    set(RVGRAPHICS_PC_${_kind} "\${prefix}/${CMAKE_INSTALL_${_kind}}")
  endif()
endforeach()
configure_file("${PROJECT_SOURCE_DIR}/cmake/rvgraphics.pc.in"
  "${PROJECT_BINARY_DIR}/rvgraphics.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/rvgraphics.pc"
  DESTINATION ${RVGRAPHICS_INSTALL_PKGCONFIGDIR}
  COMPONENT Development)
