# What makes a fault harder to exploit, in every build that a sanitizer does not watch.
if(NOT BOARD_SANITIZE)
    add_compile_options(-fstack-protector-strong -fstack-clash-protection)
    add_compile_definitions($<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>) # which needs optimisation
    add_link_options(-Wl,-z,relro,-z,now)
endif()
