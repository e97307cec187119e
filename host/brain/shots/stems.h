// The names that a camera gave its latest pictures, by which a half finds the other one.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "host/values/picture.h"
#include "host/values/time.h"

namespace host::brain {

// The camera's stems count up and wrap: DSC09999 is followed by DSC00001. False when the two cannot
// be compared.
bool is_newer(std::string_view stem, std::string_view than);

// A camera is free to write "dsc00001.jpg" beside "DSC00001.ARW".
bool same_stem(std::string_view one, std::string_view other);

// One camera stem and what came under it.
struct Stem {
    std::string text;
    std::optional<std::uint64_t> shot;
    std::string tag;
    std::string name;  // the template of its file names
    std::string pair;
    Time fired{};  // the shot
    Time heard{};  // of the first half
    std::uint64_t session = 0;
    bool may_be_pair = true;
    bool raw = false;
    bool developed = false;
};

class Stems {
  public:
    // The stem under which the other half came in this session since then, and only that.
    Stem* partner(std::string_view stem, Kind kind, std::uint64_t session, Time since);

    void remember(Stem stem);

  private:
    std::deque<Stem> stems_;
};

}  // namespace host::brain
