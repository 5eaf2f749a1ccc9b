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
EXTRA_OECMAKE = "-DBOARD_TESTS=OFF -DBOARD_PACKAGES=OFF -DCMAKE_BUILD_TYPE=MinSizeRel"

# A new board has no profile, so the services are not enabled.
PACKAGES =+ "boardctl boardweb"
SYSTEMD_PACKAGES = "boardctl boardweb"
SYSTEMD_SERVICE:boardctl = "boardctl.service"
SYSTEMD_SERVICE:boardweb = "boardweb.service"
SYSTEMD_AUTO_ENABLE = "disable"
FILES:boardctl = "${bindir}/boardctl ${nonarch_libdir}/systemd/system/boardctl* \
    ${nonarch_libdir}/tmpfiles.d ${datadir}/boarddrivers ${datadir}/doc/boardctl ${sysconfdir}/boarddrivers"
FILES:boardweb = "${bindir}/boardweb ${nonarch_libdir}/systemd/system/boardweb* \
    ${nonarch_libdir}/sysusers.d ${nonarch_libdir}/systemd/system/boardctl.service.d/boardweb.conf"
