// Pictures through `tether serve`: how soon a large one is told, and what ten thousand leave behind
// in memory. On a disk in memory: how long a disk takes to sync is the disk's.

#include <fstream>
#include <set>
#include <string>

#include "bench/measure/bench.h"
#include "bench/measure/kernel.h"
#include "bench/measure/one_way.h"
#include "bench/measure/server.h"
#include "bench/measure/statistics.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* no_disk = "this system has no disk in memory at /dev/shm";
constexpr double microseconds_per_millisecond = 1e3;

// A JPEG as far as its structure goes, of so many bytes. In its data stands one 0xFF in 256 bytes,
// as in a camera's.
void write_jpeg(const fs::path& path, std::size_t bytes) {
    const std::string head(
        "\xFF\xD8\xFF\xC0\x00\x0B\x08\x00\x01\x00\x01\x01\x01\x11\x00"
        "\xFF\xDA\x00\x08\x01\x01\x00\x00\x3F\x00",
        25);
    std::string content = head;
    std::uint32_t drawn = 1;
    while (content.size() + 2 < bytes) {
        drawn = drawn * 1664525U + 1013904223U;
        content += content.back() == '\xFF' ? '\0' : static_cast<char>(drawn >> 24U);
    }
    content.back() = '\0';
    content += "\xFF\xD9";
    std::ofstream(path, std::ios::binary) << content;
}

// The text of a field with text.
std::string field(std::string_view line, const std::string& name) {
    const std::string key = "\"" + name + "\":\"";
    const std::size_t at = line.find(key);
    if (at == std::string_view::npos) {
        give_up("no " + name + " in " + std::string(line));
    }
    const std::string_view rest = line.substr(at + key.size());
    return std::string(rest.substr(0, rest.find('"')));
}

// Its path.
std::string hear_of_a_picture(Server& server, std::set<std::string>& ids) {
    const std::string_view line = server.hear_of("picture");
    if (line.find(R"("whole":true)") == std::string_view::npos) {
        give_up("a picture is not whole: " + std::string(line));
    }
    ids.insert(field(line, "id"));
    return field(line, "path");
}

}  // namespace

void measure_serve_picture(Bench& bench) {
    constexpr std::size_t bytes = 25'000'000;
    const MemoryFolder memory;
    if (memory.path().empty()) {
        return bench.results.skipped("tether serve, DOWNLOADED to picture", no_disk);
    }
    write_jpeg(memory.path() / "picture.JPG", bytes);
    ServedStandIn served(bench, memory.path(), {{"BENCH_PICTURE", memory.path() / "picture.JPG"}});
    Samples told;
    std::set<std::string> ids;
    for (int picture = 0; picture < bench.rounds(101, 11); ++picture) {
        served.capture();
        const std::string path = hear_of_a_picture(served.server, ids);
        told.push_back(now_in_microseconds());
        if (fs::file_size(path) != bytes) {
            give_up("a picture has lost bytes: " + path);
        }
        fs::remove(path);
    }
    served.server.shut_down();

    const Samples stamps = served.stamps();  // a CAPTURE and a report each
    if (stamps.size() != 2 * told.size() || ids.size() != told.size()) {
        give_up("a picture was not told once");
    }
    Samples times;
    for (std::size_t picture = 0; picture < told.size(); ++picture) {
        times.push_back((told[picture] - stamps[2 * picture + 1]) / microseconds_per_millisecond);
    }
    bench.results.at_most(2, "tether serve, DOWNLOADED to picture", bench.typical(times), "ms",
                          "a JPEG of 25 MB, nothing to sync");
}

void measure_serve_memory(Bench& bench) {
    constexpr double kilobyte = 1e3;
    const int pictures = bench.rounds(10'000, 4'000);
    const MemoryFolder memory;
    if (memory.path().empty()) {
        return bench.results.skipped("tether serve, memory of a picture", no_disk);
    }
    write_jpeg(memory.path() / "picture.JPG", 1'000);
    ServedStandIn served(bench, memory.path(), {{"BENCH_PICTURE", memory.path() / "picture.JPG"}});
    const auto resident = resident_bytes(served.server.process());
    if (!resident) {
        return bench.results.skipped("tether serve, memory of a picture",
                                     "this system has no /proc");
    }
    std::set<std::string> ids;
    std::set<std::string> paths;
    const auto begun = Clock::now();
    for (int picture = 0; picture < pictures; ++picture) {
        served.capture();
        paths.insert(hear_of_a_picture(served.server, ids));
    }
    const double took = seconds(Clock::now() - begun);
    const double grown = *resident_bytes(served.server.process()) - *resident;
    served.server.shut_down();

    std::size_t there = 0;
    for (const std::string& path : paths) {
        there += fs::exists(path) && fs::file_size(path) == 1'000 ? 1 : 0;
    }
    const std::string many = grouped(pictures) + " pictures in a row";
    bench.results.at_most(0, "tether serve, " + many + ", lost",
                          pictures - static_cast<double>(std::min(there, ids.size())), "");
    bench.results.at_most(200, "tether serve, " + many + ", memory of each", grown / pictures,
                          "bytes",
                          brief(*resident / kilobyte) + " kB before; " + brief(pictures / took) +
                              " pictures a second");
}
