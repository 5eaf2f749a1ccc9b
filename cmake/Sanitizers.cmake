# BOARD_SANITIZE instruments every target: a partly instrumented process reports false errors.
if(BOARD_SANITIZE)
    add_compile_options(-fsanitize=${BOARD_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${BOARD_SANITIZE})
    add_compile_definitions(BOARD_SANITIZED=1) # tests that repeat something repeat it less often
else()
    add_compile_definitions(BOARD_SANITIZED=0)
endif()
if(BOARD_FUZZ)
    # Shows the fuzzers which branches an input reaches.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Builds the targets of the calling folder, which no fuzzer uses, without the fuzzers'
# instrumentation. That is faster.
function(board_not_fuzzed)
    if(BOARD_FUZZ)
        add_compile_options(-fno-sanitize=fuzzer-no-link)
    endif()
endfunction()

# Makes the linker reject a shared library that does not link everything it uses. With sanitizers,
# this is impossible, because only the program links their runtime.
function(board_link_complete target)
    if(NOT BOARD_SANITIZE)
        target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
endfunction()
