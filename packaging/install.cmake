# What `cmake --install` installs, and where. The framework has components of its own, because a
# board with another framework needs only the library.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/boarddrivers)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/boarddrivers)

# All libraries are installed in one folder, and each finds the others there, even if the folder is
# moved.
set_target_properties(boarddrivers PROPERTIES INSTALL_RPATH $ORIGIN)
install(TARGETS boarddrivers EXPORT boarddrivers
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    INCLUDES DESTINATION ${headers})
install(TARGETS boarddrivers_framework EXPORT boarddrivers)
install(DIRECTORY include/ DESTINATION ${headers} COMPONENT development FILES_MATCHING PATTERN *.h)
install(EXPORT boarddrivers NAMESPACE boarddrivers:: DESTINATION ${package} COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/boarddriversConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/boarddriversConfig.cmake
    CONTENT "include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(\${CMAKE_CURRENT_LIST_DIR}/boarddrivers.cmake)
" @ONLY)
install(FILES
        ${PROJECT_BINARY_DIR}/boarddriversConfig.cmake
        ${PROJECT_BINARY_DIR}/boarddriversConfigVersion.cmake
    DESTINATION ${package} COMPONENT development)

if(BOARD_PLATFORM_DIR)
    return()
endif()

set(framework boarddrivers_framework_static)
set(framework_flags -lboarddrivers_framework_static)
if(BUILD_SHARED_LIBS)
    set(framework boarddrivers_driverkernel boarddrivers_hwutility boarddrivers_utility)
    set(framework_flags "-lboarddrivers-driverkernel -lboarddrivers-hwutility -lboarddrivers-utility")
endif()
install(TARGETS boarddrivers_platform EXPORT boarddrivers INCLUDES DESTINATION ${headers}/framework)
set_target_properties(${framework} PROPERTIES INSTALL_RPATH $ORIGIN)
install(TARGETS ${framework} EXPORT boarddrivers
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT framework NAMELINK_COMPONENT framework-development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT framework-development)
install(DIRECTORY platform/ DESTINATION ${headers}/framework COMPONENT framework-development
    FILES_MATCHING PATTERN *.h)

file(RELATIVE_PATH up_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(packaging/boarddrivers.pc.in boarddrivers.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/boarddrivers.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
if(NOT BOARD_TOOLS)
    return()
endif()

# board_program(<program>) installs the program and its systemd units.
function(board_program program)
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${program})
    install(CODE "
        set(program ${program})
        set(folder ${PROJECT_SOURCE_DIR}/packaging/systemd)
        set(made ${PROJECT_BINARY_DIR}/systemd)
        set(unit_folder ${BOARD_UNIT_DIR})
        set(bin ${CMAKE_INSTALL_BINDIR})" COMPONENT ${program})
    install(SCRIPT packaging/systemd/units.cmake COMPONENT ${program})
endfunction()

board_program(boardctl)
if(BOARDWEB)
    board_program(boardweb)
    install(FILES packaging/boardweb.sysusers.conf
        DESTINATION lib/sysusers.d RENAME boardweb.conf COMPONENT boardweb)
endif()
install(FILES packaging/boardctl.tmpfiles.conf
    DESTINATION lib/tmpfiles.d RENAME boardctl.conf COMPONENT boardctl)
install(FILES host/status/org.boarddrivers.Host.varlink packaging/tags.schema.json
    DESTINATION ${CMAKE_INSTALL_DATADIR}/boarddrivers COMPONENT boardctl)
set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/boardctl)
install(FILES packaging/linux-board.toml DESTINATION ${documents}/examples COMPONENT boardctl)
file(GLOB guides docs/*-guide.md docs/operations.md docs/descriptor.md docs/station.md docs/leds.md
    docs/*.svg docs/kernel-notes.md)
install(FILES ${guides} DESTINATION ${documents} COMPONENT boardctl)
install(DIRECTORY docs/images DESTINATION ${documents} COMPONENT boardctl)

# board_reference(<program> <runner>) makes a program's manual page and completions from its help.
# The runner starts the program on the build machine.
function(board_reference program runner)
    find_program(HELP2MAN help2man REQUIRED)
    set(page ${PROJECT_BINARY_DIR}/${program}.1.gz)
    add_custom_command(OUTPUT ${page}
        COMMAND ${PROJECT_SOURCE_DIR}/packaging/man.sh ${runner} | gzip -9 -n >${page}.part
        COMMAND ${CMAKE_COMMAND} -E rename ${page}.part ${page}
        DEPENDS ${program} packaging/man.sh packaging/changelog packaging/${program}.h2m)
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${program})

    find_program(PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
    set(completions ${PROJECT_BINARY_DIR}/completions)
    set(made ${completions}/${program} ${completions}/_${program} ${completions}/${program}.fish)
    add_custom_command(OUTPUT ${made}
        COMMAND ${PYTHON} ${PROJECT_SOURCE_DIR}/packaging/completions.py
            ${runner} ${completions}
        DEPENDS
            ${program}
            packaging/completions.py
            packaging/completion.bash
            packaging/completion.fish
            packaging/completion.zsh)
    install(FILES ${completions}/${program}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT ${program})
    install(FILES ${completions}/_${program}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT ${program})
    install(FILES ${completions}/${program}.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT ${program})
    add_custom_target(${program}_reference ALL DEPENDS ${page} ${made})
endfunction()

if(BOARD_MAN)
    board_reference(boardctl ${BOARDCTL})
    if(BOARDWEB)
        board_reference(boardweb ${BOARDWEB_PROGRAM})
    endif()
    find_program(GZIP gzip REQUIRED)
    set(profile_page ${PROJECT_BINARY_DIR}/board.toml.5.gz)
    add_custom_command(OUTPUT ${profile_page}
        COMMAND ${GZIP} -9 -n -c ${PROJECT_SOURCE_DIR}/packaging/board.toml.5 >${profile_page}
        DEPENDS packaging/board.toml.5)
    add_custom_target(profile_page ALL DEPENDS ${profile_page})
    install(FILES ${profile_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT boardctl)
endif()
