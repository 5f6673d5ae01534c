# GoogleTest: Debian's packaged build natively; compiled from Debian's sources
# (/usr/src/googletest) for the mingw builds, which have no packaged library.

if(CMAKE_CROSSCOMPILING)
    set(REGVEX_GOOGLETEST_SOURCE "/usr/src/googletest" CACHE PATH "GoogleTest sources")
    set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
    set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
    add_subdirectory(${REGVEX_GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    foreach(lib gtest gtest_main gmock gmock_main)
        target_link_options(${lib} PUBLIC -static -static-libgcc -static-libstdc++)
    endforeach()
else()
    find_package(GTest REQUIRED)
endif()
