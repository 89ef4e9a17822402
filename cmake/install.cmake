# Installation of the libraries and their public headers, the CMake package
# (find_package(orvfem CONFIG) gives orvfem::orvfem, orvfem::orvmath1 and
# orvfem::orvfem_io), the pkg-config files and a Debian package made by CPack.
include(CMakePackageConfigHelpers)

# Installed libraries find their siblings (liborvmath1, liborvfem) in their own folder.
set_target_properties(orvmath1 orvfem orvfem_io PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS orvmath1 orvfem orvfem_io EXPORT orvfemTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# Public headers: orv/fem (and orv/fem/io), and the container headers they include.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/orv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development FILES_MATCHING PATTERN "*.h")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/orvmath1 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development FILES_MATCHING PATTERN "*.h")

set(ORVFEM_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/orvfem)
install(EXPORT orvfemTargets NAMESPACE orvfem:: DESTINATION ${ORVFEM_CMAKE_DIR}
  COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/orvfemConfig.cmake.in
  ${PROJECT_BINARY_DIR}/orvfemConfig.cmake INSTALL_DESTINATION ${ORVFEM_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orvfemConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/orvfemConfig.cmake ${PROJECT_BINARY_DIR}/orvfemConfigVersion.cmake
  DESTINATION ${ORVFEM_CMAKE_DIR} COMPONENT development)

# pkg-config files locate the prefix from their own folder, so that an install with
# `cmake --install --prefix` anywhere gives correct paths.
file(RELATIVE_PATH ORV_PC_TO_PREFIX "/p/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/p")
foreach(pc orvfem orvfem_io)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${pc}.pc.in ${PROJECT_BINARY_DIR}/${pc}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${pc}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)
endforeach()

# One Debian package with the libraries, the headers and the package files.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvfem)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Finite-element analysis library with a sparse direct solver")
set(CPACK_PACKAGE_CONTACT "ORV FEM developers <orvfem@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
# LAPACK is whichever implementation the build found: OpenBLAS's or the reference one.
if(LAPACK_LIBRARIES MATCHES "openblas")
  set(ORV_DEB_LAPACK libopenblas0)
else()
  set(ORV_DEB_LAPACK liblapack3)
endif()
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libmetis5, ${ORV_DEB_LAPACK}, libgomp1, libstdc++6")
include(CPack)
