#include "bench/measure/statistics.h"

#include <algorithm>
#include <cmath>

double quantile(Samples samples, double share) {
    const auto last = static_cast<double>(samples.size() - 1);
    const auto place = samples.begin() + std::lround(share * last);
    std::nth_element(samples.begin(), place, samples.end());
    return *place;
}

double median_ratio(const Samples& rounds, const Samples& yardstick_rounds) {
    Samples ratios;
    for (std::size_t round = 0; round < rounds.size(); ++round) {
        ratios.push_back(rounds[round] / yardstick_rounds[round]);
    }
    return median(ratios);
}

double best(const Samples& rounds) {
    return *std::min_element(rounds.begin(), rounds.end());
}
