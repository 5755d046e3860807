# Configures an application that takes the library as a subproject, on a machine that has nothing
# which only the libraries above it and cqjob need.
file(REMOVE_RECURSE ${FOLDER})
file(WRITE ${FOLDER}/CMakeLists.txt "
cmake_minimum_required(VERSION 3.25)
project(application LANGUAGES CXX)
add_subdirectory(${SOURCE} cqsurvey)
add_executable(application main.cpp)
target_link_libraries(application PRIVATE cqsurvey::cqsurvey)
if(TARGET cqsurvey::exchange OR TARGET cqsurvey::plan OR TARGET cqjob)
  message(FATAL_ERROR \"more than the library itself is there\")
endif()
")
file(WRITE ${FOLDER}/main.cpp "#include <cqsurvey/cqsurvey.h>\nint main() {}\n")
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${FOLDER} -B ${FOLDER}/build -G ${GENERATOR}
    -D CMAKE_CXX_COMPILER=${COMPILER}
    -D CMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON
    -D CMAKE_DISABLE_FIND_PACKAGE_fmt=ON
    -D CMAKE_DISABLE_FIND_PACKAGE_CLI11=ON
    -D CMAKE_DISABLE_FIND_PACKAGE_GTest=ON
  COMMAND_ERROR_IS_FATAL ANY)
