# What `cmake --install` puts where: the libraries, their headers, cqjob, the GDAL driver, and what find_package and
# pkg-config need. The whole may be moved afterwards: no file names the prefix.
include(CMakePackageConfigHelpers)

set(CQSURVEY_CONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/cqsurvey)
set(CQSURVEY_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(CQSURVEY_HEADERS ${PROJECT_SOURCE_DIR}/include/cqsurvey)

# Folders given as absolute paths cannot be found relative to the file.
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

# Installs a library with its headers, its export set and its pkg-config module, all called like the
# target.
function(cqsurvey_install_library target description requires)
  install(TARGETS ${target} EXPORT ${target}Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT cqsurvey_Runtime NAMELINK_COMPONENT cqsurvey_Development)
  install(EXPORT ${target}Targets NAMESPACE cqsurvey::
    DESTINATION ${CQSURVEY_CONFIG_DIR}
    COMPONENT cqsurvey_Development)
  set(CQSURVEY_PC_NAME ${target})
  set(CQSURVEY_PC_DESCRIPTION ${description})
  set(CQSURVEY_PC_REQUIRES ${requires})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/cqsurvey.pc.in ${PROJECT_BINARY_DIR}/cmake/${target}.pc
    @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/cmake/${target}.pc
    DESTINATION ${CQSURVEY_PC_DIR}
    COMPONENT cqsurvey_Development)
endfunction()

cqsurvey_install_library(cqsurvey ${PROJECT_DESCRIPTION} "Requires.private: sqlite3")
install(DIRECTORY ${CQSURVEY_HEADERS}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT cqsurvey_Development
  FILES_MATCHING PATTERN "*.h" PATTERN exchange EXCLUDE PATTERN plan EXCLUDE)

set(CQSURVEY_exchange_DESCRIPTION "Field text files in and out of a CqSurvey job")
set(CQSURVEY_plan_DESCRIPTION "Pictures of a CqSurvey job's plan")
foreach(part exchange plan)
  if(TARGET cqsurvey_${part})
    cqsurvey_install_library(cqsurvey_${part} ${CQSURVEY_${part}_DESCRIPTION}
      "Requires: cqsurvey = ${PROJECT_VERSION}")
    install(DIRECTORY ${CQSURVEY_HEADERS}/${part}
      DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/cqsurvey
      COMPONENT cqsurvey_Development
      FILES_MATCHING PATTERN "*.h")
  endif()
endforeach()

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

if(TARGET ogr_CqSurvey)
  # Debian's GDAL looks into this folder when the prefix is /usr.
  install(TARGETS ogr_CqSurvey
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/gdalplugins COMPONENT cqsurvey_Runtime)
endif()

if(TARGET cqjob)
  # cqjob finds the libraries beside it, wherever they were put.
  file(RELATIVE_PATH CQSURVEY_BIN_TO_LIB
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(cqjob PROPERTIES INSTALL_RPATH "$ORIGIN/${CQSURVEY_BIN_TO_LIB}")
  install(TARGETS cqjob
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT cqsurvey_Runtime)
endif()
