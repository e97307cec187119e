# The target camera_sdk: headers and library of the SDK that the worker is built against, with the library and its
# adapters laid into the build tree where the worker's run path and adapter check look for them.
add_library(camera_sdk INTERFACE)
include(cmake/install_guard.cmake)

# Contents is cleared and filled below: it must be this build's. A build tree with a cache had its own already.
set(contents_mark "${CMAKE_BINARY_DIR}/.contents-of-the-build")
if(EXISTS "${bundle_contents}" AND NOT EXISTS "${contents_mark}" AND NOT DEFINED CACHE{STAGED_SDK_ROOT})
    message(FATAL_ERROR "${bundle_contents} is there already and was not made by this build: name another build folder")
endif()
file(WRITE "${contents_mark}" "Contents beside this file is made by the build, and may be cleared by it.\n")

# What another SDK, or the simulated one, has left in this build tree must not get into a bundle.
if(SONY_SDK_ROOT OR STAGED_SDK_ROOT)
    file(REMOVE_RECURSE "${bundle_contents}/Frameworks")
endif()
set(STAGED_SDK_ROOT "${SONY_SDK_ROOT}" CACHE INTERNAL "The SDK whose libraries lie in the build tree")

if(SONY_SDK_ROOT)
    find_path(SONY_SDK_INCLUDE_DIR CRSDK/CameraRemote_SDK.h
        PATHS "${SONY_SDK_ROOT}" PATH_SUFFIXES . include app
        NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE REQUIRED)
    # A stand-in may keep the maker's file names on every platform.
    list(APPEND CMAKE_FIND_LIBRARY_SUFFIXES .dylib)
    find_library(SONY_SDK_LIBRARY Cr_Core
        PATHS "${SONY_SDK_ROOT}" PATH_SUFFIXES . lib external/crsdk
        NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE REQUIRED)
    target_include_directories(camera_sdk SYSTEM INTERFACE "${SONY_SDK_INCLUDE_DIR}")
    target_link_libraries(camera_sdk INTERFACE "${SONY_SDK_LIBRARY}")
    include(cmake/stage_sdk.cmake)
else()
    add_subdirectory(simulator)
    target_link_libraries(camera_sdk INTERFACE camera_sim)
endif()
