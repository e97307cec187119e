#pragma once

// The pictures that the virtual camera takes: the C interface of libcamera_sim_pictures.so (this
// name on macOS too), a module that the simulated SDK loads with dlopen when the first picture is
// drawn. All pictures of one seed show the same valley; the counter is written into them and turns
// the clock, so that a series of shots is a day going by.
//
// Each function writes one file and returns 0 or an errno value: EINVAL for sizes that no picture
// can have, EEXIST when something lies at the path, otherwise what the system answered. After a
// failure there is no file of it. The same picture gives the same bytes. One thread at a time.

struct CameraSimPicture {
    const char* path;   // created, never replaced
    const char* model;  // may be null, as the serial number may: the entry is then left out
    const char* serial;
    unsigned counter;
    long long time_seconds;  // since 1970, UTC: the virtual camera's clock keeps no other zone
    int width;               // of the JPEG, 1 to 65500, and so is the height
    int height;
    unsigned seed;
};

#define CAMERA_SIM_PICTURES_EXPORT extern "C" __attribute__((visibility("default")))

// A JPEG with EXIF: make "Virtual", model, body serial number, time, exposure, and the counter as
// image number.
CAMERA_SIM_PICTURES_EXPORT int camera_sim_draw_jpeg(const CameraSimPicture* picture);

// The same view as a DNG: 14 bits a pixel behind an RGGB filter, uncompressed. To keep it small and
// quick the sensor has a quarter of the JPEG's pixels each way, rounded up to even numbers, and at
// least 64 by 64.
CAMERA_SIM_PICTURES_EXPORT int camera_sim_draw_raw(const CameraSimPicture* picture);

// Always ENOTSUP, and no file: an HEVC encoder would bring four codec libraries and threads of its
// own into the worker's process.
CAMERA_SIM_PICTURES_EXPORT int camera_sim_draw_heif(const CameraSimPicture* picture);
