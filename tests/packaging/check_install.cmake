# cmake -P: installs the build into PREFIX, then checks the installed manual page.
# Variables: BUILD_DIR, PREFIX, CLI (the built command line, for its usage).

file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX}
    RESULT_VARIABLE result OUTPUT_QUIET)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "cmake --install failed (${result})")
endif()
set(page ${PREFIX}/share/man/man1/regvexlor-cli.1)
foreach(file ${PREFIX}/bin/regvexlor-cli ${page})
    if(NOT EXISTS ${file})
        message(FATAL_ERROR "not installed: ${file}")
    endif()
endforeach()

# man-db's own warnings and groff's, at a fixed width; any line on standard error fails.
set(ENV{MANWIDTH} 80)
set(ENV{LC_ALL} C.UTF-8)
execute_process(COMMAND man --warnings -E UTF-8 -l ${page}
    RESULT_VARIABLE result OUTPUT_VARIABLE rendered ERROR_VARIABLE warnings)
if(NOT result EQUAL 0 OR NOT warnings STREQUAL "")
    message(FATAL_ERROR "man -l ${page} (exit ${result}) warns:\n${warnings}")
endif()
execute_process(COMMAND groff -man -ww -z ${page} ERROR_VARIABLE warnings)
if(NOT warnings STREQUAL "")
    message(FATAL_ERROR "groff warns about ${page}:\n${warnings}")
endif()

# Every option of the usage is explained in the page.
execute_process(COMMAND ${CLI} --help OUTPUT_VARIABLE usage RESULT_VARIABLE result)
string(REGEX MATCHALL "--[a-z][a-z-]*" options "${usage}")
list(REMOVE_DUPLICATES options)
if(NOT result EQUAL 0 OR options STREQUAL "")
    message(FATAL_ERROR "${CLI} --help gave no options (exit ${result})")
endif()
set(missing)
foreach(option IN LISTS options)
    string(FIND "${rendered}" "${option}" at)
    if(at EQUAL -1)
        list(APPEND missing ${option})
    endif()
endforeach()
if(missing)
    message(FATAL_ERROR "the manual page does not explain: ${missing}")
endif()
