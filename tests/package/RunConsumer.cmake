# Script run by the package_consumer test.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "failed (${rc}): ${ARGN}")
    endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
# Internal headers stay out of the package.
file(GLOB_RECURSE private_headers ${prefix}/include/*_p.h)
if(private_headers)
    message(FATAL_ERROR "private headers installed: ${private_headers}")
endif()
# The installed tool starts from this prefix without help from the loader's path.
unset(ENV{LD_LIBRARY_PATH})
unset(ENV{QT_LOGGING_RULES})
run(${prefix}/bin/doodle inspect ${SAMPLE})
set(flags "")
if(SANITIZE)
    set(flags "-fsanitize=address,undefined -fno-omit-frame-pointer")
endif()
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix} "-DCMAKE_CXX_FLAGS=${flags}" -DWITH_CALL=${WITH_CALL})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
# A host that did not ask for the library's log lines sees none.
execute_process(COMMAND ${WORK_DIR}/build/consumer RESULT_VARIABLE rc
    OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0 OR err MATCHES "(^|\n)doodle:")
    message(FATAL_ERROR "consumer failed (${rc}) or the library logged:\n${err}")
endif()
message("${out}")
if(WITH_CALL)
    execute_process(COMMAND ${WORK_DIR}/build/consumer_call RESULT_VARIABLE rc
        OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "consumer_call failed (${rc}):\n${out}${err}")
    endif()
    message("${out}")
endif()
if(WITH_QUICK)
    # A QML host finds the Quick board alone; nothing it loads is Qt Widgets.
    run(${CMAKE_COMMAND} -S ${QUICK_SOURCE_DIR} -B ${WORK_DIR}/build-quick -G ${GENERATOR}
        -DCMAKE_PREFIX_PATH=${prefix} "-DCMAKE_CXX_FLAGS=${flags}")
    run(${CMAKE_COMMAND} --build ${WORK_DIR}/build-quick)
    execute_process(COMMAND ${WORK_DIR}/build-quick/consumer_quick RESULT_VARIABLE rc
        OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "consumer_quick failed (${rc}):\n${out}${err}")
    endif()
    execute_process(COMMAND ldd ${WORK_DIR}/build-quick/consumer_quick OUTPUT_VARIABLE loaded)
    if(loaded MATCHES "Widgets")
        message(FATAL_ERROR "the Quick host loads Qt Widgets:\n${loaded}")
    endif()
    message("${out}")
endif()
# Said only when every step above passed: the test looks for it.
message("package: ok")
