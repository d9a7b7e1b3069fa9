# Install rules and the exported CMake package, so a host finds us with find_package(vliptc).
include(CMakePackageConfigHelpers)

install(TARGETS vliptc_core EXPORT vliptcTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS vliptc_imaging EXPORT vliptcTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS vliptc_editors EXPORT vliptcTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# Public headers only: each folder keeps its helpers in internal/, which is not installed.
foreach(dir host platform iptc tags exif editors)
  install(DIRECTORY ${dir}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vliptc/${dir}
          FILES_MATCHING PATTERN "*.h" PATTERN "internal" EXCLUDE)
endforeach()
install(FILES resources/vliptctags.ipt DESTINATION ${CMAKE_INSTALL_DATADIR}/vliptc)
# The desktop host finds the definitions above in ../share/vliptc beside its bin folder.
if(TARGET vliptc-editor)
  install(TARGETS vliptc-editor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# The package config finds Qt for a consumer only when the editors use it.
get_target_property(vliptc_editor_links vliptc_editors INTERFACE_LINK_LIBRARIES)
if("Qt6::Widgets" IN_LIST vliptc_editor_links)
  set(VLIPTC_CONFIG_NEEDS_QT ON)
else()
  set(VLIPTC_CONFIG_NEEDS_QT OFF)
endif()

install(EXPORT vliptcTargets NAMESPACE vliptc:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vliptc)
configure_package_config_file(cmake/vliptcConfig.cmake.in
  ${PROJECT_BINARY_DIR}/vliptcConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vliptc)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vliptcConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vliptcConfig.cmake ${PROJECT_BINARY_DIR}/vliptcConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vliptc)
