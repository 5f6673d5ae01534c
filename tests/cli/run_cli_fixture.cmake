# Runs the real command-line program on the scan fixture and compares what it prints.
# Called as: cmake -DCLI=... -DEMULATOR=... -DFIXTURES=... -P run_cli_fixture.cmake
execute_process(
    COMMAND ${EMULATOR} ${CLI} scan --drive C: --registry ${FIXTURES}/cli/scan_examples.reg
            --map C:=${FIXTURES}/cli/drive_c
    OUTPUT_VARIABLE out
    ERROR_VARIABLE err
    RESULT_VARIABLE code)
# A Windows console program writes CR LF.
string(REPLACE "\r" "" out "${out}")
string(REPLACE "\r" "" err "${err}")
file(READ ${FIXTURES_NATIVE}/cli/scan_examples.expected expected)
if(NOT code EQUAL 0)
    message(FATAL_ERROR "exit code ${code}\n${err}")
endif()
if(NOT out STREQUAL expected)
    message(FATAL_ERROR "output differs:\n${out}\nexpected:\n${expected}")
endif()
if(NOT err STREQUAL "12 errors found\n")
    message(FATAL_ERROR "standard error: ${err}")
endif()

# The same findings explained, each in its block; the drive's folder is the fixture's.
execute_process(
    COMMAND ${EMULATOR} ${CLI} scan --drive C: --registry ${FIXTURES}/cli/scan_examples.reg
            --map C:=${FIXTURES}/cli/drive_c --explain
    OUTPUT_VARIABLE out
    ERROR_VARIABLE err
    RESULT_VARIABLE code)
string(REPLACE "\r" "" out "${out}")
string(REPLACE "${FIXTURES}/cli/drive_c" "DRIVE_C" out "${out}")
file(READ ${FIXTURES_NATIVE}/cli/scan_examples.explain.expected expected)
if(NOT code EQUAL 0 OR NOT out STREQUAL expected)
    message(FATAL_ERROR "explained: exit code ${code}\n${err}\n${out}\nexpected:\n${expected}")
endif()

# Findings that cannot be written are not a clean scan.
if(EXISTS /dev/full)
    execute_process(
        COMMAND ${EMULATOR} ${CLI} scan --drive C: --registry ${FIXTURES}/cli/scan_examples.reg
                --map C:=${FIXTURES}/cli/drive_c
        OUTPUT_FILE /dev/full
        ERROR_VARIABLE err
        RESULT_VARIABLE code)
    if(NOT code EQUAL 1 OR NOT err MATCHES "could not write to standard output")
        message(FATAL_ERROR "scan to a full disk: exit code ${code}\n${err}")
    endif()
endif()
