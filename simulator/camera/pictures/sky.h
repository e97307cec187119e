#pragma once

#include <cstdint>
#include <vector>

#include "simulator/camera/pictures/light.h"

// Sky, clouds and sun. All of it but the sun's disc is soft, so it is worked out once on a coarse
// grid and only blended for each pixel.
class Sky {
  public:
    // The horizon is the line down to which there may be sky.
    Sky(int width, int height, float horizon, const Light& light, std::uint32_t seed);

    // A line between two pixel rows will do.
    void draw_row(float y, Row& row) const;

  private:
    Color color_at(float x, float y, const Light& light, std::uint32_t seed) const;
    void draw_sun(float y, Row& row) const;

    float horizon_;
    float height_;
    float sun_x_;
    float sun_y_;
    float sun_radius_;
    Color sun_color_;
    std::vector<Color> grid_;
};
