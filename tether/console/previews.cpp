#include "tether/console/previews.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <poll.h>
#include <system_error>
#include <unistd.h>

#include "host/process/beside_this_program.h"
#include "host/process/exit_watch.h"
#include "host/process/spawn.h"

namespace console {

using host::MutexLock;

namespace {

// The camera's own work needs a processor, too.
constexpr std::size_t most_at_once = 2;

// On a machine that is busy with other things; its own limit is that of its processor.
constexpr std::chrono::seconds longest_wait{60};
constexpr std::size_t longest_preview = std::size_t{4} << 20;

// Everything up to its end; nothing when that does not come.
std::optional<std::string> read_all(const host::Descriptor& pipe, host::TimePoint deadline) {
    std::string text;
    std::array<char, 65536> bytes;
    while (text.size() <= longest_preview) {
        pollfd readable{pipe.number(), POLLIN, 0};
        if (::poll(&readable, 1, host::poll_timeout(deadline)) == 0) {
            return std::nullopt;
        }
        const ssize_t count = ::read(pipe.number(), bytes.data(), bytes.size());
        if (count == 0) {
            return text;
        }
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        text.append(bytes.data(), static_cast<std::size_t>(count > 0 ? count : 0));
    }
    return std::nullopt;
}

// Null when there is none; nothing when it was not made by the deadline, or cannot be just now.
std::optional<Previews::Made> made_by(const std::string& program, const OpenFile& file,
                                      host::TimePoint deadline) {
    auto output = host::make_pipe();
    if (!output) {
        return std::nullopt;
    }
    host::SpawnRequest request;
    request.executable = program;
    std::string error;
    const auto process = host::spawn(request, file.descriptor, output->write_end, error);
    if (!process) {
        return std::nullopt;
    }
    host::ExitWatch watch(*process);  // ends it, if need be
    output->write_end.close();
    auto text = read_all(output->read_end, deadline);
    const auto exit = text ? watch.await(deadline) : std::nullopt;
    if (!exit) {
        return std::nullopt;
    }
    // One that died in the middle has written half a picture.
    return exit->clean() && !text->empty() ? std::make_shared<const std::string>(std::move(*text))
                                           : nullptr;
}

}  // namespace

Previews::Previews(std::string program, std::size_t most_bytes)
    : program_(std::move(program)), most_bytes_(most_bytes) {}

std::optional<Previews::Made> Previews::of(const std::string& id, const OpenFile& file) {
    const host::TimePoint deadline = host::after(longest_wait);
    {
        const MutexLock lock(mutex_);
        // Two pages that want the same one wait for the same one.
        while (being_made_.count(id) != 0 || being_made_.size() >= most_at_once) {
            if (!mutex_.wait_until(made_, deadline)) {
                return std::nullopt;
            }
        }
        if (Made found = find(id)) {
            return found;
        }
        being_made_.insert(id);
    }
    auto preview = made_by(program_, file, deadline);
    {
        const MutexLock lock(mutex_);
        being_made_.erase(id);
        if (preview && *preview) {
            keep(id, *preview);
        }
    }
    made_.notify_all();
    return preview;
}

Previews::Made Previews::find(const std::string& id) {
    const auto found = by_id_.find(id);
    if (found == by_id_.end()) {
        return nullptr;
    }
    kept_.splice(kept_.begin(), kept_, found->second);
    return kept_.front().second;
}

void Previews::keep(const std::string& id, const Made& preview) {
    kept_.emplace_front(id, preview);
    by_id_[id] = kept_.begin();
    bytes_ += preview->size();
    while (bytes_ > most_bytes_ && kept_.size() > 1) {
        bytes_ -= kept_.back().second->size();
        by_id_.erase(kept_.back().first);
        kept_.pop_back();
    }
}

std::string preview_program() {
    const auto program = host::folder_of_this_program() / "tether-preview";
    std::error_code missing;
    return std::filesystem::exists(program, missing) ? program.string() : std::string();
}

}  // namespace console
