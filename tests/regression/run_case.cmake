# Runs one regression case and compares its exports byte for byte with the
# committed references.
#   cmake -DSARVO=<sarvo binary> -DCASE_DIR=<case directory> -DCASE=<name>
#         -DREFERENCE_DIR=<reference directory of the case> -DWORK_DIR=<scratch>
#         [-DUPDATE=ON] -P run_case.cmake
# With UPDATE=ON the outputs replace the references instead of being compared.
foreach(var SARVO CASE_DIR CASE REFERENCE_DIR WORK_DIR)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "run_case.cmake: ${var} is not set")
  endif()
endforeach()

# A fresh directory, so that no output of an earlier run can pass for a new one.
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}/output")
file(GLOB inputs "${CASE_DIR}/*")
file(COPY ${inputs} DESTINATION "${WORK_DIR}")

execute_process(COMMAND "${SARVO}" -b "${CASE}.bat"
                WORKING_DIRECTORY "${WORK_DIR}"
                RESULT_VARIABLE status
                OUTPUT_FILE "${WORK_DIR}/trace.txt"
                ERROR_FILE "${WORK_DIR}/trace.txt")
if(NOT status EQUAL 0)
  file(READ "${WORK_DIR}/trace.txt" trace)
  message(FATAL_ERROR "${CASE}: sarvo -b exited with ${status}\n${trace}")
endif()

file(GLOB outputs RELATIVE "${WORK_DIR}/output" "${WORK_DIR}/output/*")
if(NOT outputs)
  message(FATAL_ERROR "${CASE}: the run wrote no output")
endif()

if(UPDATE)
  file(REMOVE_RECURSE "${REFERENCE_DIR}")
  file(MAKE_DIRECTORY "${REFERENCE_DIR}")
  foreach(name ${outputs})
    file(COPY "${WORK_DIR}/output/${name}" DESTINATION "${REFERENCE_DIR}")
  endforeach()
  message(STATUS "${CASE}: references rewritten (${outputs})")
  return()
endif()

# The first line where two files part, as "line N: reference | output", so that
# a failing case says at once what moved.
function(first_difference reference output result)
  execute_process(COMMAND cmp "${reference}" "${output}" OUTPUT_VARIABLE cmp_text ERROR_VARIABLE cmp_text)
  string(REGEX MATCH "line ([0-9]+)" line_match "${cmp_text}")
  if(NOT CMAKE_MATCH_1)
    set(${result} "" PARENT_SCOPE)
    return()
  endif()
  set(line ${CMAKE_MATCH_1})
  execute_process(COMMAND sed -n "${line}p" "${reference}" OUTPUT_VARIABLE old OUTPUT_STRIP_TRAILING_WHITESPACE)
  execute_process(COMMAND sed -n "${line}p" "${output}" OUTPUT_VARIABLE new OUTPUT_STRIP_TRAILING_WHITESPACE)
  set(${result} " at line ${line}: reference \"${old}\", output \"${new}\"" PARENT_SCOPE)
endfunction()

file(GLOB references RELATIVE "${REFERENCE_DIR}" "${REFERENCE_DIR}/*")
if(NOT references)
  message(FATAL_ERROR "${CASE}: no reference in ${REFERENCE_DIR} (run scripts/regenerate-references.sh)")
endif()
set(failures "")
foreach(name ${references})
  if(NOT EXISTS "${WORK_DIR}/output/${name}")
    string(APPEND failures "\n  ${name}: not written")
    continue()
  endif()
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files "${REFERENCE_DIR}/${name}" "${WORK_DIR}/output/${name}"
                  RESULT_VARIABLE differ)
  if(NOT differ EQUAL 0)
    first_difference("${REFERENCE_DIR}/${name}" "${WORK_DIR}/output/${name}" where)
    string(APPEND failures "\n  ${name}: differs from the reference${where}")
  endif()
endforeach()
foreach(name ${outputs})
  if(NOT EXISTS "${REFERENCE_DIR}/${name}")
    string(APPEND failures "\n  ${name}: written but has no reference")
  endif()
endforeach()
if(failures)
  message(FATAL_ERROR "${CASE}: outputs differ from ${REFERENCE_DIR}${failures}\n"
                      "Outputs kept in ${WORK_DIR}. If the change is intended, run "
                      "scripts/regenerate-references.sh and explain it in the commit.")
endif()
file(REMOVE_RECURSE "${WORK_DIR}")
