// What a worker wrote on standard error just before it ended: why it gave up, as a rule.
#pragma once

#include <string>
#include <string_view>

#include "host/values/time.h"

namespace host {

class LastWords {
  public:
    void hear(std::string_view line, Time at);

    // The last line, as far as a sentence has room for it; empty when it has nothing to do with an
    // end at that time.
    std::string before(Time end) const;

  private:
    std::string line_;
    Time at_{};
};

}  // namespace host
