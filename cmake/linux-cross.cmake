# Builds for Linux with Zig's compiler, for one processor: CMAKE_SYSTEM_PROCESSOR, aarch64 or x86_64. What it makes runs
# wherever the C library is 2.28 or newer, and needs no other: Zig's C++ library becomes a part of it. tools/package does
# it for the packages of npm.
set(CMAKE_SYSTEM_NAME Linux)
if(NOT CMAKE_SYSTEM_PROCESSOR)
    set(CMAKE_SYSTEM_PROCESSOR x86_64)
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CMAKE_SYSTEM_PROCESSOR)
set(target ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu.2.28)
include("${CMAKE_CURRENT_LIST_DIR}/zig.cmake")
# Newer versions of CMake ask every linker of Linux for a list of what it read; Zig's makes none.
set(CMAKE_LINK_DEPENDS_USE_LINKER OFF)
# Compiled as it is linked into each of the programs and libraries.
set(CMAKE_CXX_STANDARD_LIBRARIES_INIT "\"${CMAKE_CURRENT_LIST_DIR}/linux-cross-stat.cpp\"")
