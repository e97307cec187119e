# The target camera_sdk: headers and library of the SDK that the worker is built against, with the library and its
# adapters laid into the build tree where the worker's run path and adapter check look for them.
add_library(camera_sdk INTERFACE)

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
