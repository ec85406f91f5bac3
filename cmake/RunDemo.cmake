# Runs vkcompare on the two example revisions; differences (exit status 1) are the expected outcome.
execute_process(COMMAND "${VKCOMPARE}" --log-dir "${LOG_DIR}" "${REV_A}" "${REV_B}" RESULT_VARIABLE status)
if(NOT status EQUAL 0 AND NOT status EQUAL 1)
  message(FATAL_ERROR "vkcompare failed with status ${status}")
endif()
