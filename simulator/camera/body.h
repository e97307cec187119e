#pragma once

// The camera body: what it is, its card, its properties, and which writes it takes.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "simulator/camera/codes.h"

namespace camera_sim {

enum class Card { in, out, full };

struct Property {
    CrInt64u value = 0;
    bool readable = true;
};

struct Body {
    Body();

    bool missing = false;  // the list of cameras holds a null object in its place
    std::optional<std::string> model = "Virtual Camera SIM-1";
    std::optional<std::string> connection = "USB";
    std::string serial = "SIM0000001";
    bool plugged = true;
    bool asleep = false;
    Card card = Card::in;
    unsigned next_number = 1;    // of the file names
    unsigned passed = 0;         // numbers gone by because the computer's folder had them
    unsigned counter_named = 0;  // how often `counter` was told; `passed` begins anew with each
    unsigned on_card = 0;        // shots
    unsigned kept = 0;           // shots meant for the computer that did not go there
    std::map<CrInt32u, Property> properties;

    bool reachable() const {
        return plugged && !asleep;
    }
    CrInt64u value(CrInt32u code) const;

    // Both return the codes whose value is another one now.
    std::vector<CrInt32u> put_card(Card state);
    std::vector<CrInt32u> put(CrInt32u code, CrInt64u value);

    // What the camera answers to the host's write; the write is not done.
    CrInt32u judge_write(CrInt32u code, CrInt64u value, CrInt32u type) const;

    void set_counter(unsigned number);
    // The counter goes on by so many, for a shot that was numbered under that `counter_named`.
    void pass_numbers(unsigned count, unsigned numbered_under);

    // The settings that a session leaves behind or finds: priority and half-press are let go.
    void forget_session();

    std::string describe() const;
};

const char* to_text(Card card);

}  // namespace camera_sim
