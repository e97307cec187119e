// Which file it is, whatever its name is.
#pragma once

#include <cstdint>
#include <sys/stat.h>
#include <type_traits>

namespace host::pictures {

struct Identity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const Identity&) const = default;
};

// A Mac's device numbers have a sign here, and none where the system tells which files a process
// has open: they must not be widened with it.
inline Identity identity_of(const struct stat& facts) {
    return {static_cast<std::make_unsigned_t<decltype(facts.st_dev)>>(facts.st_dev),
            static_cast<std::uint64_t>(facts.st_ino)};
}

// What shows after a restart that it is the same file.
struct FileFacts {
    Identity identity;
    std::uint64_t bytes = 0;
    std::int64_t changed = 0;  // its content, in nanoseconds since 1970

    bool operator==(const FileFacts&) const = default;
};

// File systems that keep no number for a file give it a new one now and then, at the latest when
// they are mounted anew; these keep its times to two seconds.
inline constexpr std::int64_t coarse_time = 2'000'000'000;

inline bool is_same_file(const FileFacts& one, const FileFacts& other) {
    const std::int64_t apart = one.changed - other.changed;
    return one.bytes == other.bytes && (one.identity.inode == other.identity.inode ||
                                        (apart <= coarse_time && apart >= -coarse_time));
}

inline FileFacts facts_of(const struct stat& facts) {
#if defined(__APPLE__)
    const timespec& changed = facts.st_mtimespec;
#else
    const timespec& changed = facts.st_mtim;
#endif
    return {identity_of(facts), static_cast<std::uint64_t>(facts.st_size),
            std::int64_t{changed.tv_sec} * 1'000'000'000 + changed.tv_nsec};
}

}  // namespace host::pictures
