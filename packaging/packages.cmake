# Debian packages: run `cpack` in the build tree of a release preset.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "boarddrivers <boarddrivers@localhost.invalid>")
# Programs and libraries are installed stripped. The packages *-dbgsym.ddeb hold what was removed.
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_OBJCOPY_EXECUTABLE ${CMAKE_OBJCOPY})
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_SOURCE_DIR}/packaging/dated.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/packaging/repack.cmake)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(exact "(= ${PROJECT_VERSION}-1)")
if(CMAKE_CROSSCOMPILING)
    # States the runtime dependencies by hand: the tool that finds them would name packages of the
    # cross compiler, which no board has.
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
    set(runtime "libc6 (>= 2.36), libgcc-s1 (>= 3.5), libstdc++6 (>= 12)")
    set(web_runtime "libmicrohttpd12 (>= 0.9.75), ${runtime}")
else()
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/lib)
    set(runtime "")
    set(web_runtime "")
endif()

# board_package(GROUP PACKAGE SECTION DEPENDS DESCRIPTION COMPONENT...)
function(board_package group package section depends description)
    string(TOUPPER ${group} upper)
    list(APPEND components ${CPACK_COMPONENTS_ALL} ${ARGN})
    set(CPACK_COMPONENTS_ALL ${components} PARENT_SCOPE)
    foreach(component ${ARGN})
        string(TOUPPER ${component} name)
        set(CPACK_COMPONENT_${name}_GROUP ${group} PARENT_SCOPE)
    endforeach()
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${description}" PARENT_SCOPE)
    # Debian requires these files in each package.
    set(doc ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package})
    list(GET ARGN 0 first)
    install(FILES packaging/copyright DESTINATION ${doc} COMPONENT ${first})
    install(FILES ${CMAKE_BINARY_DIR}/changelog.Debian.gz DESTINATION ${doc} COMPONENT ${first})
endfunction()

find_program(GZIP gzip REQUIRED)
execute_process(COMMAND ${GZIP} -9 -n -c ${CMAKE_CURRENT_SOURCE_DIR}/packaging/changelog
    OUTPUT_FILE ${CMAKE_BINARY_DIR}/changelog.Debian.gz COMMAND_ERROR_IS_FATAL ANY)

board_package(library_group libboarddrivers1 libs "${runtime}"
"Drivers for fan, temperature, power status, LEDs, board descriptor and VoIP
capacity, an LED sequencer, a service button monitor and a CPU load meter,
with the driver framework that hosts them on an ordinary Linux machine."
    library framework)
board_package(development_group libboarddrivers-dev libdevel "libboarddrivers1 ${exact}"
"Headers, CMake package and pkg-config file of libboarddrivers."
    development framework-development)
board_package(boardctl_group boardctl utils "${runtime}"
"The command boardctl hosts the drivers of a board and shows what happens,
reads and sets its devices, builds and edits board descriptors, checks and
previews LED tables, and simulates a board if you have none."
    boardctl)
if(BOARDWEB)
    string(JOIN ", " needs ${web_runtime} "systemd | systemd-standalone-sysusers | systemd-sysusers")
    board_package(boardweb_group boardweb utils "${needs}"
"The program boardweb shows the board that boardctl hosts in a browser: LEDs,
temperature and fan over the last hour, alarms and events. It also serves
figures to Prometheus. It has no privileges and cannot change the board."
        boardweb)
    set(CPACK_DEBIAN_BOARDWEB_GROUP_PACKAGE_RECOMMENDS boardctl)
endif()
file(WRITE ${CMAKE_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_GROUP_PACKAGE_CONTROL_EXTRA ${CMAKE_BINARY_DIR}/triggers)
foreach(program boardctl boardweb)
    string(TOUPPER ${program} upper)
    set(scripts ${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian/${program})
    set(CPACK_DEBIAN_${upper}_GROUP_PACKAGE_CONTROL_EXTRA
        ${scripts}/postinst ${scripts}/prerm ${scripts}/postrm)
endforeach()
include(CPack)
