# Runs one example (-DPROGRAM=...) and passes when it exits with 0 and its
# standard output matches -DEXPECTED=<regular expression>.
execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE errors)
message("${output}${errors}")
if(NOT code EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} ended with ${code}")
endif()
if(NOT output MATCHES "${EXPECTED}")
  message(FATAL_ERROR "the output does not match: ${EXPECTED}")
endif()
