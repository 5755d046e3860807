execute_process(
  COMMAND ${PYTHON} ${SOURCE}/scripts/make-sample ${OUT}
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND ${CMAKE_COMMAND} -E compare_files ${OUT} ${SOURCE}/samples/topo.csv
  COMMAND_ERROR_IS_FATAL ANY)
