# Runs qvplot and checks its exit code, the message on standard error or
# standard output, and that nothing was written when it failed.
#   cmake -DQVPLOT=... -DARGS="a^b" -DCODE=2 -DMATCH=regex -DOUTPUT=file [-DSTREAM=stdout] -P qvplot_expect.cmake
string(REPLACE "^" ";" ARGS "${ARGS}")
file(REMOVE "${OUTPUT}")
execute_process(COMMAND "${QVPLOT}" ${ARGS} -o "${OUTPUT}" RESULT_VARIABLE code OUTPUT_VARIABLE out
                ERROR_VARIABLE err)
if(NOT code STREQUAL "${CODE}")
  message(FATAL_ERROR "exit code ${code}, expected ${CODE}\nstdout: ${out}\nstderr: ${err}")
endif()
set(text "${err}")
if(STREAM STREQUAL "stdout")
  set(text "${out}")
endif()
if(NOT text MATCHES "${MATCH}")
  message(FATAL_ERROR "message does not match '${MATCH}'\nstdout: ${out}\nstderr: ${err}")
endif()
if(CODE STREQUAL "0" AND NOT STREAM STREQUAL "stdout")
  if(NOT EXISTS "${OUTPUT}")
    message(FATAL_ERROR "${OUTPUT} was not written")
  endif()
elseif(EXISTS "${OUTPUT}")
  message(FATAL_ERROR "${OUTPUT} was written although qvplot failed")
endif()
