# Sourced by the tests, with $qt, $package and $library: a host with this Qt is built with the CMake package, shows its
# window and takes a signature in it.
. "$(dirname "$0")/simulated-pad.sh"
cp "$samples/qt_window.cpp" .
cat >CMakeLists.txt <<END
cmake_minimum_required(VERSION 3.16)
project(host LANGUAGES CXX)
find_package($package 3.0 REQUIRED)
find_package(Qt$qt REQUIRED COMPONENTS Widgets)
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_AUTOMOC ON)
add_executable(host qt_window.cpp)
target_link_libraries(host PRIVATE Scribera::$library Qt$qt::Widgets)
END
cmake -S . -B build >cmake.log
cmake --build build >>cmake.log
build/host
[ "$(od -An -tx1 -N4 signature.png)" = ' 89 50 4e 47' ]
