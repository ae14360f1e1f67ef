# Runs `TOOL inspect ARGS INPUT` and checks its exit code (RESULT), that stdout
# matches the regular expressions OUT_1..OUT_3 and stderr ERR_1, and that stdout
# does not match NOT_OUT.
execute_process(COMMAND ${TOOL} inspect ${ARGS} ${INPUT}
    RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT result STREQUAL RESULT)
    message(FATAL_ERROR "exit code ${result}, expected ${RESULT}\nstdout:\n${out}\nstderr:\n${err}")
endif()
foreach(name OUT_1 OUT_2 OUT_3 ERR_1)
    if(DEFINED ${name})
        set(text "${out}")
        if(name MATCHES "^ERR")
            set(text "${err}")
        endif()
        if(NOT text MATCHES "${${name}}")
            message(FATAL_ERROR "${name} '${${name}}' not found in:\n${text}")
        endif()
    endif()
endforeach()
if(DEFINED NOT_OUT AND out MATCHES "${NOT_OUT}")
    message(FATAL_ERROR "'${NOT_OUT}' found in:\n${out}")
endif()
