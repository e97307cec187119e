#include "host/redaction.h"

#include <algorithm>

#include "host/fields.h"

namespace tether {
namespace {

constexpr std::string_view landed = "LOG|[SONY] landed ";
constexpr std::string_view camera_found = "LOG|[SONY] camera \"";

}  // namespace

std::string Redaction::redact(std::string_view line) {
    const std::size_t separator = line.find('|');
    if (separator == std::string_view::npos) {
        return free_text(line);
    }
    const std::string key(line.substr(0, separator + 1));
    const std::string payload = host::unescape_field(line.substr(separator + 1));
    if (key == "DOWNLOADED|") {
        return key + file(payload);
    }
    if (key == "DOWNLOAD_DIR|" || key == "SET_DOWNLOAD_DIR|") {
        return key + (payload.empty() ? "" : "<folder>");
    }
    if (key == "CONNECTED|" && payload != "already") {
        return key + camera(payload);
    }
    if (line.starts_with(landed)) {
        return std::string(landed) + file(line.substr(landed.size()));
    }
    if (line.starts_with(camera_found)) {
        const std::string_view rest = line.substr(camera_found.size());
        const std::size_t end = std::min(rest.rfind('"'), rest.size());
        return std::string(camera_found) + camera(rest.substr(0, end)) +
               std::string(rest.substr(end));
    }
    return free_text(line);
}

std::string Redaction::file(std::string_view path) {
    const std::size_t name_begin = path.rfind('/') + 1;
    const std::string_view name = path.substr(name_begin);
    const std::size_t dot = std::min(name.rfind('.'), name.size());
    const auto [entry, unknown] = files_.try_emplace(std::string(name.substr(0, dot)));
    if (unknown) {
        entry->second = "<file " + std::to_string(files_.size()) + ">";
    }
    return (name_begin > 0 ? "<folder>/" : "") + entry->second + std::string(name.substr(dot));
}

std::string Redaction::camera(std::string_view name) {
    const auto [entry, unknown] = cameras_.try_emplace(std::string(name));
    if (unknown) {
        entry->second = "<camera " + std::to_string(cameras_.size()) + ">";
    }
    return entry->second;
}

// Whatever begins with a slash may be a path, blanks and all, as far as the dash that the worker
// puts behind one.
std::string Redaction::free_text(std::string_view text) {
    const std::size_t begin = text.find('/');
    if (begin == std::string_view::npos) {
        return std::string(text);
    }
    const std::size_t end = std::min(text.find(" — ", begin), text.size());
    return std::string(text.substr(0, begin)) + "<path>" + std::string(text.substr(end));
}

}  // namespace tether
