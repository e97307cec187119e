#pragma once

#include "simulator/camera/pictures/color.h"

// The light of one shot: the counter turns the clock from dawn to dusk, twenty-four shots a day.
struct Light {
    float hour;  // 0 at dawn, 1 at dusk
    Color zenith;
    Color horizon;
    Color sun;
    Color far_hill;
    Color near_hill;
    unsigned shutter;  // the exposure time is one part in so many of a second
    unsigned iso;
};

Light light_of_shot(unsigned counter);

// The aperture and the lens do not change.
constexpr unsigned aperture_tenths = 80;
constexpr unsigned focal_length_mm = 35;
