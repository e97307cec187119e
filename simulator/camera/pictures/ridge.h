#pragma once

#include <cstdint>
#include <vector>

#include "simulator/camera/pictures/color.h"

// One range of hills: for each column the line at which it begins, and its colours, which fade into
// the haze towards its foot.
class Ridge {
  public:
    struct Shape {
        float height;     // of its highest parts above the water, in picture heights
        float roughness;  // hills to a picture height
        float valley;     // how far it gives way in the middle: 0 not at all, 1 down to the water
        float trees;      // height of the trees on it, in picture heights; 0 for none
    };

    Ridge(int width, int height, float waterline, const Shape& shape, std::uint32_t seed);

    // The colours of its crest and of its foot at the water.
    void paint(const Color& crest, const Color& foot);

    // Draws what lies in front of what the row shows already.
    void draw_row(float y, Row& row) const;

  private:
    void plant_trees(int height, float tree_height, std::uint32_t seed);

    float waterline_;
    float top_;
    std::vector<float> crest_line_;
    Color crest_{};
    Color foot_{};
};
