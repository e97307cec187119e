#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

// One figure of the report. Those with a bound are met or missed.
struct Figure {
    enum class Sense { at_most, at_least };

    std::string name;
    double value;
    std::string unit;
    std::string measured;  // what lies behind a ratio, in words
    std::optional<double> bound;
    Sense sense = Sense::at_most;
    double floor = 0;  // nothing can be below it
    bool held_to_its_bound = false;

    bool met() const;
    // Misses the bound by so much that it is no noise, or at all where it is held to it.
    bool failed() const;
};

// One line of a picture.
struct Curve {
    std::string picture;
    std::string name;
    std::vector<std::pair<double, double>> points;
};

class Results {
  public:
    // Each is shown as it comes.
    void at_most(double bound, const std::string& name, double value, const std::string& unit,
                 const std::string& measured = "", double floor = 0);
    void at_least(double bound, const std::string& name, double value, const std::string& unit,
                  const std::string& measured = "");
    void plain(const std::string& name, double value, const std::string& unit,
               const std::string& measured = "");
    void skipped(const std::string& name, const std::string& why);

    // Whether those to come fail when they miss their bounds by little.
    void hold_to_bounds(bool hold) {
        hold_ = hold;
    }

    void curve(Curve curve);

    const std::vector<Figure>& figures() const {
        return figures_;
    }

    // As JSON, for the program that draws the report.
    void write(const std::string& path) const;

  private:
    void add(Figure figure);

    bool hold_ = false;
    std::vector<Figure> figures_;
    std::vector<std::pair<std::string, std::string>> skipped_;
    std::vector<Curve> curves_;
};

// Numbers as people write them.
std::string brief(double value);
std::string grouped(long value);
