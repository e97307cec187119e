#pragma once

#include <vector>

#include "simulator/camera/pictures/digits.h"
#include "simulator/camera/pictures/ridge.h"
#include "simulator/camera/pictures/sky.h"

// Longer sides do not fit a JPEG.
constexpr bool has_drawable_size(int width, int height) {
    constexpr int longest_side = 65500;
    return width >= 1 && height >= 1 && width <= longest_side && height <= longest_side;
}

// What the camera sees: a lake between wooded hills, drawn a row at a time, so that a picture never
// has to be held whole. The seed makes the place, the counter the hour and the number in the
// corner.
class Landscape {
  public:
    Landscape(int width, int height, unsigned seed, unsigned counter);

    // Rows in any order, each as wide as the landscape.
    void draw_row(int y, Row& row) const;

  private:
    void draw_land(float y, Row& row) const;
    void draw_water(float y, Row& row) const;

    float height_;
    float waterline_;
    unsigned seed_;
    Light light_;
    Sky sky_;
    std::vector<Ridge> ridges_;
    Digits digits_;
};
