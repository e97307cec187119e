#include "tether/shoot/summary.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace tether {
namespace {

std::string count(std::size_t number, const std::string& one, const std::string& many) {
    return std::to_string(number) + " " + (number == 1 ? one : many);
}

std::string in_seconds(host::Duration duration) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f s", std::chrono::duration<double>(duration).count());
    return text;
}

// Wide enough for the names, so that the columns stand under each other.
std::string picture_line(const Picture& picture, std::size_t name_width, const std::string& time) {
    const std::string name = picture.file.filename().string();
    const std::string size = in_bytes(picture.bytes);
    return "  " + name + std::string(name_width - name.size() + 2, ' ') +
           std::string(size.size() < 9 ? 9 - size.size() : 0, ' ') + size + "  " + time + "\n";
}

std::string times(std::vector<host::Duration> took) {
    if (took.empty()) {
        return {};
    }
    std::sort(took.begin(), took.end());
    const std::size_t middle = took.size() / 2;
    const host::Duration median =
        took.size() % 2 == 1 ? took[middle] : (took[middle - 1] + took[middle]) / 2;
    return "From shutter to file " + in_seconds(median) +
           (took.size() == 1 ? "." : " in the median, " + in_seconds(took.back()) + " at worst.") +
           "\n";
}

}  // namespace

std::string in_bytes(std::uintmax_t bytes) {
    constexpr std::array units{"B", "kB", "MB", "GB"};
    double amount = static_cast<double>(bytes);
    std::size_t unit = 0;
    while (amount >= 999.95 && unit + 1 < units.size()) {
        amount /= 1000;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", amount, units[unit]);
    return text;
}

std::string summary(const Report& report, const std::filesystem::path& folder) {
    std::size_t name_width = 0;
    std::size_t files = report.unasked.size();
    std::uintmax_t bytes = 0;
    std::vector<host::Duration> took;
    const auto measure = [&](const Picture& picture) {
        name_width = std::max(name_width, picture.file.filename().string().size());
        bytes += picture.bytes;
    };
    for (const Shot& shot : report.shots) {
        for (const Picture& picture : shot.pictures) {
            measure(picture);
            took.push_back(picture.took);
            ++files;
        }
    }
    std::for_each(report.unasked.begin(), report.unasked.end(), measure);

    std::string text = "\n";
    for (const Shot& shot : report.shots) {
        for (const Picture& picture : shot.pictures) {
            text += picture_line(picture, name_width, in_seconds(picture.took));
        }
    }
    for (const Picture& picture : report.unasked) {
        text += picture_line(picture, name_width, "not asked for");
    }
    text += files > 0 ? "\n" : "";
    text += count(report.shots.size(), "shot", "shots") + ", " + count(files, "file", "files") +
            ", " + in_bytes(bytes) + " in " + folder.string() + "; ";
    text += report.without_picture == 0
                ? "nothing lost.\n"
                : count(report.without_picture, "shot", "shots") + " lost.\n";
    text += times(took);
    if (report.connection_losses > 0) {
        text += "The camera went away " +
                (report.connection_losses == 1 ? std::string("once")
                                               : count(report.connection_losses, "time", "times")) +
                ".\n";
    }
    for (const std::string& trouble : report.troubles) {
        text += "! " + trouble + "\n";
    }
    return text;
}

}  // namespace tether
