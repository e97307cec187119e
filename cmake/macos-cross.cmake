# Builds for macOS on Linux with Zig's compiler, for one processor at a time: CMAKE_SYSTEM_PROCESSOR, aarch64 or x86_64.
# tools/macos-build does it for both and merges them.
set(CMAKE_SYSTEM_NAME Darwin)
if(NOT CMAKE_SYSTEM_PROCESSOR)
    set(CMAKE_SYSTEM_PROCESSOR aarch64)
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CMAKE_SYSTEM_PROCESSOR)
# The target names processor and system; Xcode's ways of doing so stay out.
set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "")
set(CMAKE_OSX_ARCHITECTURES "" CACHE STRING "")
set(CMAKE_OSX_SYSROOT "" CACHE STRING "")

set(target ${CMAKE_SYSTEM_PROCESSOR}-macos.12.1)
include("${CMAKE_CURRENT_LIST_DIR}/zig.cmake")

# Zig's library lies inside the program, so its headers do not say since which system a feature is there. They must: the
# same sources are built with the library of the system.
string(APPEND CMAKE_CXX_FLAGS_INIT " -U_LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS -Werror=unguarded-availability")

set(CMAKE_USER_MAKE_RULES_OVERRIDE "${CMAKE_CURRENT_LIST_DIR}/macos-cross-rules.cmake")
