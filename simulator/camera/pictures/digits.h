#pragma once

#include <vector>

#include "simulator/camera/pictures/color.h"

// The counter in the lower right corner, in strokes with round ends.
class Digits {
  public:
    Digits(int width, int height, unsigned number);

    void draw_row(float y, Row& row) const;

  private:
    struct Stroke {
        float from_x;
        float from_y;
        float to_x;
        float to_y;
    };
    void draw_strokes(float y, float radius, const Color& color, Row& row) const;

    float radius_;
    std::vector<Stroke> strokes_;
};
