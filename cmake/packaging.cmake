# What `cmake --install` puts where, and what CPack packs: a folder that hosts build against wherever they move it.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(package_folder lib/cmake/${PROJECT_NAME})
configure_file(cmake/package/vexo-extend.pc.in package/vexo-extend.pc @ONLY)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/package/vexo-extend-config-version.cmake
  COMPATIBILITY SameMajorVersion)

set_target_properties(vexoextend PROPERTIES EXPORT_NAME extend)
install(TARGETS vexoextend EXPORT vexo-extend RUNTIME DESTINATION bin ARCHIVE DESTINATION lib
  INCLUDES DESTINATION include)
install(EXPORT vexo-extend NAMESPACE vexo:: DESTINATION ${package_folder} FILE vexo-extend-targets.cmake)
install(FILES cmake/package/vexo-extend-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/package/vexo-extend-config-version.cmake DESTINATION ${package_folder})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/package/vexo-extend.pc DESTINATION lib/pkgconfig)
# Other compilers create their import library from it.
install(FILES src/api/vexoextend.def DESTINATION lib)
install(DIRECTORY include/vexo DESTINATION include)
if(VEXO_BUILD_TOOLS)
  install(TARGETS vexoctl virtual_printer RUNTIME DESTINATION bin)
endif()

set(document_folder share/doc/${PROJECT_NAME})
install(FILES README.md CHANGELOG.md DESTINATION ${document_folder})
install(DIRECTORY docs examples licenses DESTINATION ${document_folder})

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-windows-x64)
set(CPACK_PACKAGE_VENDOR VEXO)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
