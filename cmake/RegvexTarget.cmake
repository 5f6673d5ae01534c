# Settings every target of the project gets; nothing here is global.

function(regvex_configure_target target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor
        -Woverloaded-virtual -Wimplicit-fallthrough -Werror)
    if(REGVEX_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
        target_link_options(${target} PUBLIC -fsanitize=address,undefined)
    endif()
    if(REGVEX_FUZZ)
        # Coverage for the fuzzers' guidance in every library they reach, and the standard
        # library's own bounds checks, which cost little and catch what ASan cannot see
        # inside a container's capacity.
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
        target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)
    endif()
    if(WIN32)
        # The programs must run on a bare Windows: no mingw runtime DLLs beside them.
        target_link_options(${target} PUBLIC -static -static-libgcc -static-libstdc++)
        # No link time in the headers: the same commit gives the same executables. Release
        # builds are stripped by the linker, since strip would stamp the time again.
        target_link_options(${target} PUBLIC -Wl,--no-insert-timestamp $<$<CONFIG:Release>:-s>)
    endif()
endfunction()

# Targets that include <windows.h>.
function(regvex_configure_win32_target target)
    regvex_configure_target(${target})
    target_compile_definitions(${target} PRIVATE
        UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
endfunction()

# The version resource of a Windows executable named NAME.exe, described as DESCRIPTION.
function(regvex_add_version_info target name description)
    set(REGVEX_INTERNAL_NAME ${name})
    set(REGVEX_FILE_DESCRIPTION ${description})
    set(rc ${CMAKE_CURRENT_BINARY_DIR}/generated/${name}_version.rc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/version_info.rc.in ${rc})
    target_sources(${target} PRIVATE ${rc})
endfunction()
