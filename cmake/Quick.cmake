# Tests and boardctl are half of the tree and include the heaviest headers: optimizing them takes
# most of a build. board_quick() compiles the targets of the calling folder faster in
# RelWithDebInfo, the build type of the check. The library and the host keep full optimization
# there, and Release builds keep it everywhere.
function(board_quick)
    if(BOARD_SANITIZE)
        # Optimization would remove accesses that the sanitizers check. clang++ prints the same
        # warnings at every level.
        set(level -O0)
    else()
        # The lowest level at which g++ prints all warnings and _FORTIFY_SOURCE works.
        set(level -O1)
    endif()
    add_compile_options("$<$<CONFIG:RelWithDebInfo>:${level};-g1>")
endfunction()

# board_precompile(<target> <header>...) compiles heavy headers of other projects once per target;
# board_precompile(<target> REUSE_FROM <other>) shares those of another target. A source still
# includes what it uses: the clang build does without precompiled headers.
function(board_precompile target)
    if(ARGV1 STREQUAL "REUSE_FROM")
        target_precompile_headers(${target} ${ARGN})
    else()
        target_precompile_headers(${target} PRIVATE ${ARGN})
    endif()
    # What ccache needs to keep the results, besides its setting in ./dev.
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
        target_compile_options(${target} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
    else()
        target_compile_options(${target} PRIVATE -fpch-preprocess)
    endif()
endfunction()
