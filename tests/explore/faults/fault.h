#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/explore/camera.h"

// One SDK function that does not do what it should.
namespace explore {

struct Trouble {
    const char* name;
    Answer answer;
};

struct Fault {
    Call call;
    std::uint64_t number;  // of a property or, for SendCommand, the parameter; `whatever`: each
    Trouble trouble;
    bool lasting;  // from now on, not only the next time

    static constexpr std::uint64_t whatever = ~std::uint64_t{0};

    bool concerns(const Asked& asked) const {
        return call == asked.call &&
               (number == whatever ||
                number == (call == Call::send_command ? asked.value : asked.code));
    }
};

// Every function of the SDK with everything that it can do wrong, once and lastingly.
const std::vector<Fault>& all_faults();

// "SetDeviceProperty/0x0119/hangs/lasting". The second one gives null for any other text.
std::string to_text(const Fault& fault);
const Fault* fault_named(const std::string& text);

}  // namespace explore
