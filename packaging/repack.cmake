# Runs after cpack, which gives a package with libraries scripts that call ldconfig. dpkg calls it
# anyway, because of the package's trigger.
foreach(package ${CPACK_PACKAGE_FILES})
    if(package MATCHES "/libboarddrivers1_")
        set(folder ${package}.folder)
        execute_process(COMMAND dpkg-deb --raw-extract ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
        file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
        execute_process(COMMAND dpkg-deb --root-owner-group --build ${folder} ${package}
            OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
        file(REMOVE_RECURSE ${folder})
    endif()
endforeach()
