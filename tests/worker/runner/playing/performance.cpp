#include "tests/worker/runner/playing/performance.h"

#include "tests/worker/runner/playing/performer.h"
#include "tests/worker/runner/playing/stage.h"
#include "tests/worker/runner/reading/opening.h"

namespace transcript {

std::optional<Failure> perform(const Transcript& transcript, const std::filesystem::path& worker) {
    std::string error;
    const auto stage = Stage::set_up(transcript, worker, error);
    if (!stage) {
        return Failure{{transcript.file, 1}, "a worker", error, {}, {}};
    }
    Performer performer(*stage);
    for (const auto& steps :
         {opening_steps(transcript), transcript.steps, closing_steps(transcript)}) {
        for (const Step& step : steps) {
            const Verdict verdict = std::visit(
                [&](const auto& action) { return performer.perform(action); }, step.action);
            if (verdict) {
                return Failure{step.place, verdict->expected, verdict->came, performer.recent(),
                               stage->complaints()};
            }
        }
    }
    const std::string complaints = stage->complaints();
    if (!complaints.empty()) {
        return Failure{transcript.steps.back().place, "nothing on standard error", "complaints",
                       performer.recent(), complaints};
    }
    return std::nullopt;
}

}  // namespace transcript
