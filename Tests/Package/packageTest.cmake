# See CMakeLists.txt, which says what the variables are.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${ARGN}\nended with ${result}:\n${output}")
    endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
file(COPY ${STRANGER}/ DESTINATION ${WORK}/source)
file(COPY ${SNIPPETS}/firstHost.cpp ${SNIPPETS}/firstPlugin.cpp DESTINATION ${WORK}/source)

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix)
run(${WORK}/prefix/bin/qellint --reference) # finds the library and a plugin
set(flags "")
if(SANITIZE)
    set(flags "-fsanitize=${SANITIZE}")
endif()
run(${CMAKE_COMMAND} -S ${WORK}/source -B ${WORK}/build -G ${GENERATOR}
    -D CMAKE_CXX_COMPILER=${COMPILER}
    -D CMAKE_CXX_FLAGS=${flags}
    -D CMAKE_PREFIX_PATH=${WORK}/prefix)
run(${CMAKE_COMMAND} --build ${WORK}/build)

file(WRITE ${WORK}/build/plugins.cfg "Plugin=firstPlugin\nfirstPlugin=plugin_win32platform\n")
run(${CMAKE_COMMAND} -E chdir ${WORK}/build ./firstHost)
file(READ ${WORK}/build/debug.log log)
if(NOT log MATCHES "Qel initialized in .*sec\n[0-9]+ notifications\nQel Shutdown\n$")
    message(FATAL_ERROR "the stranger's log says:\n${log}")
endif()
