#pragma once

#include <cstdint>
#include <vector>

// The fine noise of a sensor, without which a drawn picture compresses to next to nothing. Each row
// reads the same long strip of chance from a place of its own.
class Grain {
  public:
    Grain(int width, std::uint32_t seed);

    // One value for each pixel of the row, centred on 0, rarely beyond -1 and 1.
    const float* row(int y) const;

  private:
    std::uint32_t seed_;
    std::vector<float> strip_;
};
