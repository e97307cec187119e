#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// What the program can be asked to do. Each task prints its result and returns the exit status.
namespace explore {

struct Wishes {
    std::string worker;               // the library
    std::vector<std::string> scenes;  // none: all
    int bound = 2;
    std::uint64_t runs = 1'000'000;
    std::uint64_t one_pair_in = 25;
    std::uint64_t seed = 1;
    std::size_t jobs = 2;
    std::string report;
};

int list_scenes();
int explore_scenes(const Wishes& wishes);
int explore_faults(const Wishes& wishes);
// "SCENE FAULT... TURN:FIBER...", told step by step.
int replay_one(const Wishes& wishes, const std::string& schedule);
// Whether replays repeat their runs exactly.
int check_replays(const Wishes& wishes);

}  // namespace explore
