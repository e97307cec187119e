# libcamera_sim_pictures: draws the virtual camera's pictures. A module, loaded when the first picture is drawn, so that
# the picture libraries cost a starting worker nothing.
include(CheckCXXSymbolExists)
find_package(JPEG QUIET)
find_package(TIFF QUIET)
find_path(LIBEXIF_INCLUDE_DIR libexif/exif-data.h)
find_library(LIBEXIF_LIBRARY exif)
if(JPEG_FOUND)
    set(CMAKE_REQUIRED_INCLUDES ${JPEG_INCLUDE_DIRS})
    check_cxx_symbol_exists(JCS_EXTENSIONS "cstddef;cstdio;jpeglib.h" JPEG_IS_TURBO)
    unset(CMAKE_REQUIRED_INCLUDES)
endif()

if(NOT JPEG_IS_TURBO)
    left_out("Drawing pictures" "libjpeg-turbo")
elseif(NOT TIFF_FOUND)
    left_out("Drawing pictures" "libtiff")
elseif(NOT LIBEXIF_INCLUDE_DIR OR NOT LIBEXIF_LIBRARY)
    left_out("Drawing pictures" "libexif")
else()
    add_library(camera_sim_pictures MODULE
        picture_digits.cpp
        picture_exif.cpp
        picture_file.cpp
        picture_grain.cpp
        picture_heif.cpp
        picture_jpeg.cpp
        picture_landscape.cpp
        picture_light.cpp
        picture_noise.cpp
        picture_ridge.cpp
        picture_sky.cpp
        picture_text.cpp
        raw_file.cpp
        raw_sensor.cpp
        raw_tags.cpp)
    target_include_directories(camera_sim_pictures PRIVATE ${PROJECT_SOURCE_DIR})
    target_include_directories(camera_sim_pictures SYSTEM PRIVATE ${LIBEXIF_INCLUDE_DIR})
    target_link_libraries(camera_sim_pictures PRIVATE JPEG::JPEG TIFF::TIFF ${LIBEXIF_LIBRARY} warnings)
    # Unlike -O2, GCC's -O3 works on several pixels at once.
    target_compile_options(camera_sim_pictures PRIVATE $<$<NOT:$<CONFIG:Debug>>:-O3>)
    set_target_properties(camera_sim_pictures PROPERTIES
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        PREFIX lib
        SUFFIX .so
        LIBRARY_OUTPUT_DIRECTORY "${bundle_contents}/Frameworks/SonySDK")
endif()
