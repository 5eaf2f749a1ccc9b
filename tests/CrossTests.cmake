# Tests of a cross build: GoogleTest from its sources, as Debian has no library of it for the target, and boardctl
# behind a script that brings the emulator, since a program of the target can't be started as it is.
set(INSTALL_GTEST OFF)
set(BUILD_GMOCK OFF)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
foreach(library gtest gtest_main)
    target_compile_options(${library} PRIVATE -w)
endforeach()

set(BOARDCTL ${CMAKE_BINARY_DIR}/emulated/boardctl)
list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
file(GENERATE OUTPUT ${BOARDCTL}
    CONTENT "#!/bin/sh\nexec ${emulator} $<TARGET_FILE:boardctl> \"$@\"\n"
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
