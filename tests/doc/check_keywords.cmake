# Fails when doc/KEYWORDS.md is not what `sarvo --keywords` prints.
#   cmake -DSARVO=<sarvo binary> -DDOC=<doc/KEYWORDS.md> -DWORK_DIR=<scratch> -P check_keywords.cmake
foreach(var SARVO DOC WORK_DIR)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "check_keywords.cmake: ${var} is not set")
  endif()
endforeach()

file(MAKE_DIRECTORY "${WORK_DIR}")
set(printed "${WORK_DIR}/KEYWORDS.md")
execute_process(COMMAND "${SARVO}" --keywords
                RESULT_VARIABLE status
                OUTPUT_FILE "${printed}"
                ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "sarvo --keywords exited with ${status}\n${errors}")
endif()

execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files "${printed}" "${DOC}" RESULT_VARIABLE differs)
if(differs)
  message(FATAL_ERROR "doc/KEYWORDS.md is stale: it differs from `sarvo --keywords` (now in ${printed}).\n"
                      "Regenerate it with scripts/update-keywords.sh and commit it with the declarations' change.")
endif()
