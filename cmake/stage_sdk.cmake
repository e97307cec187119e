# Copies the maker's library and its transport adapters into the build tree and, on install, into the bundle, with their
# links and what those lead to. Adapters lie beside the library, in CrAdapter.
get_filename_component(sdk_library_dir "${SONY_SDK_LIBRARY}" DIRECTORY)
find_path(SONY_SDK_ADAPTER_DIR libCr_PTP_USB.dylib
    PATHS "${sdk_library_dir}" "${SONY_SDK_ROOT}" PATH_SUFFIXES CrAdapter
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE)

# stage(NAME FILES...): lays the files into Frameworks/NAME, which is made even when there are none.
function(stage name)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ARGN})
    file(MAKE_DIRECTORY "${bundle_contents}/Frameworks/${name}")
    file(COPY ${ARGN} DESTINATION "${bundle_contents}/Frameworks/${name}" FOLLOW_SYMLINK_CHAIN)
    install(DIRECTORY "${bundle_contents}/Frameworks/${name}"
        DESTINATION Contents/Frameworks COMPONENT worker USE_SOURCE_PERMISSIONS)
endfunction()

# None for a static library.
file(GLOB sdk_libraries CONFIGURE_DEPENDS "${sdk_library_dir}/*.so*" "${sdk_library_dir}/*.dylib")
stage(SonySDK ${sdk_libraries})
if(SONY_SDK_ADAPTER_DIR)
    file(GLOB sdk_adapters CONFIGURE_DEPENDS "${SONY_SDK_ADAPTER_DIR}/*")
    stage(CrAdapter ${sdk_adapters})
else()
    message(STATUS "No libCr_PTP_USB.dylib under ${SONY_SDK_ROOT}: the worker will report its adapters missing")
endif()
