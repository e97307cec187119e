#include "tether/conversation/redaction.h"

#include <algorithm>

#include "host/process/fields.h"

namespace tether {
namespace {

constexpr std::string_view log = "LOG|[SONY] ";
constexpr std::string_view landed = "LOG|[SONY] landed ";
constexpr std::string_view camera_found = "LOG|[SONY] camera \"";
constexpr std::string_view unknown_command = "ERROR|Unknown command: ";

// Shorter ones would be found in every other word.
constexpr std::size_t shortest_name = 3;
constexpr std::size_t longest_extension = 4;

bool is_letter(char byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

bool is_alphanumeric(char byte) {
    return is_letter(byte) || (byte >= '0' && byte <= '9');
}

char capital(char byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

// The first field as a name, in capitals: the worker takes commands in any case. Empty when it is
// none.
std::string key_of(std::string_view line) {
    std::string key(line.substr(0, line.find('|')));
    std::transform(key.begin(), key.end(), key.begin(), capital);
    const bool is_name = std::all_of(key.begin(), key.end(),
                                     [](char byte) { return is_letter(byte) || byte == '_'; });
    return is_name ? key : "";
}

// Behind a file name with a line break in it comes the rest of the name as a line of its own.
bool is_message(char direction, std::string_view line) {
    const std::string key = key_of(line);
    if (line.empty() || direction == '>') {
        return line.empty() || !key.empty();
    }
    return !key.empty() && line.starts_with(key + "|") && (key != "LOG" || line.starts_with(log));
}

bool is_word(std::string_view text, std::size_t begin, std::size_t length) {
    const std::size_t end = begin + length;
    return (begin == 0 || !is_alphanumeric(text[begin - 1])) &&
           (end == text.size() || !is_alphanumeric(text[end]));
}

void replace_words(std::string& text, const std::string& name, const std::string& stand_in) {
    if (name.size() < shortest_name) {
        return;
    }
    for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos;) {
        if (is_word(text, at, name.size())) {
            text.replace(at, name.size(), stand_in);
            at += stand_in.size();
        } else {
            ++at;
        }
    }
}

// Whatever has a slash in it may be a path, blanks and all, as far as the dash that the worker puts
// behind one.
void replace_path(std::string& text) {
    const std::size_t slash = text.find('/');
    if (slash == std::string::npos) {
        return;
    }
    const std::size_t blank = text.find_last_of(" |", slash);
    const std::size_t begin = blank == std::string::npos ? 0 : blank + 1;
    const std::size_t end = std::min(text.find(" — ", slash), text.size());
    text.replace(begin, end - begin, "<path>");
}

}  // namespace

std::string Redaction::redact(char direction, std::string_view line) {
    if (!is_message(direction, line)) {
        return "<text>";
    }
    const std::size_t separator = line.find('|');
    if (separator == std::string_view::npos) {
        return std::string(line);
    }
    const std::string key = key_of(line);
    const std::string written_key(line.substr(0, separator + 1));
    const std::string payload = host::unescape_field(line.substr(separator + 1));
    if (key == "DOWNLOADED") {
        return written_key + file(payload);
    }
    if (key == "DOWNLOAD_DIR" || key == "SET_DOWNLOAD_DIR") {
        return written_key + (payload.empty() ? "" : "<folder>");
    }
    if (key == "CONNECTED" && payload != "already") {
        return written_key + camera(payload);
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
    if (line.starts_with(unknown_command)) {
        return std::string(unknown_command) + redact('>', line.substr(unknown_command.size()));
    }
    return written_key + free_text(line.substr(separator + 1));
}

std::string Redaction::file(std::string_view path) {
    const std::size_t name_begin = path.rfind('/') + 1;
    const std::string_view name = path.substr(name_begin);
    std::size_t dot = std::min(name.rfind('.'), name.size());
    const std::string_view extension = name.substr(std::min(dot + 1, name.size()));
    if (extension.size() > longest_extension ||
        !std::all_of(extension.begin(), extension.end(), is_alphanumeric)) {
        dot = name.size();
    }
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

std::string Redaction::free_text(std::string_view text) {
    std::string redacted(text);
    replace_path(redacted);
    for (const auto* names : {&files_, &cameras_}) {
        for (const auto& [name, stand_in] : *names) {
            replace_words(redacted, name, stand_in);
            replace_words(redacted, host::escape_field(name), stand_in);
        }
    }
    return redacted;
}

}  // namespace tether
