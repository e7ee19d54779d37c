# Debian packages: cpack in the build folder. One for each component of the installation.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME scriberasdk)
set(CPACK_PACKAGE_VENDOR Corvenna)
set(CPACK_PACKAGE_CONTACT "Corvenna <support@corvenna.example>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Signatures from electronic signature pads")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libscriberasdk1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "Signatures from electronic signature pads: shared library
 Takes signatures from electronic signature pads: receives the pen from the
 driver of the pad, draws the signature in a window or off screen, keeps every
 ink point with its time, and hands the signature over as an image file, as
 text, as vectors or as a stream of ink points.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libscriberasdk-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libscriberasdk1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "Signatures from electronic signature pads: development files
 What applications are built with that take signatures from electronic
 signature pads: the header for C and C++, and the files by which CMake and
 pkg-config find the library.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME scribera-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libscriberasdk1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "Signatures from electronic signature pads: simulated pad and tools
 For developers without a pad: a simulated one that plays recorded
 signatures, a virtual one on the screen, recordings and their generators, a
 demo, and a tool that inspects and converts streams of ink points.")

# What Debian wants beside each package's files.
configure_file(packaging/changelog.Debian.in ${PROJECT_BINARY_DIR}/packaging/changelog.Debian @ONLY)
find_program(SCRIBERA_GZIP gzip)
foreach(pair IN ITEMS runtime:libscriberasdk1 development:libscriberasdk-dev tools:scribera-tools)
    string(REPLACE ":" ";" pair ${pair})
    list(GET pair 0 component)
    list(GET pair 1 package)
    install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
    if(SCRIBERA_GZIP)
        install(CODE "
            execute_process(COMMAND \"${SCRIBERA_GZIP}\" -9nc \"${PROJECT_BINARY_DIR}/packaging/changelog.Debian\"
                OUTPUT_FILE \"${PROJECT_BINARY_DIR}/packaging/changelog.gz\" COMMAND_ERROR_IS_FATAL ANY)"
            COMPONENT ${component})
        install(FILES ${PROJECT_BINARY_DIR}/packaging/changelog.gz
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
    endif()
endforeach()

include(CPack)
