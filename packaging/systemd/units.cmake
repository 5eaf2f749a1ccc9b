# Installs the systemd units, each with the path of the boardctl that is installed with it. Runs when
# the tree is installed, because only then is the prefix known. install.cmake sets `folder`, `made`
# and `bin`.
get_filename_component(prefix "${CMAKE_INSTALL_PREFIX}" ABSOLUTE)
if(prefix STREQUAL /usr)
    # The place of the profile, which the board's owner writes.
    file(MAKE_DIRECTORY $ENV{DESTDIR}/etc/boarddrivers)
endif()
set(bindir ${prefix}/${bin})
file(GLOB units RELATIVE ${folder} ${folder}/*.in)
foreach(template ${units})
    string(REGEX REPLACE "\\.in$" "" unit ${template})
    configure_file(${folder}/${template} ${made}/${unit} @ONLY)
    file(INSTALL ${made}/${unit} DESTINATION "${CMAKE_INSTALL_PREFIX}/lib/systemd/system")
endforeach()
