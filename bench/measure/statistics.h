#pragma once

#include <vector>

// What is said of many measurements of one thing. None of these is for an empty list.

using Samples = std::vector<double>;

// The value that the share (0 to 1) of the samples does not exceed.
double quantile(Samples samples, double share);

inline double median(const Samples& samples) {
    return quantile(samples, 0.5);
}

// Rounds stand side by side, so that what disturbed both sides of a round cancels out: the median
// of the ratios, not the ratio of the medians.
double median_ratio(const Samples& rounds, const Samples& yardstick_rounds);

// Of times, the round that the machine disturbed least.
double best(const Samples& rounds);
