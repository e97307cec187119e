// Runs whose program has gone. Their workers may still be ending.
#pragma once

#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "host/pictures/disk/lock.h"
#include "host/pictures/folder.h"
#include "host/pictures/recovery.h"
#include "host/pictures/store.h"

namespace host::pictures {

// The names of all runs in a folder; what is no run may be among them. An errno, or 0.
int list_runs(const Folder& folder, std::set<std::string>& names);

// Ends the workers that outlive their program, and brings in what these runs have left. The
// folder's lock is held, so that no program has a run there.
Found take_over_left_runs(const std::shared_ptr<Folder>& folder, const std::set<std::string>& names,
                          const Options& options, const std::atomic<bool>& hurried, TimeOfDay now);

// Removes a run's lock file, which is ours: a regular file of its name.
void remove_lock(const Folder& folder, const std::string& run);

// All runs are called so; what is called otherwise is not touched.
inline constexpr std::string_view run_prefix = "run-";

}  // namespace host::pictures
