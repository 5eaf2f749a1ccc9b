# Finds header-only packages for the target machine, or else uses those of the build machine. The
# build machine's folder (/usr/include) also holds its C library's headers, which are wrong for a
# cross compiler. The build tree therefore has a folder for each package, with a link to the
# package's headers.
function(board_header_only name header)
    find_path(${name}_FOLDER ${header})
    find_path(${name}_FOLDER ${header} REQUIRED NO_CMAKE_FIND_ROOT_PATH)
    get_filename_component(folder ${header} DIRECTORY)
    set(view ${PROJECT_BINARY_DIR}/headers/${name})
    file(MAKE_DIRECTORY ${view})
    file(CREATE_LINK ${${name}_FOLDER}/${folder} ${view}/${folder} SYMBOLIC)
    add_library(${name} INTERFACE)
    target_include_directories(${name} SYSTEM INTERFACE ${view})
endfunction()

board_header_only(boarddrivers_cli11 CLI/CLI.hpp)
board_header_only(boarddrivers_json nlohmann/json.hpp)
board_header_only(boarddrivers_toml toml++/toml.h)
