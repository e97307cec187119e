// The verbs that say what the camera and the SDK are like: how fast, how big, which version.

#include <algorithm>

#include "simulator/camera/state.h"
#include "simulator/control/scene/language.h"
#include "simulator/control/scene/words.h"
#include "simulator/sdk/text.h"

namespace camera_sim {
namespace {

Setup& setup() SIM_REQUIRES(g_lock) {
    return state().setup;
}

void set_timing(Words& words) SIM_REQUIRES(g_lock) {
    const bool instant = words.take("instant");
    if (!instant && !words.take("real")) {
        words.wrong("timing is instant or real");
    }
    if (!words.finished()) {
        return;
    }
    const Setup real;
    setup().looking = instant ? Duration::zero() : real.looking;
    setup().opening = instant ? Duration::zero() : real.opening;
    setup().focus = instant ? Duration::zero() : real.focus;
    setup().exposure = instant ? Duration::zero() : real.exposure;
    setup().usb_rate = instant ? 0 : real.usb_rate;
}

template <Duration Setup::*time>
void set_time(Words& words) SIM_REQUIRES(g_lock) {
    const Duration duration = words.duration("T");
    if (words.finished()) {
        setup().*time = duration;
    }
}

void set_focus(Words& words) SIM_REQUIRES(g_lock) {
    set_time<&Setup::focus>(words);
    if (words.finished()) {
        setup().can_focus = true;
    }
}

void set_version(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u version = words.code("VERSION");
    if (words.finished()) {
        setup().version = version;
    }
}

void set_connection_version(Words& words) SIM_REQUIRES(g_lock) {
    if (!words.take("version")) {
        words.wrong("connection version N");
    }
    const bool negative = words.take("-1");
    const CrInt32u version = negative ? 0xFFFFFFFF : words.code("N");
    if (words.finished()) {
        setup().connection_version = static_cast<CrInt32>(version);
    }
}

void set_seed(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u seed = words.code("N");
    if (words.finished()) {
        setup().seed = seed;
    }
}

void set_usb_rate(Words& words) SIM_REQUIRES(g_lock) {
    const std::string rate = words.word("RATE");
    const std::size_t unit = rate.find("MB/s");
    const auto megabytes = to_number(std::string_view(rate).substr(0, unit));
    if (unit == std::string::npos || unit + 4 != rate.size() || !megabytes || *megabytes == 0 ||
        *megabytes > 100'000) {
        words.wrong("a rate is like 40MB/s");
    }
    if (words.finished()) {
        setup().usb_rate = *megabytes * 1'000'000;
    }
}

void set_buffer(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u shots = words.code("N");
    if (shots == 0) {
        words.wrong("a buffer holds at least 1 shot");
    }
    if (words.finished()) {
        setup().buffer = shots;
    }
}

// A width or a height, 0 when the text is none.
int picture_side(std::string_view text) {
    const std::uint64_t side = to_number(text).value_or(0);
    return side <= 20'000 ? static_cast<int>(side) : 0;
}

void set_picture(Words& words) SIM_REQUIRES(g_lock) {
    const std::string size = words.word("SIZE");
    const std::size_t times = std::min(size.find('x'), size.size());
    const int width = picture_side(std::string_view(size).substr(0, times));
    const int height =
        picture_side(std::string_view(size).substr(std::min(times + 1, size.size())));
    if (width == 0 || height == 0) {
        words.wrong("a picture's size is like 6000x4000, at most 20000x20000");
    }
    if (words.finished()) {
        setup().width = width;
        setup().height = height;
    }
}

}  // namespace

const Verb setup_verbs[] = {
    {"timing", "instant|real", set_timing},
    {"looking", "T", set_time<&Setup::looking>},
    {"opening", "T", set_time<&Setup::opening>},
    {"focus", "T", set_focus},
    {"exposure", "T", set_time<&Setup::exposure>},
    {"usb", "RATE", set_usb_rate},
    {"buffer", "N", set_buffer},
    {"picture", "WIDTHxHEIGHT", set_picture},
    {"seed", "N", set_seed},
    {"version", "NUMBER", set_version},
    {"connection", "version N", set_connection_version},
    {nullptr, nullptr, nullptr},
};

}  // namespace camera_sim
