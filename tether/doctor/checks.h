// What the doctor looks at, one function each. None of them needs another to have gone well, but
// for the arguments that it takes.
#pragma once

#include <filesystem>
#include <optional>

#include "host/process/clock.h"
#include "host/process/worker_process.h"
#include "tether/doctor/bundle.h"
#include "tether/doctor/finding.h"
#include "tether/doctor/program_file.h"
#include "tether/doctor/system.h"

namespace doctor {

// bundle_checks.cpp: what lies where. `program` is nothing when the worker is no program.
Finding worker_is_there(const Bundle& bundle, const std::optional<ProgramFile>& program);
Finding run_path_is_right(const ProgramFile& worker);
Finding sdk_is_there(const Bundle& bundle, const ProgramFile& worker);
Finding adapter_is_there(const Bundle& bundle, bool simulated);

// start_check.cpp: the worker is started, and ended again before it has looked for a camera.
struct StartTimes {
    host::Duration until_ready = std::chrono::seconds(10);
    host::EndTimes end;
};
Finding worker_starts(const std::filesystem::path& worker, const StartTimes& times = {});

// system_checks.cpp: what only the system knows.
Finding signature_holds(const Bundle& bundle, const System& system);
Finding camera_is_free(const System& system);

// folder_check.cpp
Finding folder_takes_pictures(const std::filesystem::path& folder);

}  // namespace doctor
