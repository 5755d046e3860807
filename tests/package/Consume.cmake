# Builds and runs a program of tests/consumer against the installed library or the COMPONENT of it:
# WAY is find_package, pkg_config, wrong_version or wrong_component.
set(folder ${WORK}/consumer-${WAY}-${COMPONENT})
file(REMOVE_RECURSE ${folder})
file(MAKE_DIRECTORY ${folder})

if(WAY STREQUAL "pkg_config")
  if(COMPONENT)
    set(module cqsurvey_${COMPONENT})
    set(program ${COMPONENT})
  else()
    set(module cqsurvey)
    set(program main)
  endif()
  set(ENV{PKG_CONFIG_PATH} ${INSTALLED}/${LIBDIR}/pkgconfig)
  execute_process(
    COMMAND pkg-config --cflags --libs "${module} = ${VERSION}"
    OUTPUT_VARIABLE options OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(options UNIX_COMMAND "${options}")
  separate_arguments(flags UNIX_COMMAND "${FLAGS}")
  execute_process(
    COMMAND ${COMPILER} -std=c++20 ${flags} ${SOURCE}/${program}.cpp -o ${folder}/consumer
      ${options}
    COMMAND_ERROR_IS_FATAL ANY)
  set(ENV{LD_LIBRARY_PATH} ${INSTALLED}/${LIBDIR})
else()
  if(WAY STREQUAL "wrong_version")
    string(REGEX MATCH "^([0-9]+)\\.([0-9]+)" numbers ${VERSION})
    math(EXPR minor "${CMAKE_MATCH_2} + 1")
    set(VERSION ${CMAKE_MATCH_1}.${minor})
    set(refusal "compatible with requested")
  elseif(WAY STREQUAL "wrong_component")
    set(refusal "the component ${COMPONENT} is not installed")
  endif()
  execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${folder} -G ${GENERATOR}
      -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_CXX_FLAGS=${FLAGS}
      -D CMAKE_PREFIX_PATH=${INSTALLED} -D CQSURVEY_WANTED=${VERSION}
      -D CQSURVEY_COMPONENT=${COMPONENT}
    RESULT_VARIABLE result ERROR_VARIABLE errors)
  if(DEFINED refusal)
    string(REGEX REPLACE "[ \n]+" " " errors "${errors}")
    if(result EQUAL 0 OR NOT errors MATCHES "${refusal}")
      message(FATAL_ERROR "${WAY} was not refused: ${errors}")
    endif()
    return()
  endif()
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${errors}")
  endif()
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${folder} COMMAND_ERROR_IS_FATAL ANY)
endif()
execute_process(
  COMMAND ${folder}/consumer WORKING_DIRECTORY ${folder} COMMAND_ERROR_IS_FATAL ANY)
