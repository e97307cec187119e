#include "simulator/control/scene/language.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

#include "simulator/control/scene/words.h"
#include "simulator/sdk/strictness.h"

namespace camera_sim {
namespace {

constexpr const Verb* tables[] = {camera_verbs, setup_verbs, event_verbs, callback_verbs,
                                  fault_verbs};

const Verb* find_verb(const std::string& name) {
    for (const Verb* table : tables) {
        for (const Verb* verb = table; verb->name != nullptr; ++verb) {
            if (name == verb->name) {
                return verb;
            }
        }
    }
    return nullptr;
}

std::string follow(const std::string& line, Words::For purpose) SIM_REQUIRES(g_lock) {
    Words words(line, purpose);
    if (!words.error().empty() || !words.left()) {
        return words.error();
    }
    const std::string name = words.word("VERB");
    const Verb* verb = find_verb(name);
    if (verb == nullptr) {
        return "\"" + name + "\" is no word of the scene language";
    }
    verb->run(words);
    return words.error();
}

}  // namespace

std::string run_line(const std::string& line) {
    return follow(line, Words::For::doing);
}

std::string check_line(const std::string& line) {
    return follow(line, Words::For::checking);
}

std::vector<std::string> help_lines() {
    std::vector<std::string> lines;
    for (const Verb* table : tables) {
        for (const Verb* verb = table; verb->name != nullptr; ++verb) {
            lines.push_back(std::string(verb->name) + (*verb->form == '\0' ? "" : " ") +
                            verb->form);
        }
    }
    lines.insert(lines.end(), {"wait", "state", "help"});
    return lines;
}

bool is_verb(const std::string& word) {
    return find_verb(word) != nullptr;
}

void play_scene(const char* path) {
    // Not blocked by a pipe, which would hold Init up, and with it the worker's end.
    const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat facts {};
    if (descriptor < 0 || fstat(descriptor, &facts) != 0) {
        stop(std::string("the scene ") + path + " cannot be read: " + std::strerror(errno));
    }
    if (!S_ISREG(facts.st_mode)) {
        stop(std::string("the scene ") + path + " is not a file with lines of text");
    }
    std::FILE* file = fdopen(descriptor, "r");
    if (file == nullptr) {
        stop(std::string("the scene ") + path + " cannot be read: " + std::strerror(errno));
    }
    std::string line;
    int number = 1;
    for (int c = std::fgetc(file);; c = std::fgetc(file)) {
        if (c != '\n' && c != EOF) {
            line += static_cast<char>(c);
            if (line.size() > longest_line) {
                stop(std::string(path) + ":" + std::to_string(number) + ": the line is too long");
            }
            continue;
        }
        if (std::ferror(file) != 0) {
            stop(std::string("the scene ") + path + " cannot be read: " + std::strerror(errno));
        }
        if (const std::string error = run_line(line); !error.empty()) {
            stop(std::string(path) + ":" + std::to_string(number) + ": " + error);
        }
        if (c == EOF) {
            break;
        }
        line.clear();
        ++number;
    }
    std::fclose(file);
}

}  // namespace camera_sim
