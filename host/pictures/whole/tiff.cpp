#include <algorithm>
#include <vector>

#include "host/pictures/whole/whole.h"

namespace host::pictures {
namespace {

// A camera's file has ten directories with at most a hundred entries each. More than these are
// damage, and would keep everybody waiting.
constexpr std::size_t most_directories = 64;
constexpr std::uint64_t most_numbers = std::uint64_t{1} << 18;

namespace tag {
constexpr std::uint64_t strip_offsets = 0x0111;
constexpr std::uint64_t strip_sizes = 0x0117;
constexpr std::uint64_t tile_offsets = 0x0144;
constexpr std::uint64_t tile_sizes = 0x0145;
constexpr std::uint64_t directories_below = 0x014A;
constexpr std::uint64_t jpeg_offset = 0x0201;
constexpr std::uint64_t jpeg_size = 0x0202;
constexpr std::uint64_t exif = 0x8769;
constexpr std::uint64_t gps = 0x8825;
}  // namespace tag

struct Entry {
    std::uint64_t tag = 0;
    std::uint64_t type = 0;
    std::uint64_t count = 0;
    std::uint64_t at = 0;  // of its values
};

// Bytes of one value; 0 for a type that came after this was written.
unsigned int size_of(std::uint64_t type) {
    constexpr unsigned int sizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return type < std::size(sizes) ? sizes[type] : 0;
}

class Tiff {
  public:
    explicit Tiff(Window& file) : file_(file) {}

    std::string why_not_whole();

  private:
    std::optional<std::uint64_t> number(std::uint64_t at, unsigned int bytes) {
        return little_ ? file_.little_endian(at, bytes) : file_.big_endian(at, bytes);
    }
    bool inside(std::uint64_t at, std::uint64_t size) const {
        return at <= file_.size() && size <= file_.size() - at;
    }

    bool read_directory(std::uint64_t at);
    bool read_entry(std::uint64_t at, Entry& entry);
    bool numbers_of(const Entry* entry, std::vector<std::uint64_t>& numbers);
    bool go_below(const Entry* entry);
    bool look_at_pieces(const Entry* offsets, const Entry* sizes);

    Window& file_;
    bool little_ = false;
    bool picture_ = false;
    std::uint64_t numbers_ = 0;
    std::vector<std::uint64_t> directories_;  // read, and to be read
    std::string trouble_;
};

constexpr const char* ends_early = "it ends before its picture does";
constexpr const char* damaged = "its directories are damaged";

// False, and why in trouble_, when something of it lies outside.
bool Tiff::read_entry(std::uint64_t at, Entry& entry) {
    entry.tag = number(at, 2).value_or(0);
    entry.type = number(at + 2, 2).value_or(0);
    entry.count = number(at + 4, 4).value_or(0);
    const std::uint64_t bytes = entry.count * size_of(entry.type);
    entry.at = bytes <= 4 ? at + 8 : number(at + 8, 4).value_or(0);
    if (!inside(entry.at, bytes)) {
        trouble_ = ends_early;
        return false;
    }
    return true;
}

bool Tiff::numbers_of(const Entry* entry, std::vector<std::uint64_t>& numbers) {
    const unsigned int bytes = entry == nullptr ? 0 : size_of(entry->type);
    const std::uint64_t count = entry == nullptr ? 0 : entry->count;
    numbers_ += count;
    if (numbers_ > most_numbers || (count > 0 && bytes != 2 && bytes != 4)) {
        trouble_ = damaged;
        return false;
    }
    for (std::uint64_t index = 0; index < count; ++index) {
        numbers.push_back(number(entry->at + index * bytes, bytes).value_or(0));
    }
    return true;
}

bool Tiff::go_below(const Entry* entry) {
    std::vector<std::uint64_t> below;
    if (!numbers_of(entry, below)) {
        return false;
    }
    for (const std::uint64_t directory : below) {
        // Two that name each other are read once.
        if (std::count(directories_.begin(), directories_.end(), directory) > 0) {
            continue;
        }
        if (directories_.size() == most_directories) {
            trouble_ = damaged;
            return false;
        }
        directories_.push_back(directory);
    }
    return true;
}

bool Tiff::look_at_pieces(const Entry* offsets, const Entry* sizes) {
    std::vector<std::uint64_t> begin;
    std::vector<std::uint64_t> length;
    if (!numbers_of(offsets, begin) || !numbers_of(sizes, length)) {
        return false;
    }
    if (begin.size() != length.size()) {
        trouble_ = damaged;
        return false;
    }
    for (std::size_t index = 0; index < begin.size(); ++index) {
        if (!inside(begin[index], length[index])) {
            trouble_ = ends_early;
            return false;
        }
        picture_ = picture_ || length[index] > 0;
    }
    return true;
}

bool Tiff::read_directory(std::uint64_t at) {
    const auto count = number(at, 2);
    if (!count || !inside(at + 2, *count * 12 + 4)) {
        trouble_ = ends_early;
        return false;
    }
    std::vector<Entry> entries(static_cast<std::size_t>(*count));
    for (std::size_t index = 0; index < entries.size(); ++index) {
        if (!read_entry(at + 2 + index * 12, entries[index])) {
            return false;
        }
    }
    const auto entry = [&](std::uint64_t tag) {
        const auto found = std::find_if(entries.begin(), entries.end(),
                                        [&](const Entry& one) { return one.tag == tag; });
        return found == entries.end() ? nullptr : &*found;
    };
    const std::uint64_t next = number(at + 2 + entries.size() * 12, 4).value_or(0);
    const Entry after{0, 4, next == 0 ? 0U : 1U, at + 2 + entries.size() * 12};
    return look_at_pieces(entry(tag::strip_offsets), entry(tag::strip_sizes)) &&
           look_at_pieces(entry(tag::tile_offsets), entry(tag::tile_sizes)) &&
           look_at_pieces(entry(tag::jpeg_offset), entry(tag::jpeg_size)) &&
           go_below(entry(tag::directories_below)) && go_below(entry(tag::exif)) &&
           go_below(entry(tag::gps)) && go_below(&after);
}

std::string Tiff::why_not_whole() {
    const auto order = file_.big_endian(0, 2);
    little_ = order == std::uint64_t{0x4949};
    if ((!little_ && order != std::uint64_t{0x4D4D}) || number(2, 2) != std::uint64_t{42}) {
        return "it does not begin as a RAW does";
    }
    const auto first = number(4, 4);
    if (!first) {
        return ends_early;
    }
    directories_.push_back(*first);
    for (std::size_t index = 0; index < directories_.size(); ++index) {
        if (!read_directory(directories_[index])) {
            return trouble_;
        }
    }
    return picture_ ? "" : "it ends before its picture";
}

}  // namespace

std::string why_not_whole_tiff(Window& file) {
    return Tiff(file).why_not_whole();
}

}  // namespace host::pictures
