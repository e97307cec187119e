// The camera on the desk and its SDK's moods: what a worker meets there. The same camera, whatever
// becomes of the worker.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "host/values/picture.h"
#include "tests/host/afternoons/agenda.h"

namespace afternoons {

using Number = std::uint64_t;

// One press of the shutter that took a picture.
struct Press {
    Number number = 0;
    std::optional<Number> capture;  // nothing: the button on the body
    std::string stem;
    int halves = 1;  // how many files it makes
    bool all_sent = true;
    int dial = 1;
    bool plain = true;           // under a name of the camera's own
    std::uint64_t counting = 0;  // how often the counter was set, or the camera changed, before
    std::uint64_t camera = 0;    // which one
    Time at{};
};

// One file that reached the computer.
struct File {
    Number number = 0;
    Number press = 0;
    std::string name;
    std::string stem;
    host::Kind kind = host::Kind::other;
    bool whole = true;
    std::string run;               // in whose staging folder it was written
    std::optional<Time> reported;  // when the worker's report of it was read
    std::string reported_by;       // the run
};

enum class Card { in, out, full };
enum class Answer { normal, never, error, disconnected, late };

// How the next file goes wrong.
struct FileFault {
    std::optional<Time> late;
    bool truncated = false;
    bool missing = false;
    std::optional<Time> again;  // reported a second time, so much later
    bool unreported = false;
    bool absolute = false;
    std::optional<std::string> named;
};

// How the next writes of a property are answered, in place of the camera.
struct Refusal {
    int property = 0;
    std::string result;  // empty: taken, and nothing is done
    int times = 1;       // less than 0: always
};

struct Camera {
    bool there = true;
    bool vanished = false;  // gone without a word
    std::string model = "MODEL-A";
    Card card = Card::in;
    bool turned = false;  // its dial, by a person
    int dial = 1;         // 0x0106: 1 JPEG, 2 RAW, 3 RAW+JPEG, 4 RAW+HEIF
    int destination = 2;  // 0x0119: 1 the computer, 2 the card, 3 both
    int pair_transfer = 1;
    int counter = 1;
    std::uint64_t counting = 0;  // how often the counter was set, or the camera changed
    std::uint64_t swapped = 0;   // how often another one took its place
    bool focuses = true;
    Time busy_until{};
    bool refuses_destination = false;
    bool refuses_type = false;
    bool refuses_folder = false;
    bool card_unreadable = false;
    bool type_unreadable = false;
    Answer answer = Answer::normal;
    std::string answer_code;  // empty: the usual one
    int looks_that_fail = 0;
    int openings_refused = 0;
    bool buffer_full = false;  // for one shot
    std::deque<Refusal> refusals;
    Time looking = milliseconds(400);
    Time opening = milliseconds(1200);
    Time exposure = milliseconds(10);
    Time transfer = milliseconds(150);
    Time report_gap{};
    std::deque<FileFault> faults;
    bool pair_reversed = false;
    bool pair_half = false;
};

}  // namespace afternoons
