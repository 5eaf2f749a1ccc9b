# Runs after cpack and corrects what it has made:
# - The modes of folders depend on the user's umask.
# - A package with libraries gets scripts that call ldconfig. dpkg calls it anyway, because of the
#   package's trigger.
# - In the packages *-dbgsym, the list of checksums names the folder of the build, and the modes of
#   files depend on the umask.
foreach(package ${CPACK_PACKAGE_FILES})
    set(folder ${package}.folder)
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND find ${folder} -type d -exec chmod 755 {} + COMMAND_ERROR_IS_FATAL ANY)
    if(package MATCHES "/libboarddrivers1_")
        file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
    endif()
    if(package MATCHES "-dbgsym_")
        execute_process(COMMAND sed -i "s|  /.*-dbgsym/|  |" ${folder}/DEBIAN/md5sums COMMAND_ERROR_IS_FATAL ANY)
        execute_process(COMMAND find ${folder}/usr -type f -exec chmod 644 {} + COMMAND_ERROR_IS_FATAL ANY)
    endif()
    execute_process(COMMAND dpkg-deb --root-owner-group --build ${folder} ${package}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${folder})
endforeach()
