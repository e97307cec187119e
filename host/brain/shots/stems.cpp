#include "host/brain/shots/stems.h"

#include <algorithm>
#include <cstdlib>

#include "host/brain/times.h"

namespace host::brain {
namespace {

constexpr std::string_view digits = "0123456789";
constexpr std::size_t most_digits = 9;

char lower(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

// The digits at the end.
std::string_view number_of(std::string_view stem) {
    return stem.substr(stem.find_last_not_of(digits) + 1);
}

}  // namespace

bool is_newer(std::string_view stem, std::string_view than) {
    const std::string_view one = number_of(stem);
    const std::string_view other = number_of(than);
    if (one.empty() || one.size() != other.size() || one.size() > most_digits) {
        return false;
    }
    if (!same_stem(stem.substr(0, stem.size() - one.size()),
                   than.substr(0, than.size() - other.size()))) {
        return false;
    }
    long range = 1;
    for (std::size_t digit = 0; digit < std::min<std::size_t>(one.size(), 4); ++digit) {
        range *= 10;
    }
    const long ahead =
        (std::atol(std::string(one).c_str()) - std::atol(std::string(other).c_str())) % range;
    const long forward = ahead < 0 ? ahead + range : ahead;
    return forward != 0 && forward < range / 2;
}

bool same_stem(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char left, char right) { return lower(left) == lower(right); });
}

Stem* Stems::partner(std::string_view stem, Kind kind, std::uint64_t session, Time since) {
    if (kind == Kind::other) {
        return nullptr;
    }
    // The latest first: a name may come again when the camera's counter is set back. Of another
    // session the same name is another picture, however late the disk looks at it, and one that was
    // in doubt is remembered late, be it between two halves of this session.
    const auto found = std::find_if(stems_.rbegin(), stems_.rend(), [&](const Stem& known) {
        return known.session == session && same_stem(known.text, stem);
    });
    if (found == stems_.rend() || !found->may_be_pair || found->heard < since) {
        return nullptr;
    }
    const bool other_half =
        kind == Kind::raw ? found->developed && !found->raw : found->raw && !found->developed;
    return other_half ? &*found : nullptr;
}

void Stems::remember(Stem stem) {
    stems_.push_back(std::move(stem));
    if (stems_.size() > limit::stems) {
        stems_.pop_front();
    }
}

}  // namespace host::brain
