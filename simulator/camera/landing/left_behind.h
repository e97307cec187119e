// What takes a shot's number in a folder for as long as a live process holds it, and what a camera
// that was killed leaves of that. All of it is for the thread that transfers.
#pragma once

#include <set>
#include <string>
#include <string_view>

namespace camera_sim {

inline constexpr std::string_view lock_ending = ".camera-sim.lock";
inline constexpr std::string_view part_ending = ".camera-sim.part";

// Whether the open file is the one that lies at the path.
bool same_file(int file, const std::string& path);

// Removes what a camera that lives no more has left of this shot: a live one holds the lock. True:
// the number is free again.
bool clear_left_behind(const std::string& folder, const std::string& stem);

// Whether a hidden file of this shot lies in the folder, whoever's it is.
bool part_lies_there(const std::string& folder, const std::string& stem);

// The numbers of this prefix that lie in the folder; 0 or an errno value. Clears what dead cameras
// have left there, except for the shot `own`.
int read_folder(const std::string& folder, const std::string& prefix, const std::string& own,
                std::set<unsigned>& numbers);

}  // namespace camera_sim
