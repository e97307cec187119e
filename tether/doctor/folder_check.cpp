// A folder for downloads: it is tried, since permissions do not tell the whole story.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#include "tether/doctor/checks.h"
#include "tether/doctor/regular_file.h"
#include "tether/live/session_words.h"

namespace doctor {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t room_for_an_hour = 2'000'000'000;

// Why no file of a little size can be written; 0 when it can.
int try_to_write(const fs::path& folder) {
    std::string name = folder / ".tether-doctor-XXXXXX";
    const host::Descriptor file(mkstemp(name.data()));
    if (!file.is_open()) {
        return errno;
    }
    // The open file is enough: whoever is interrupted here leaves nothing behind.
    unlink(name.c_str());
    const std::string content(std::size_t{1} << 20, 'x');
    // A network drive may keep the news of a full disk until the end.
    const bool written =
        host::write_all(file, content, host::TimePoint::max()) && fsync(file.number()) == 0;
    return written ? 0 : errno;
}

std::string advice_for(int error) {
    switch (error) {
        case ENOSPC:
        case EDQUOT:
            return "Make room, or take another folder.";
        case EPERM:
            return "On a Mac: allow it under Privacy & Security, Files and Folders.";
        default:
            return "Take a folder that you may write to.";
    }
}

}  // namespace

Finding folder_takes_pictures(const fs::path& folder) {
    const std::string name = "folder: " + folder.string();
    std::error_code unreadable;
    const fs::file_type there = fs::status(folder, unreadable).type();
    if (there == fs::file_type::not_found && fs::is_symlink(folder, unreadable)) {
        return failure(name + " " + why_unreadable(folder), "Take another one.");
    }
    if (there == fs::file_type::not_found) {
        return failure(name + " is not there", "mkdir -p " + in_shell_quotes(folder));
    }
    if (there == fs::file_type::none) {
        return failure(name + " " + why_unreadable(folder), "Take another one.");
    }
    if (!fs::is_directory(folder, unreadable)) {
        return failure(name + " is not a folder", "Take another one.");
    }
    if (const int error = try_to_write(folder); error != 0) {
        return failure(name + " takes no files: " + std::strerror(error), advice_for(error));
    }
    const fs::space_info space = fs::space(folder, unreadable);
    if (unreadable) {
        return warning(name + " takes files, but not known how many: " + unreadable.message(), "");
    }
    const std::string text =
        name + " takes files, " + tether::in_bytes(space.available) + " are free";
    return space.available < room_for_an_hour ? warning(text, "That is soon full of pictures.")
                                              : ok(text);
}

}  // namespace doctor
