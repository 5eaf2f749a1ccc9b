# Options that make a fault harder to exploit, in every build without sanitizers.
if(NOT BOARD_SANITIZE)
    add_compile_options(-fstack-protector-strong -fstack-clash-protection)
    add_compile_definitions($<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>) # needs optimization
    add_link_options(-Wl,-z,relro,-z,now)
endif()
