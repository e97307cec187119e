# For a build for another system on Linux: Zig's compiler, and the tools that read what it writes. Before it is included,
# target names the system.
set(CMAKE_CXX_COMPILER "${CMAKE_CURRENT_LIST_DIR}/../tools/macos-toolchain/c++" -target ${target})
# Debian keeps some of these beside the compiler only.
file(GLOB llvm_folders /usr/lib/llvm-*/bin)
foreach(tool IN ITEMS AR RANLIB STRIP INSTALL_NAME_TOOL)
    string(TOLOWER ${tool} name)
    string(REPLACE "_" "-" name "llvm-${name}")
    find_program(CMAKE_${tool} ${name} PATHS ${llvm_folders} REQUIRED)
endforeach()

# For what CMake tries: without it Zig would make its C++ library, which takes a minute, in a second way.
set(CMAKE_CXX_FLAGS_INIT "-O2")

# No package of the machine that builds may be found.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE NEVER)
