# Optimizes a target for size in release builds: a host stays in memory for years, and none of its
# code is called often.
function(board_small target)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-Os -ffunction-sections -fdata-sections>)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL EXECUTABLE)
        target_link_options(${target} PRIVATE $<$<CONFIG:Release>:-Wl,--gc-sections>)
    endif()
endfunction()
