#pragma once

#include <string>
#include <vector>

#include "tests/explore/model/state.h"

// What the operations of the main thread are made of. Each returns whether the step can be taken;
// the state is then what comes after it.
namespace explore::model {

inline constexpr std::uint64_t all_ones = ~std::uint64_t{0};

// What can be seen of the main thread. Each goes on at `next` when the event is the one expected.
bool line(State& state, const Event* event, const std::string& text, At next);
bool logs(State& state, const Event* event, const std::string& text, At next);
bool calls(State& state, const Event* event, Call call, std::uint64_t number, std::uint64_t value,
           At next, std::uint64_t handle = 0, Text text = 0);
bool answers(const Event* event, Call call);

bool goes_on(State& state, At next);

// Steps that several operations share end where they were called from.
void go_and_return(State& state, At there, At back);
bool done(State& state);
bool command_done(State& state);

void sleep(State& state, Time length, At next);
// After an answer the sleep begins at once.
bool answered_then_sleeps(State& state, const Event* event, Call call, Time length, At next);

// model/properties.cpp
void write_property(State& state, std::uint32_t code, std::uint64_t value, At back);
void read_property(State& state, std::uint32_t code, At back);
void forget_property(State& state);
bool property_access(State& state, const Event* event);

// model/commands.cpp
std::vector<std::string> fields_of(const std::string& text);
// The second field of the command that is under way.
std::string argument(const State& state);
bool begin_command(State& state);
bool plain_reply(State& state, const Event* event);

// The operations, each in the file of its name.
bool start_up(State& state, const Event* event);
bool connect(State& state, const Event* event);
bool disconnect(State& state, const Event* event);
bool connect_timed_out(State& state, const Event* event);
bool folder(State& state, const Event* event);
bool save_destination(State& state, const Event* event);
bool card_check(State& state, const Event* event);
bool file_type(State& state, const Event* event);
bool apply_settings(State& state);
bool capture(State& state, const Event* event);
bool shutdown(State& state, const Event* event);

}  // namespace explore::model
