#include "tests/explore/faults/search_faults.h"

#include <algorithm>

#include "tests/explore/faults/circumstances.h"
#include "tests/explore/objects.h"
#include "tests/explore/search/random_priorities.h"
#include "tests/explore/search/replay.h"
#include "tests/explore/search/search.h"

namespace explore {

namespace {

constexpr int random_runs_each = 10;

// Lets one fiber go on whenever it can.
class Eager final : public Choices {
  public:
    explicit Eager(int fiber) : fiber_(fiber) {}

  protected:
    int choose(std::uint32_t, const Options& options) override {
        return (options.ready >> fiber_ & 1) != 0 ? fiber_ : options.usual();
    }

  private:
    int fiber_;
};

// Plays the scene as it usually goes and a few times at random. False: a run was wrong.
class Player {
  public:
    Player(Search& search, std::uint64_t seed) : search_(search), seed_(seed) {}

    bool play_usual() {
        Replay usual(no_deviations_);
        const bool right = stands(usual);
        length_ = std::max(length_, run.turns);
        return right;
    }

    bool play_random(int runs) {
        for (int i = 0; i < runs; ++i) {
            priorities_.next_run(seed_++, length_, 0);
            if (!stands(priorities_)) {
                return false;
            }
        }
        return true;
    }

    bool stands(Choices& choices) {
        if (search_.play_once(choices, true) != Verdict::wrong) {
            return true;
        }
        tell_failure(search_, Schedule(choices.taken));
        return false;
    }

  private:
    Search& search_;
    std::uint64_t seed_;
    std::uint32_t length_ = 1;
    Schedule no_deviations_;
    RandomPriorities priorities_;
};

bool play_pair(Player& player, const Fault* one, const Fault* other, Findings& findings) {
    circumstances.faults = {one, other};
    if (!player.play_usual()) {
        return false;
    }
    // One fault can keep the other from striking; such a pair does not count.
    findings.pairs += all_faults_struck() ? 1 : 0;
    return player.play_random(1);
}

}  // namespace

void search_faults(const WorkerLibrary& worker, const Scene& tour, std::uint64_t one_pair_in,
                   std::uint64_t seed, Findings& findings) {
    findings = Findings{};
    Search search{worker, tour, findings};
    Player player(search, seed);
    std::vector<const Fault*> striking;
    for (std::size_t i = 0; i < all_faults().size(); ++i) {
        const Fault& fault = all_faults()[i];
        circumstances.faults = {&fault};
        if (!player.play_usual()) {
            return;
        }
        if (all_faults_struck()) {
            striking.push_back(&fault);
            findings.struck.set(i);
            if (!player.play_random(random_runs_each)) {
                return;
            }
        }
    }
    findings.faults = striking.size();

    for (std::size_t i = 0; i < striking.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (mix(mix(seed, i), j) % one_pair_in == 0 &&
                !play_pair(player, striking[i], striking[j], findings)) {
                return;
            }
        }
    }
}

void search_cable(const WorkerLibrary& worker, const Scene& scene, std::uint64_t seed,
                  Findings& findings) {
    findings = Findings{};
    circumstances = Circumstances{};
    Search search{worker, scene, findings};
    Player player(search, seed);
    constexpr int cable_fiber = 3;  // after main, the host and the camera
    std::uint32_t last_pull = 0;
    for (circumstances.cable_pulled_at = 1;; ++circumstances.cable_pulled_at) {
        if (!player.play_usual()) {
            return;
        }
        if (run.turns < circumstances.cable_pulled_at) {
            return;
        }
        Eager eager(cable_fiber);
        if (!player.stands(eager)) {
            return;
        }
        // Before the session opens there is no cable to pull: all those turns are one pull.
        findings.pulls += cable_was_pulled_at() > last_pull ? 1 : 0;
        last_pull = std::max(last_pull, cable_was_pulled_at());
        if (!player.play_random(random_runs_each)) {
            return;
        }
    }
}

}  // namespace explore
