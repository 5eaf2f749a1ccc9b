# BOARD_SANITIZE instruments every target alike: a half-instrumented process reports faults that are none.
if(BOARD_SANITIZE)
    add_compile_options(-fsanitize=${BOARD_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${BOARD_SANITIZE})
endif()
