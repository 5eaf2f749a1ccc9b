# Most of the time to compile a source goes into the headers that it includes and the templates that
# it uses from them. With BOARD_UNITE, the sources of a target compile as one. Their local names
# must therefore differ.
#
# board_unite(<target> [<folder>...]) does this for a target of the calling folder. The sources of
# the named folders are a second group: two groups of a large program can compile side by side. The
# sources in the calling folder itself compile alone.
function(board_unite target)
    if(NOT BOARD_UNITE)
        return()
    endif()
    get_target_property(sources ${target} SOURCES)
    foreach(source ${sources})
        get_filename_component(folder ${source} DIRECTORY)
        if(folder IN_LIST ARGN)
            set_source_files_properties(${source} PROPERTIES UNITY_GROUP second)
        elseif(folder)
            set_source_files_properties(${source} PROPERTIES UNITY_GROUP first)
        endif()
    endforeach()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    # g++ treats the united sources as headers and would warn about classes with a local base class,
    # which tests have.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endfunction()
