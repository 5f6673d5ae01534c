# Compiles the help (cmake -P): copies the sources into a staging folder with the version
# filled in, runs chmcmd there, and puts the compiled file in its place. Any warning of
# chmcmd fails the build: it warns of links to pages that do not exist and of missing
# files, and a help with either must not ship.
#
# The same sources give the same bytes: the project asks for no binary index (chmcmd
# fills a word of it with whatever its memory held), and CLEAR_TIMES, a Python script run
# with PYTHON, clears the two compile times that chmcmd records.
#
# Variables: CHMCMD, SOURCE_DIR, FILES (list of names in SOURCE_DIR), STAGE_DIR, VERSION,
# OUTPUT; PYTHON and CLEAR_TIMES, when given.

cmake_minimum_required(VERSION 3.25)

foreach(variable CHMCMD SOURCE_DIR FILES STAGE_DIR VERSION OUTPUT)
    if(NOT DEFINED ${variable})
        message(FATAL_ERROR "compile_help.cmake: ${variable} is not set")
    endif()
endforeach()

set(REGVEX_HELP_VERSION ${VERSION})

# A fresh staging folder: a page removed from the sources must not live on there.
file(REMOVE_RECURSE ${STAGE_DIR})
file(MAKE_DIRECTORY ${STAGE_DIR})
foreach(name IN LISTS FILES)
    file(READ ${SOURCE_DIR}/${name} text)
    # A misspelt placeholder would silently become empty text.
    string(REGEX MATCHALL "@[A-Za-z0-9_]+@" placeholders "${text}")
    foreach(placeholder IN LISTS placeholders)
        if(NOT placeholder STREQUAL "@REGVEX_HELP_VERSION@")
            message(FATAL_ERROR "${SOURCE_DIR}/${name}: unknown placeholder ${placeholder}")
        endif()
    endforeach()
    configure_file(${SOURCE_DIR}/${name} ${STAGE_DIR}/${name} @ONLY)
endforeach()

execute_process(
    COMMAND ${CHMCMD} regvexlor.hhp
    WORKING_DIRECTORY ${STAGE_DIR}
    RESULT_VARIABLE result
    OUTPUT_VARIABLE output
    ERROR_VARIABLE output)
if(NOT result EQUAL 0 OR output MATCHES "Warning|Error|exception" OR
   NOT EXISTS ${STAGE_DIR}/regvexlor.chm)
    message(FATAL_ERROR "chmcmd could not compile the help (exit ${result}):\n${output}")
endif()

if(DEFINED PYTHON AND DEFINED CLEAR_TIMES)
    execute_process(
        COMMAND ${PYTHON} ${CLEAR_TIMES} ${STAGE_DIR}/regvexlor.chm
        RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "the compile times of the help could not be cleared")
    endif()
endif()

get_filename_component(output_dir ${OUTPUT} DIRECTORY)
file(MAKE_DIRECTORY ${output_dir})
file(COPY_FILE ${STAGE_DIR}/regvexlor.chm ${OUTPUT})
