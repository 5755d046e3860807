# What `cmake --install` puts where: the library, its headers, cqjob, and what find_package and
# pkg-config need. The whole may be moved afterwards: no file names the prefix.
include(CMakePackageConfigHelpers)

install(TARGETS cqsurvey EXPORT cqsurveyTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT cqsurvey_Runtime NAMELINK_COMPONENT cqsurvey_Development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/cqsurvey
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT cqsurvey_Development
  FILES_MATCHING PATTERN "*.h")

set(CQSURVEY_CONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/cqsurvey)
install(EXPORT cqsurveyTargets NAMESPACE cqsurvey::
  DESTINATION ${CQSURVEY_CONFIG_DIR}
  COMPONENT cqsurvey_Development)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/cqsurveyConfig.cmake.in
  ${PROJECT_BINARY_DIR}/cmake/cqsurveyConfig.cmake
  INSTALL_DESTINATION ${CQSURVEY_CONFIG_DIR})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/cmake/cqsurveyConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/cmake/cqsurveyConfig.cmake
  ${PROJECT_BINARY_DIR}/cmake/cqsurveyConfigVersion.cmake
  DESTINATION ${CQSURVEY_CONFIG_DIR}
  COMPONENT cqsurvey_Development)

# Folders given as absolute paths cannot be found relative to the file.
set(CQSURVEY_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(CQSURVEY_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
  set(CQSURVEY_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
else()
  file(RELATIVE_PATH CQSURVEY_PC_UP /prefix/${CQSURVEY_PC_DIR} /prefix)
  string(REGEX REPLACE "/$" "" CQSURVEY_PC_UP "${CQSURVEY_PC_UP}")
  set(CQSURVEY_PC_PREFIX "\${pcfiledir}/${CQSURVEY_PC_UP}")
  set(CQSURVEY_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(CQSURVEY_PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
else()
  set(CQSURVEY_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(
  ${PROJECT_SOURCE_DIR}/cmake/cqsurvey.pc.in ${PROJECT_BINARY_DIR}/cmake/cqsurvey.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/cmake/cqsurvey.pc
  DESTINATION ${CQSURVEY_PC_DIR}
  COMPONENT cqsurvey_Development)

if(TARGET cqjob)
  # cqjob finds the library beside it, wherever the two were put.
  file(RELATIVE_PATH CQSURVEY_BIN_TO_LIB
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(cqjob PROPERTIES INSTALL_RPATH "$ORIGIN/${CQSURVEY_BIN_TO_LIB}")
  install(TARGETS cqjob
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT cqsurvey_Runtime)
endif()
