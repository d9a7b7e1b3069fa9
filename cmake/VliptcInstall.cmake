# Install rules and the exported CMake package, so a host finds us with find_package(vliptc).
include(CMakePackageConfigHelpers)

install(TARGETS vliptc_core EXPORT vliptcTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# Public headers only: each folder keeps its helpers in internal/, which is not installed.
foreach(dir host platform iptc tags exif)
  install(DIRECTORY ${dir}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vliptc/${dir}
          FILES_MATCHING PATTERN "*.h" PATTERN "internal" EXCLUDE)
endforeach()
install(FILES resources/vliptctags.ipt DESTINATION ${CMAKE_INSTALL_DATADIR}/vliptc)

install(EXPORT vliptcTargets NAMESPACE vliptc:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vliptc)
configure_package_config_file(cmake/vliptcConfig.cmake.in
  ${PROJECT_BINARY_DIR}/vliptcConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vliptc)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vliptcConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vliptcConfig.cmake ${PROJECT_BINARY_DIR}/vliptcConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vliptc)
