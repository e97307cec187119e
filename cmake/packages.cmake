# What `cpack` makes of a build, for tools/package: an archive of the worker, and one of the simulated SDK for who builds a
# host without a camera.
string(TOLOWER "${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" CPACK_SYSTEM_NAME)
set(CPACK_PACKAGE_NAME camera)
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_COMPONENTS_ALL worker)
set(CPACK_MANUAL_worker "${PROJECT_SOURCE_DIR}/docs/man/sony-worker.1")
if(NOT SONY_SDK_ROOT)
    list(APPEND CPACK_COMPONENTS_ALL simulator)
endif()
# CPack's own archives tell the time and the user of the build.
set(CPACK_GENERATOR External)
set(CPACK_EXTERNAL_ENABLE_STAGING ON)
set(CPACK_EXTERNAL_PACKAGE_SCRIPT "${CMAKE_CURRENT_LIST_DIR}/archive.cmake")
set(CPACK_PACKAGE_CHECKSUM SHA256)
include(CPack)
