# The tests, boardctl and the host are most of the tree and include the heaviest headers, so
# optimizing them takes most of a build. board_quick() makes the targets of the calling folder
# compile faster in RelWithDebInfo, the build type of ./dev check. RelWithDebInfo still optimizes
# the library and the framework, and Release builds optimize everything.
function(board_quick)
    if(BOARD_SANITIZE)
        # Optimization would remove memory accesses that the sanitizers check. clang++ prints the
        # same warnings at every level.
        set(level -O0)
    else()
        # The lowest level at which g++ prints all warnings and _FORTIFY_SOURCE works.
        set(level -O1)
    endif()
    add_compile_options("$<$<CONFIG:RelWithDebInfo>:${level}>" $<$<NOT:$<CONFIG:Debug>>:-g1>)
endfunction()

# board_precompile(<target> <header>...) compiles heavy headers of other projects once per target;
# board_precompile(<target> REUSE_FROM <other>) uses the precompiled headers of another target. A
# source must still include what it uses, because the preset clang disables precompiled headers.
function(board_precompile target)
    if(ARGV1 STREQUAL "REUSE_FROM")
        target_precompile_headers(${target} ${ARGN})
    else()
        target_precompile_headers(${target} PRIVATE ${ARGN})
    endif()
    # ccache caches the results only with these options and the settings in ./dev.
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
        target_compile_options(${target} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
    else()
        target_compile_options(${target} PRIVATE -fpch-preprocess)
    endif()
endfunction()
