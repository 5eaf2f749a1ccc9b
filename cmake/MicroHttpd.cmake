# The library with which boardweb serves HTTP, as the target `boarddrivers_microhttpd`.
find_path(MICROHTTPD_FOLDER microhttpd.h)
find_library(MICROHTTPD_LIBRARY microhttpd)
if(NOT MICROHTTPD_FOLDER OR NOT MICROHTTPD_LIBRARY)
    message(FATAL_ERROR "boardweb needs libmicrohttpd, which was not found for the target machine. "
        "Install the Debian package libmicrohttpd-dev, or leave boardweb out with -DBOARDWEB=OFF.")
endif()
add_library(boarddrivers_microhttpd INTERFACE)
target_include_directories(boarddrivers_microhttpd SYSTEM INTERFACE ${MICROHTTPD_FOLDER})
target_link_libraries(boarddrivers_microhttpd INTERFACE ${MICROHTTPD_LIBRARY})
