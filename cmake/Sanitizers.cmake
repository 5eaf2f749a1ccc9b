# BOARD_SANITIZE instruments every target alike: a half-instrumented process reports faults that are none.
if(BOARD_SANITIZE)
    add_compile_options(-fsanitize=${BOARD_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${BOARD_SANITIZE})
    add_compile_definitions(BOARD_SANITIZED=1) # tests repeat less then
else()
    add_compile_definitions(BOARD_SANITIZED=0)
endif()
if(BOARD_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link) # so that the fuzzer sees which branches its inputs reach
endif()

# A shared library names all that it needs. Not under sanitizers: their runtime is in the program alone.
function(board_link_complete target)
    if(NOT BOARD_SANITIZE)
        target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
endfunction()
