# Installs the systemd units of a program, with the path of the installed program filled in. Runs
# when the tree is installed, because the prefix is not known earlier. install.cmake sets `program`,
# `folder`, `made`, `bin` and `unit_folder`.
get_filename_component(prefix "${CMAKE_INSTALL_PREFIX}" ABSOLUTE)
cmake_path(APPEND CMAKE_INSTALL_PREFIX ${unit_folder} OUTPUT_VARIABLE destination)
if(prefix STREQUAL /usr AND program STREQUAL boardctl)
    # The folder for the profile, which the board's owner writes.
    file(MAKE_DIRECTORY $ENV{DESTDIR}/etc/boarddrivers)
endif()
if(prefix STREQUAL /usr AND program STREQUAL boardweb)
    # Runs the host with the group that the package creates. Without that group, the host could not
    # start.
    file(INSTALL ${folder}/boardctl.service.d DESTINATION ${destination})
endif()
set(bindir ${prefix}/${bin})
file(GLOB units RELATIVE ${folder} ${folder}/${program}*.in)
foreach(template ${units})
    string(REGEX REPLACE "\\.in$" "" unit ${template})
    configure_file(${folder}/${template} ${made}/${unit} @ONLY)
    file(INSTALL ${made}/${unit} DESTINATION ${destination})
endforeach()
