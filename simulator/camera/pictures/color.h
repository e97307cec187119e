#pragma once

#include <vector>

// Colours as the screen shows them, each part from 0 to 1.

struct Color {
    float red;
    float green;
    float blue;
};

inline Color mix(const Color& from, const Color& to, float share) {
    return {from.red + (to.red - from.red) * share, from.green + (to.green - from.green) * share,
            from.blue + (to.blue - from.blue) * share};
}

// One line of a picture, a plane for each colour so that the compiler can work on many pixels at
// once.
struct Row {
    explicit Row(int width) : red(static_cast<std::size_t>(width)), green(red), blue(red) {}

    std::size_t size() const {
        return red.size();
    }
    Color at(std::size_t x) const {
        return {red[x], green[x], blue[x]};
    }
    void set(std::size_t x, const Color& color) {
        red[x] = color.red;
        green[x] = color.green;
        blue[x] = color.blue;
    }

    std::vector<float> red;
    std::vector<float> green;
    std::vector<float> blue;
};
