# Builds GoogleTest from source for the tests of a cross build, because Debian has no GoogleTest
# library for the target.
set(INSTALL_GTEST OFF)
set(BUILD_GMOCK OFF)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
foreach(library gtest gtest_main)
    target_compile_options(${library} PRIVATE -w)
endforeach()
