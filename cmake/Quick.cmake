# Tests and boardctl are half of the tree and include the heaviest headers: optimizing them takes
# most of a build. board_quick() compiles the targets of the calling folder faster in
# RelWithDebInfo, the build type of the check. The library and the host keep full optimization
# there, and Release builds keep it everywhere.
function(board_quick)
    if(BOARD_SANITIZE)
        # Leaves more accesses to watch. clang++ warns the same at every level.
        set(level -O0)
    else()
        # The lowest level with all warnings of g++ and with _FORTIFY_SOURCE.
        set(level -O1)
    endif()
    add_compile_options("$<$<CONFIG:RelWithDebInfo>:${level};-g1>")
endfunction()
