#include "simulator/sdk/faults.h"

#include <algorithm>

#include "simulator/camera/state.h"

namespace camera_sim {

Response take_fault(const std::string& subject, std::optional<CrInt32u> code) {
    auto& faults = state().faults;
    for (const bool standing : {false, true}) {
        const auto fault = std::find_if(faults.begin(), faults.end(), [&](const Fault& candidate) {
            return candidate.subject == subject && (candidate.times == 0) == standing &&
                   (!candidate.code || candidate.code == code);
        });
        if (fault == faults.end()) {
            continue;
        }
        Response response = fault->response;
        if (!standing && --fault->times == 0) {
            faults.erase(fault);
        }
        return response;
    }
    return {};
}

}  // namespace camera_sim
