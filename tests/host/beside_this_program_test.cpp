// Where a program of the host's side finds the worker that belongs to it.
#include "host/process/beside_this_program.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

TEST(BesideThisProgram, IsTheWorkerOfTheSameBuild) {
    EXPECT_EQ(host::worker_beside_this_program(), std::filesystem::canonical(WORKER));
}

}  // namespace
