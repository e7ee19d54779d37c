# What an installation holds, in components: the library for hosts that run, what hosts are built with, the tools of
# those who develop them, and the documents. Nothing but the unit of the service for browsers names the prefix, so that
# an installation can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

foreach(folder IN ITEMS BINDIR LIBDIR LIBEXECDIR INCLUDEDIR DATADIR MANDIR)
    if(IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}")
        message(FATAL_ERROR "CMAKE_INSTALL_${folder} has to be relative to the prefix")
    endif()
endforeach()

set(SCRIBERA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/${scribera_package})
# Not a library for the linker: hosts load the driver from their current directory, and link to it from there.
set(SCRIBERA_DRIVER_DIR ${CMAKE_INSTALL_LIBDIR}/scribera)
set(SCRIBERA_DATA_DIR ${CMAKE_INSTALL_DATADIR}/scribera)

install(TARGETS scriberasdk EXPORT ${scribera_package}Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/scriberasdk.h include/scriberasdk_ext.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT ${scribera_package}Targets NAMESPACE Scribera:: DESTINATION ${SCRIBERA_CMAKE_DIR} COMPONENT development)
configure_package_config_file(cmake/ScriberaSDKConfig.cmake.in ${PROJECT_BINARY_DIR}/cmake/${scribera_package}Config.cmake
    INSTALL_DESTINATION ${SCRIBERA_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/${scribera_package}ConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/cmake/${scribera_package}Config.cmake ${PROJECT_BINARY_DIR}/cmake/${scribera_package}ConfigVersion.cmake
    DESTINATION ${SCRIBERA_CMAKE_DIR} COMPONENT development)
file(RELATIVE_PATH SCRIBERA_PREFIX_OF_PKGCONFIG /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/scriberasdk.pc.in ${PROJECT_BINARY_DIR}/cmake/${scribera_library}.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/cmake/${scribera_library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)

install(FILES LICENSE README.md CHANGELOG.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/scriberasdk
    COMPONENT documents)

if(NOT SCRIBERA_BUILD_TOOLS)
    return()
endif()

if(SCRIBERA_BUILD_PEN_DRIVER)
    install(TARGETS scribera_pen_driver LIBRARY DESTINATION ${SCRIBERA_DRIVER_DIR}/pen COMPONENT pen)
    # Where udev looks, for an installation into /usr; others copy it to /etc/udev/rules.d.
    install(FILES drivers/pen/70-scribera-pen.rules DESTINATION lib/udev/rules.d COMPONENT pen)
endif()

install(TARGETS scribera-ink scribera-pad scribera-virtual-pad scribera-demo-host
    scribera-sim-generate scribera-sim-fingerprint scribera-sim-import
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
file(RELATIVE_PATH SCRIBERA_LIBRARY_OF_PROGRAMS /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(scribera-demo-host scribera-pad PROPERTIES INSTALL_RPATH "\$ORIGIN/${SCRIBERA_LIBRARY_OF_PROGRAMS}")
install(TARGETS scriberadrv LIBRARY DESTINATION ${SCRIBERA_DRIVER_DIR} COMPONENT tools)
install(FILES drivers/simulator/scriberasim.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT tools)
install(DIRECTORY drivers/simulator/recordings DESTINATION ${SCRIBERA_DATA_DIR} COMPONENT tools
    FILES_MATCHING PATTERN "*.rec")
install(FILES drivers/simulator/virtualpad/scribera-virtual-pad.svg examples/qt-host/scribera-demo-host.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT tools)
install(FILES drivers/simulator/virtualpad/scribera-virtual-pad.desktop examples/qt-host/scribera-demo-host.desktop
    DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT tools)
# The hosts of the demo, so that an installation shows itself.
install(TARGETS sign_on_every_pad carry_away place_fingerprints
    RUNTIME DESTINATION ${SCRIBERA_DRIVER_DIR} COMPONENT tools)
install(PROGRAMS scripts/run-demo scripts/run-window-demo DESTINATION ${SCRIBERA_DATA_DIR} COMPONENT tools)
configure_file(packaging/scribera-demo.in ${PROJECT_BINARY_DIR}/packaging/scribera-demo @ONLY)
install(PROGRAMS ${PROJECT_BINARY_DIR}/packaging/scribera-demo DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
# Manual pages, and completion of command lines.
install(DIRECTORY packaging/share/man/ DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT tools
    PATTERN scribera-bridge.1 EXCLUDE PATTERN scribera-sign.1 EXCLUDE)
install(DIRECTORY packaging/share/bash-completion DESTINATION ${CMAKE_INSTALL_DATADIR} COMPONENT tools
    PATTERN scribera-sign EXCLUDE)

if(SCRIBERA_BUILD_SIGN)
    install(TARGETS scribera-sign RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT sign)
    set_target_properties(scribera-sign PROPERTIES INSTALL_RPATH "\$ORIGIN/${SCRIBERA_LIBRARY_OF_PROGRAMS}")
    install(FILES packaging/share/man/man1/scribera-sign.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT sign)
    install(FILES packaging/share/bash-completion/completions/scribera-sign
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT sign)
endif()

if(SCRIBERA_BUILD_BRIDGE)
    install(TARGETS scribera-bridge RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT bridge)
    # It looks for drivers and library as the programs do, from a folder beside theirs.
    install(TARGETS scribera-bridge-worker RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR} COMPONENT bridge)
    set_target_properties(scribera-bridge-worker PROPERTIES
        INSTALL_RPATH "\$ORIGIN/${SCRIBERA_LIBRARY_OF_PROGRAMS}")
    install(FILES web/client/scribera-pad.js web/client/scribera-pad.d.ts web/bridge/example.html
        DESTINATION ${SCRIBERA_DATA_DIR}/web COMPONENT bridge)
    install(FILES packaging/share/man/man1/scribera-bridge.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT bridge)
    install(FILES web/bridge/scribera-bridge.conf DESTINATION ${CMAKE_INSTALL_SYSCONFDIR} COMPONENT bridge)
    # Where the manager of each user looks, for an installation into /usr; others copy them to /etc/systemd/user. A unit
    # needs whole paths: those of the prefix that is configured, where the files above are.
    get_filename_component(SCRIBERA_FULL_SYSCONFDIR ${CMAKE_INSTALL_SYSCONFDIR} ABSOLUTE BASE_DIR ${CMAKE_INSTALL_PREFIX})
    configure_file(web/bridge/systemd/scribera-bridge.service.in ${PROJECT_BINARY_DIR}/web/scribera-bridge.service @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/web/scribera-bridge.service web/bridge/systemd/scribera-bridge.socket
        DESTINATION lib/systemd/user COMPONENT bridge)
endif()
