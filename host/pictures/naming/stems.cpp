#include "host/pictures/naming/stems.h"

#include <charconv>
#include <set>

#include "host/pictures/disk/listing.h"

namespace host::pictures {
namespace {

constexpr std::size_t longest_name = 255;
constexpr std::size_t longest_count = 11;  // "-" and ten digits

// Of characters that two bytes write; others have no case, or one that no camera and few people
// name files with.
unsigned int fold_character(unsigned int character) {
    if ((character >= 0xC0 && character <= 0xDE && character != 0xD7) ||
        (character >= 0x391 && character <= 0x3A9) || (character >= 0x410 && character <= 0x42F)) {
        return character + 0x20;
    }
    if (character >= 0x400 && character <= 0x40F) {
        return character + 0x50;
    }
    // Pairs, the capital one even; between 0x139 and 0x148, and behind 0x178, the odd one.
    if ((character >= 0x100 && character < 0x138) || (character >= 0x14A && character < 0x178)) {
        return character | 1U;
    }
    if ((character >= 0x139 && character < 0x149) || (character >= 0x179 && character < 0x17F)) {
        return character + (character & 1U);
    }
    return character;
}

// The number of "STEM-NUMBER"; 1 for the stem alone; 0: it is another.
std::uint64_t number_under(std::string_view name, std::string_view folded_stem) {
    const std::string folded = fold_case(stem_of(name));
    if (folded.size() < folded_stem.size() ||
        folded.compare(0, folded_stem.size(), folded_stem) != 0) {
        return 0;
    }
    if (folded.size() == folded_stem.size()) {
        return 1;
    }
    const char* const first = folded.data() + folded_stem.size();
    const char* const last = folded.data() + folded.size();
    std::uint64_t number = 0;
    if (*first != '-' || last - first > static_cast<std::ptrdiff_t>(longest_count)) {
        return 0;
    }
    const auto [end, error] = std::from_chars(first + 1, last, number);
    return error == std::errc() && end == last && first[1] != '0' && number > 1 ? number : 0;
}

// Not in the middle of a character, unless nothing is left then: a name of an ending only is
// hidden.
std::string_view shortened(std::string_view stem, std::size_t most) {
    if (stem.size() <= most) {
        return stem;
    }
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(stem[end]) & 0xC0) == 0x80) {
        --end;
    }
    return stem.substr(0, end > 0 ? end : most);
}

}  // namespace

std::string_view stem_of(std::string_view name) {
    const std::size_t point = name.rfind('.');
    return point == std::string_view::npos || point == 0 ? name : name.substr(0, point);
}

std::string_view ending_of(std::string_view name) {
    return name.substr(stem_of(name).size());
}

std::string fold_case(std::string_view name) {
    std::string folded(name);
    for (std::size_t at = 0; at < folded.size(); ++at) {
        const auto byte = static_cast<unsigned char>(folded[at]);
        if (byte >= 'A' && byte <= 'Z') {
            folded[at] = static_cast<char>(byte + 0x20);
        } else if (byte >= 0xC3 && byte <= 0xDF && at + 1 < folded.size()) {
            const auto next = static_cast<unsigned char>(folded[at + 1]);
            if ((next & 0xC0) == 0x80) {
                const unsigned int character = fold_character((byte & 0x1FU) << 6 | (next & 0x3FU));
                folded[at] = static_cast<char>(0xC0 | character >> 6);
                folded[at + 1] = static_cast<char>(0x80 | (character & 0x3F));
                ++at;
            }
        }
    }
    return folded;
}

FreeStem free_stem(int folder, std::string_view stem, std::string_view ending,
                   std::uint64_t least) {
    const std::size_t beside = ending.size() + longest_count;
    const std::string_view base =
        shortened(stem, longest_name > beside ? longest_name - beside : 1);
    const std::string folded = fold_case(base);
    std::set<std::uint64_t> taken;
    const int error = list_folder(folder, [&](const char* name) {
        if (const std::uint64_t number = number_under(name, folded)) {
            taken.insert(number);
        }
        return true;
    });
    std::uint64_t number = least;
    while (taken.count(number) > 0) {
        ++number;
    }
    return {std::string(base) + (number == 1 ? "" : "-" + std::to_string(number)), number, error};
}

bool is_taken(int folder, std::string_view name) {
    const std::string folded = fold_case(name);
    bool taken = false;
    list_folder(folder, [&](const char* other) {
        taken = fold_case(other) == folded;
        return !taken;
    });
    return taken;
}

}  // namespace host::pictures
