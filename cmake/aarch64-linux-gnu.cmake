# Builds for ARM 64 with Debian's compiler for it and the packages that scripts/arm64-root has unpacked. What is built
# runs under qemu-aarch64.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(SCRIBERA_ARM64_ROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-root CACHE PATH "Where scripts/arm64-root has put the packages")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SCRIBERA_ARM64_ROOT)
get_filename_component(CMAKE_SYSROOT ${SCRIBERA_ARM64_ROOT} ABSOLUTE)
if(NOT EXISTS ${CMAKE_SYSROOT}/usr/include)
    message(FATAL_ERROR "${CMAKE_SYSROOT} is empty: run scripts/arm64-root")
endif()
# Programs are this machine's, among them those of Qt that write sources.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)

# Its Qt does not find its plugins itself: of the calls that look whether a file is there, the emulator redirects some only.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${CMAKE_SYSROOT}
    -E QT_PLUGIN_PATH=${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu/qt5/plugins)
