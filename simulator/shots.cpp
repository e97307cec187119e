#include "simulator/shots.h"

#include "simulator/state.h"

namespace camera_sim {

void hold_half_way(bool) {}
void hold_down(bool) {}
bool shots_under_way() {
    return false;
}
void end_shots(Hold&) {}

}  // namespace camera_sim
