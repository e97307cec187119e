#include "tether/shoot/summary.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "tether/live/session_words.h"

namespace tether {
namespace {

using host::Picture;
using host::Shot;
using host::ShotStatus;

std::string count(std::size_t number, const std::string& one, const std::string& many) {
    return std::to_string(number) + " " + (number == 1 ? one : many);
}

std::string padded(std::size_t size, std::size_t width) {
    return std::string(size < width ? width - size : 0, ' ');
}

// Nobody can tell the late picture of a shot that brought none from one of the button.
bool may_be_late(const Report& report) {
    return std::any_of(report.shots.begin(), report.shots.end(),
                       [](const Shot& shot) { return shot.status == ShotStatus::none; });
}

// Asked for, and how long it took; or what else it is.
std::string last_column(const Report& report, const Picture& picture) {
    std::string text = !report.asked_for(picture) ? (picture.recovered     ? "found later"
                                                     : may_be_late(report) ? "late or not asked for"
                                                                           : "not asked for")
                       : picture.after            ? in_seconds(*picture.after)
                                                  : "late";
    return picture.whole ? text : text + ", damaged";
}

// Wide enough for the names, so that the columns stand under each other.
std::string picture_lines(const Report& report, const std::string& folder) {
    std::size_t width = 0;
    for (const Picture& picture : report.pictures) {
        width = std::max(width, name_in(folder, picture.path).size());
    }
    std::string text;
    for (const Picture& picture : report.pictures) {
        const std::string name = name_in(folder, picture.path);
        const std::string size = in_bytes(picture.bytes);
        text.append("  ").append(name).append(padded(name.size(), width));
        text.append("  ").append(padded(size.size(), 9)).append(size);
        text.append("  ").append(last_column(report, picture)).append("\n");
    }
    return text;
}

// What comes too late for its shot lies in the folder all the same, so no shot is called lost.
std::string what_was_lost(const Report& report) {
    const auto with = [&](ShotStatus status) {
        return static_cast<std::size_t>(
            std::count_if(report.shots.begin(), report.shots.end(),
                          [=](const Shot& shot) { return shot.status == status; }));
    };
    const std::size_t without = with(ShotStatus::none);
    const std::size_t incomplete = with(ShotStatus::incomplete);
    const std::size_t not_fired = report.planned - report.fired();
    std::string text;
    const auto add = [&](std::size_t number, const char* what) {
        if (number > 0) {
            text += (text.empty() ? "" : ", ") + count(number, "shot ", "shots ") + what;
        }
    };
    add(without, "without a picture in time");
    add(incomplete, "incomplete");
    add(not_fired, "not fired");
    return text.empty() ? "nothing lost" : text;
}

std::string times(const Report& report) {
    std::vector<std::chrono::milliseconds> took;
    for (const Picture& picture : report.pictures) {
        if (picture.after && report.asked_for(picture)) {
            took.push_back(*picture.after);
        }
    }
    if (took.empty()) {
        return {};
    }
    std::sort(took.begin(), took.end());
    const std::size_t middle = took.size() / 2;
    const auto median = took.size() % 2 == 1 ? took[middle] : (took[middle - 1] + took[middle]) / 2;
    return "From shutter to file " + in_seconds(median) +
           (took.size() == 1 ? "." : " in the median, " + in_seconds(took.back()) + " at worst.") +
           "\n";
}

std::string troubles(const Report& report) {
    std::string text;
    for (std::size_t index = 0; index < report.shots.size(); ++index) {
        for (const host::Problem& problem : report.shots[index].problems) {
            text += "! shot " + std::to_string(index + 1) + " of " +
                    std::to_string(report.planned) + ": " + sentence(problem) + "\n";
        }
    }
    for (const std::string& trouble : report.troubles) {
        text += "! " + trouble + "\n";
    }
    return text;
}

}  // namespace

std::string summary(const Report& report, const std::string& folder) {
    std::uintmax_t bytes = 0;
    for (const Picture& picture : report.pictures) {
        bytes += picture.bytes;
    }
    std::string text = "\n" + picture_lines(report, folder);
    text += report.pictures.empty() ? "" : "\n";
    const std::size_t fired = report.fired();
    text += (fired < report.planned
                 ? std::to_string(fired) + " of " + count(report.planned, "shot", "shots")
                 : count(fired, "shot", "shots")) +
            ", " + count(report.pictures.size(), "file", "files") + ", " + in_bytes(bytes) +
            " in " + folder + "; " + what_was_lost(report) + ".\n";
    text += times(report);
    if (report.losses > 0) {
        text += "The camera went away " +
                (report.losses == 1 ? std::string("once") : count(report.losses, "time", "times")) +
                ".\n";
    }
    return text + troubles(report);
}

}  // namespace tether
