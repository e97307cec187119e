#pragma once

#include <cstdint>
#include <vector>

#include "simulator/camera/pictures/color.h"
#include "simulator/camera/pictures/grain.h"

// The virtual sensor: an RGGB filter, 14 bits a pixel, and colours that are those of sRGB but for
// its sensitivities.
constexpr int sensor_black = 512;
constexpr int sensor_white = 16383;

// What red, green and blue answer to white light.
constexpr float sensor_neutral[] = {0.5F, 1.0F, 0.625F};

class Sensor {
  public:
    Sensor(int width, std::uint32_t seed);

    // Exposes one row of pixels to what the picture shows there.
    void expose(int y, const Row& row, std::vector<std::uint16_t>& pixels) const;

  private:
    Grain grain_;
    std::vector<float> light_of_level_;
};
