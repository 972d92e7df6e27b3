include(CMakePackageConfigHelpers)

install(TARGETS requesthost requesthost_memory logicalrequest EXPORT LogicalRequestTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY host/include/ host/memory/include/ server/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h" PATTERN "*.def")
install(EXPORT LogicalRequestTargets NAMESPACE LogicalRequest::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/LogicalRequest)

configure_package_config_file(cmake/LogicalRequestConfig.cmake.in ${CMAKE_BINARY_DIR}/LogicalRequestConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/LogicalRequest)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/LogicalRequestConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/LogicalRequestConfig.cmake ${CMAKE_BINARY_DIR}/LogicalRequestConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/LogicalRequest)
