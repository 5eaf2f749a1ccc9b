# One set of warnings for every target and for both compilers.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wformat=2 -Wconversion)
if(BOARD_WERROR)
    add_compile_options(-Werror)
endif()
