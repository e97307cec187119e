#include "bench/measure/results.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "bench/measure/machine.h"
#include "bench/measure/subject.h"

namespace {

// Noise on a busy machine stays below it.
constexpr double far = 3;

}  // namespace

bool Figure::met() const {
    return !bound || (sense == Sense::at_most ? value <= *bound : value >= *bound);
}

bool Figure::failed() const {
    if (held_to_its_bound) {
        return !met();
    }
    // What is no number misses too.
    return bound && !(sense == Sense::at_most ? value - floor <= (*bound - floor) * far
                                              : value >= *bound / far);
}

void Results::at_most(double bound, const std::string& name, double value, const std::string& unit,
                      const std::string& measured, double floor) {
    add({name, value, unit, measured, bound, Figure::Sense::at_most, floor});
}

void Results::at_least(double bound, const std::string& name, double value, const std::string& unit,
                       const std::string& measured) {
    add({name, value, unit, measured, bound, Figure::Sense::at_least});
}

void Results::plain(const std::string& name, double value, const std::string& unit,
                    const std::string& measured) {
    add({name, value, unit, measured, std::nullopt});
}

void Results::skipped(const std::string& name, const std::string& why) {
    std::printf("  none    %-52s %s\n", name.c_str(), why.c_str());
    skipped_.emplace_back(name, why);
}

void Results::curve(Curve curve) {
    curves_.push_back(std::move(curve));
}

void Results::add(Figure figure) {
    figure.held_to_its_bound = hold_;
    const std::string bound =
        !figure.bound ? ""
                      : (figure.sense == Figure::Sense::at_most ? " (at most " : " (at least ") +
                            brief(*figure.bound) + ")";
    std::printf("  %-7s %-52s %s%s%s  %s\n",
                !figure.bound  ? ""
                : figure.met() ? "met"
                               : "MISSED",
                figure.name.c_str(), brief(figure.value).c_str(),
                figure.unit.empty() ? "" : (" " + figure.unit).c_str(), bound.c_str(),
                figure.measured.c_str());
    std::fflush(stdout);
    figures_.push_back(std::move(figure));
}

void Results::write(const std::string& path) const {
    using nlohmann::ordered_json;
    ordered_json all;
    all["machine"] = ordered_json::array();
    for (const auto& [key, value] : describe_machine()) {
        all["machine"].push_back({key, value});
    }
    all["figures"] = ordered_json::array();
    for (const Figure& figure : figures_) {
        ordered_json entry{{"name", figure.name},
                           {"value", figure.value},
                           {"unit", figure.unit},
                           {"measured", figure.measured}};
        if (figure.bound) {
            entry["sense"] = figure.sense == Figure::Sense::at_most ? "at most" : "at least";
            entry["bound"] = *figure.bound;
            entry["met"] = figure.met();
        }
        all["figures"].push_back(entry);
    }
    all["skipped"] = skipped_;
    all["curves"] = ordered_json::array();
    for (const Curve& curve : curves_) {
        all["curves"].push_back(
            {{"picture", curve.picture}, {"name", curve.name}, {"points", curve.points}});
    }
    std::ofstream file(path);
    file << all.dump(1) << "\n" << std::flush;
    if (!file) {
        give_up("cannot write " + path);
    }
}

std::string brief(double value) {
    constexpr double grouped_from = 1000;
    const double size = std::abs(value);
    if (size >= grouped_from) {
        return grouped(std::lround(value));
    }
    char text[40];
    const int decimals = size >= 100 ? 0 : size >= 10 ? 1 : 3;
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string grouped(long value) {
    std::string text = std::to_string(value);
    for (auto place = static_cast<std::ptrdiff_t>(text.size()) - 3; place > (value < 0 ? 1 : 0);
         place -= 3) {
        text.insert(static_cast<std::size_t>(place), ",");
    }
    return text;
}
