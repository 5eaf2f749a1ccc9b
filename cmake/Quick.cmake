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
