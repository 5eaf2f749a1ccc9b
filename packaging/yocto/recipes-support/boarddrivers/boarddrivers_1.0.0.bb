# Builds the source tree that contains this layer. Without "boardctl" in PACKAGECONFIG, builds only
# the library and its framework.
SUMMARY = "Hardware-support drivers for embedded Linux boards"
SECTION = "libs"
LICENSE = "CLOSED"

inherit externalsrc cmake pkgconfig systemd
EXTERNALSRC = "${@os.path.normpath(d.getVar('THISDIR') + '/../../../..')}"

PACKAGECONFIG ??= "boardctl"
PACKAGECONFIG[boardctl] = "-DBOARD_TOOLS=ON,-DBOARD_TOOLS=OFF,cli11 tomlplusplus nlohmann-json"
PACKAGECONFIG[boardweb] = "-DBOARDWEB=ON,-DBOARDWEB=OFF,libmicrohttpd"
EXTRA_OECMAKE = "-DBOARD_TESTS=OFF -DBOARD_PACKAGES=OFF -DCMAKE_BUILD_TYPE=MinSizeRel \
    -DBOARD_UNIT_DIR=${systemd_system_unitdir}"

# A new board has no profile, so the services are not enabled.
# boardweb comes first: it owns a file in boardctl.service.d, which boardctl* would match, too.
PACKAGES =+ "boardweb boardctl"
SYSTEMD_PACKAGES = "boardctl boardweb"
SYSTEMD_SERVICE:boardctl = "boardctl.service"
SYSTEMD_SERVICE:boardweb = "boardweb.service"
SYSTEMD_AUTO_ENABLE = "disable"
FILES:boardctl = "${bindir}/boardctl ${systemd_system_unitdir}/boardctl* \
    ${nonarch_libdir}/tmpfiles.d ${datadir}/boarddrivers ${datadir}/doc/boardctl ${sysconfdir}/boarddrivers"
FILES:boardweb = "${bindir}/boardweb ${systemd_system_unitdir}/boardweb* \
    ${nonarch_libdir}/sysusers.d ${systemd_system_unitdir}/boardctl.service.d/boardweb.conf"
