# board_runner(<variable> <target>) sets the variable to the path that starts the program on the build
# machine. In a cross build, this is a script that runs the program in the emulator.
function(board_runner variable target)
    set(runner $<TARGET_FILE:${target}>)
    if(CMAKE_CROSSCOMPILING)
        set(runner ${CMAKE_BINARY_DIR}/emulated/${target})
        list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
        file(GENERATE OUTPUT ${runner}
            CONTENT "#!/bin/sh\nexec ${emulator} $<TARGET_FILE:${target}> \"$@\"\n"
            FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    endif()
    set(${variable} ${runner} PARENT_SCOPE)
endfunction()
