#pragma once

// The language of scene files and of the control socket: one command a line, each a verb of one
// table.

#include <cstddef>
#include <string>
#include <vector>

#include "simulator/sdk/lock.h"

namespace camera_sim {

class Words;
enum class Card;

inline constexpr std::size_t longest_line = std::size_t{64} * 1024;  // bytes

struct Verb {
    const char* name;
    const char* form;           // of what stands behind it
    void (*run)(Words& words);  // with the lock held
};

// The tables, one for each file of verbs, each ended by a verb without a name. A verb has a row for
// each of its forms; the first one's function reads them all.
extern const Verb camera_verbs[];
extern const Verb setup_verbs[];
extern const Verb event_verbs[];
extern const Verb callback_verbs[];
extern const Verb fault_verbs[];

// Does what the line says; what is wrong with it, or nothing.
std::string run_line(const std::string& line) SIM_REQUIRES(g_lock);
// What is wrong with the line as it stands, whatever the camera could do with it, or nothing.
std::string check_line(const std::string& line) SIM_REQUIRES(g_lock);
bool is_verb(const std::string& word);

Card read_card(Words& words);  // in, out or full

// Runs the lines of a scene file; a bad line stops the process.
void play_scene(const char* path) SIM_REQUIRES(g_lock);

// What the control lines `state` and `help` print.
std::vector<std::string> state_lines() SIM_REQUIRES(g_lock);
std::vector<std::string> help_lines();

}  // namespace camera_sim
