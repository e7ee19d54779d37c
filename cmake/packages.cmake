# Archives: cpack in the build tree makes one of the installation, with an SPDX document beside it, and
# `cpack --config CPackSourceConfig.cmake` one of the source. Debian packages come from packaging/build-deb.
set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_NAME ${scribera_library})
set(CPACK_PACKAGE_VENDOR Corvenna)
set(CPACK_PACKAGE_CONTACT "Corvenna <support@corvenna.example>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Signatures from electronic signature pads")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# Installed by component, so that CMake's list of installed files is not the one that an installation by root has
# left in the build tree.
set(CPACK_COMPONENTS_ALL runtime development tools documents)
if(SCRIBERA_BUILD_PEN_DRIVER)
    list(APPEND CPACK_COMPONENTS_ALL pen)
endif()
if(SCRIBERA_BUILD_BRIDGE)
    list(APPEND CPACK_COMPONENTS_ALL bridge)
endif()
if(SCRIBERA_BUILD_SIGN)
    list(APPEND CPACK_COMPONENTS_ALL sign)
endif()
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)

set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME scriberasdk-${PROJECT_VERSION})
# For the source, this puts a clean copy in the place of the directory.
configure_file(cmake/package-source.cmake.in ${PROJECT_BINARY_DIR}/cmake/package-source.cmake @ONLY)
configure_file(cmake/package-sbom.cmake.in ${PROJECT_BINARY_DIR}/cmake/package-sbom.cmake @ONLY)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/cmake/package-sbom.cmake)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/cmake/package-source.cmake)
set(CPACK_SOURCE_INSTALLED_DIRECTORIES "${PROJECT_SOURCE_DIR};/")
set(CPACK_SOURCE_IGNORE_FILES "")

include(CPack)
