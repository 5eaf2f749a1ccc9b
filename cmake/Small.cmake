include(CheckLinkerFlag)
check_linker_flag(CXX -Wl,-z,pack-relative-relocs BOARD_PACKS_RELOCATIONS)

# Optimizes a target for size in release builds: a host stays in memory for years, and none of its
# code is called often. The linker sees all code at once, so it can place functions that call one
# another next to each other, in fewer pages.
function(board_small target)
    target_compile_options(${target} PRIVATE
        $<$<CONFIG:Release>:-Os -ffunction-sections -fdata-sections>)
    set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE ON)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL EXECUTABLE)
        target_link_options(${target} PRIVATE $<$<CONFIG:Release>:-Wl,--gc-sections>)
        if(BOARD_PACKS_RELOCATIONS)
            target_link_options(${target} PRIVATE $<$<CONFIG:Release>:-Wl,-z,pack-relative-relocs>)
        endif()
    endif()
endfunction()
