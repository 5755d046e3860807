set(first ${INSTALLED}-before)
file(REMOVE_RECURSE ${first} ${INSTALLED})
execute_process(
  COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${first}
  COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${first} ${INSTALLED})
