# What `cmake --install` installs, and where. The framework has components of its own, because a
# board with another framework needs only the library.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/boarddrivers)
# The framework's libraries have generic names, so they stay out of the system's library folder.
set(framework_libraries ${CMAKE_INSTALL_LIBDIR}/boarddrivers)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/boarddrivers)

install(TARGETS boarddrivers EXPORT boarddrivers
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
    INCLUDES DESTINATION ${headers})
set_target_properties(boarddrivers PROPERTIES INSTALL_RPATH $ORIGIN/boarddrivers)
install(TARGETS framework EXPORT boarddrivers)
install(DIRECTORY include/ DESTINATION ${headers} COMPONENT development FILES_MATCHING PATTERN *.h)
install(EXPORT boarddrivers NAMESPACE boarddrivers:: DESTINATION ${package} COMPONENT development)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/boarddriversConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/boarddriversConfig.cmake
    CONTENT "include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(\${CMAKE_CURRENT_LIST_DIR}/boarddrivers.cmake)
" @ONLY)
install(FILES
        ${CMAKE_BINARY_DIR}/boarddriversConfig.cmake
        ${CMAKE_BINARY_DIR}/boarddriversConfigVersion.cmake
    DESTINATION ${package} COMPONENT development)

if(BOARD_PLATFORM_DIR)
    return()
endif()

install(TARGETS platform EXPORT boarddrivers INCLUDES DESTINATION ${headers}/framework)
install(TARGETS utility hwutility driverkernel EXPORT boarddrivers
    LIBRARY DESTINATION ${framework_libraries} COMPONENT framework)
set_target_properties(utility hwutility driverkernel PROPERTIES INSTALL_RPATH $ORIGIN)
install(DIRECTORY platform/ DESTINATION ${headers}/framework COMPONENT framework-development
    FILES_MATCHING PATTERN *.h)

file(RELATIVE_PATH up_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(packaging/boarddrivers.pc.in boarddrivers.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/boarddrivers.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

install(TARGETS boardctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT boardctl)
install(CODE "
    set(folder ${CMAKE_CURRENT_SOURCE_DIR}/packaging/systemd)
    set(made ${CMAKE_BINARY_DIR}/systemd)
    set(bin ${CMAKE_INSTALL_BINDIR})" COMPONENT boardctl)
install(SCRIPT packaging/systemd/units.cmake COMPONENT boardctl)
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

# The manual page and the completions are generated from boardctl's help.
if(BOARD_MAN)
    find_program(HELP2MAN help2man REQUIRED)
    set(page ${CMAKE_BINARY_DIR}/boardctl.1.gz)
    add_custom_command(OUTPUT ${page}
        COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/packaging/man.sh ${BOARDCTL} | gzip -9 -n >${page}.part
        COMMAND ${CMAKE_COMMAND} -E rename ${page}.part ${page}
        DEPENDS boardctl packaging/man.sh)
    add_custom_target(man ALL DEPENDS ${page})
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT boardctl)
    find_program(GZIP gzip REQUIRED)
    set(profile_page ${CMAKE_BINARY_DIR}/board.toml.5.gz)
    add_custom_command(OUTPUT ${profile_page}
        COMMAND ${GZIP} -9 -n -c ${CMAKE_CURRENT_SOURCE_DIR}/packaging/board.toml.5 >${profile_page}
        DEPENDS packaging/board.toml.5)
    add_custom_target(profile_page ALL DEPENDS ${profile_page})
    install(FILES ${profile_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT boardctl)

    find_program(PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
    set(completions ${CMAKE_BINARY_DIR}/completions)
    add_custom_command(OUTPUT ${completions}/boardctl ${completions}/_boardctl
        COMMAND ${PYTHON} ${CMAKE_CURRENT_SOURCE_DIR}/packaging/completions.py
            ${BOARDCTL} ${completions}
        DEPENDS
            boardctl
            packaging/completions.py
            packaging/completion.bash
            packaging/completion.zsh)
    add_custom_target(completions ALL DEPENDS ${completions}/boardctl ${completions}/_boardctl)
    install(FILES ${completions}/boardctl
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT boardctl)
    install(FILES ${completions}/_boardctl
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT boardctl)
endif()
