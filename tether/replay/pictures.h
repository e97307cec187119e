// Small real pictures for a replay: what a record holds of a picture is its name.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace replay {

// As the record tells what became of it.
enum class Fate { whole, damaged, missing };

// A grey picture of the format that the name says, 8 or 32 pixels square. Of a format that is not
// known, a line of text.
std::string picture_for(std::string_view name);

// Makes it at that path, whole or cut in half. Nothing that stands there already is touched. Why it
// could not be made, a sentence; empty when it was, or was to be missing.
std::string make_picture(const std::filesystem::path& path, Fate fate);

}  // namespace replay
