# Copies the maker's library and its transport adapters into the build tree and, on install, into the bundle, with their
# links and what those lead to. Adapters lie beside the library, in CrAdapter.
get_filename_component(sdk_library_dir "${SONY_SDK_LIBRARY}" DIRECTORY)
file(GLOB sdk_libraries CONFIGURE_DEPENDS "${sdk_library_dir}/*.so*" "${sdk_library_dir}/*.dylib")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${sdk_libraries})
# Stays empty for a static library.
file(MAKE_DIRECTORY "${bundle_contents}/Frameworks/SonySDK")
file(COPY ${sdk_libraries} DESTINATION "${bundle_contents}/Frameworks/SonySDK" FOLLOW_SYMLINK_CHAIN)
install(DIRECTORY "${bundle_contents}/Frameworks/SonySDK"
    DESTINATION Contents/Frameworks COMPONENT worker USE_SOURCE_PERMISSIONS)

find_path(SONY_SDK_ADAPTER_DIR libCr_PTP_USB.dylib
    PATHS "${sdk_library_dir}" "${SONY_SDK_ROOT}" PATH_SUFFIXES CrAdapter
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE)
if(SONY_SDK_ADAPTER_DIR)
    file(COPY "${SONY_SDK_ADAPTER_DIR}/" DESTINATION "${bundle_contents}/Frameworks/CrAdapter")
    install(DIRECTORY "${SONY_SDK_ADAPTER_DIR}/"
        DESTINATION Contents/Frameworks/CrAdapter COMPONENT worker USE_SOURCE_PERMISSIONS)
else()
    message(STATUS "No libCr_PTP_USB.dylib under ${SONY_SDK_ROOT}: the worker will report its adapters missing")
endif()
