# What an installation holds, in three components: the library for hosts that run, what hosts are built with,
# and the tools of those who develop them.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(SCRIBERA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ScriberaSDK)
# Not a library for the linker: hosts load the driver from their current directory, and link to it from there.
set(SCRIBERA_DRIVER_DIR ${CMAKE_INSTALL_LIBDIR}/scribera)
set(SCRIBERA_DATA_DIR ${CMAKE_INSTALL_DATADIR}/scribera)

install(TARGETS scriberasdk EXPORT ScriberaSDKTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/scriberasdk.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT ScriberaSDKTargets NAMESPACE Scribera:: DESTINATION ${SCRIBERA_CMAKE_DIR} COMPONENT development)
configure_package_config_file(cmake/ScriberaSDKConfig.cmake.in ${PROJECT_BINARY_DIR}/cmake/ScriberaSDKConfig.cmake
    INSTALL_DESTINATION ${SCRIBERA_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/ScriberaSDKConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/cmake/ScriberaSDKConfig.cmake ${PROJECT_BINARY_DIR}/cmake/ScriberaSDKConfigVersion.cmake
    DESTINATION ${SCRIBERA_CMAKE_DIR} COMPONENT development)

# Written at install time, when the prefix is known for good.
install(CODE "
    set(CMAKE_INSTALL_LIBDIR \"${CMAKE_INSTALL_LIBDIR}\")
    set(CMAKE_INSTALL_INCLUDEDIR \"${CMAKE_INSTALL_INCLUDEDIR}\")
    set(PROJECT_VERSION \"${PROJECT_VERSION}\")
    configure_file(\"${PROJECT_SOURCE_DIR}/cmake/scriberasdk.pc.in\"
        \"${PROJECT_BINARY_DIR}/cmake/scriberasdk.pc\" @ONLY)"
    COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/cmake/scriberasdk.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)

install(TARGETS scribera-ink scribera-virtual-pad scribera-demo-host
    scribera-sim-generate scribera-sim-fingerprint scribera-sim-import
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(TARGETS scriberadrv LIBRARY DESTINATION ${SCRIBERA_DRIVER_DIR} COMPONENT tools)
install(FILES simulator/scriberasim.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT tools)
install(DIRECTORY simulator/recordings DESTINATION ${SCRIBERA_DATA_DIR} COMPONENT tools
    FILES_MATCHING PATTERN "*.rec")
install(FILES simulator/virtualpad/scribera-virtual-pad.svg examples/qt-host/scribera-demo-host.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT tools)
install(FILES simulator/virtualpad/scribera-virtual-pad.desktop examples/qt-host/scribera-demo-host.desktop
    DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT tools)
# The hosts of the demo, so that an installation shows itself.
install(TARGETS sign_on_every_pad carry_away place_fingerprints
    RUNTIME DESTINATION ${SCRIBERA_DRIVER_DIR} COMPONENT tools)
install(PROGRAMS scripts/run-demo scripts/run-window-demo DESTINATION ${SCRIBERA_DATA_DIR} COMPONENT tools)
configure_file(packaging/scribera-demo.in ${PROJECT_BINARY_DIR}/packaging/scribera-demo @ONLY)
install(PROGRAMS ${PROJECT_BINARY_DIR}/packaging/scribera-demo DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
