# Compares what a module exports with a list of names, one a line in order.
execute_process(COMMAND ${NM} -D --defined-only --format=posix ${MODULE}
    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "([^\n ]+) ([^\n ]+)[^\n]*\n" "\\1 \\2\n" symbols "${symbols}")
file(READ ${EXPECTED} expected)
if(NOT symbols STREQUAL expected)
    message(FATAL_ERROR "${MODULE} exports\n${symbols}and should export\n${expected}")
endif()
