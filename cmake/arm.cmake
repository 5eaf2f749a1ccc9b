# 32-bit ARM Linux with hardware floating point. Programs run under emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc) # needed by GoogleTest's build
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi) # silences notes about code built by compilers before version 7
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(board_cross /usr/arm-linux-gnueabihf)
# Debian's libraries for the target with their headers, for boardweb. ./dev puts them there.
get_filename_component(board_armhf ${CMAKE_CURRENT_LIST_DIR}/../build/armhf ABSOLUTE)
set(board_armhf_libraries ${board_armhf}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
set(CMAKE_FIND_ROOT_PATH ${board_cross} ${board_armhf})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# These libraries need one another: the linker finds them through the first setting, and programs in
# the emulator through the second.
add_link_options(-Wl,-rpath-link,${board_armhf_libraries})
set(CMAKE_CROSSCOMPILING_EMULATOR
    qemu-arm -L ${board_cross} -E LD_LIBRARY_PATH=${board_armhf_libraries})
