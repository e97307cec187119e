#include "tether/console/http/access.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/random.h>
#include <system_error>
#include <unistd.h>

namespace console {
namespace {

constexpr unsigned int usual_port = 80;

std::string drawn_token() {
    std::array<unsigned char, 16> bytes{};
    if (getentropy(bytes.data(), bytes.size()) != 0) {
        throw std::system_error(errno, std::generic_category(), "no random numbers");
    }
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

std::string_view value_of(std::string_view cookies, std::string_view name) {
    while (!cookies.empty()) {
        std::string_view one = cookies.substr(0, cookies.find(';'));
        cookies.remove_prefix(std::min(one.size() + 1, cookies.size()));
        one.remove_prefix(std::min(one.find_first_not_of(' '), one.size()));
        if (one.size() > name.size() && one.substr(0, name.size()) == name &&
            one[name.size()] == '=') {
            return one.substr(name.size() + 1);
        }
    }
    return {};
}

// How long it takes must not tell how much of it is right.
bool is_equal(std::string_view given, std::string_view wanted) {
    unsigned int difference = given.size() == wanted.size() ? 0 : 1;
    for (std::size_t at = 0; at < given.size() && at < wanted.size(); ++at) {
        difference |= static_cast<unsigned int>(given[at] ^ wanted[at]);
    }
    return difference == 0;
}

}  // namespace

Access::Access(unsigned int port)
    : token_(drawn_token()),
      once_(drawn_token()),
      host_("127.0.0.1" + (port == usual_port ? "" : ":" + std::to_string(port))),
      origin_("http://" + host_),
      cookie_name_("tether-" + std::to_string(port)) {}

bool Access::knows_the_token(const Head& head) const {
    return is_equal(head.parameter("token"), token_) ||
           is_equal(value_of(head.header("cookie"), cookie_name_), token_) ||
           (is_equal(head.parameter("once"), once_) && !once_used_.exchange(true));
}

std::optional<Refusal> Access::refuses(const Head& head) const {
    // A name that somebody else's server gives this machine leads here, too.
    if (head.header("host") != host_) {
        return Refusal{403, "This is not the server of that name."};
    }
    const bool has_origin = head.headers.count("origin") != 0;
    const bool changes = head.method == "POST";
    if ((changes || has_origin) && head.header("origin") != origin_) {
        return Refusal{403, "Pages from elsewhere may not ask here."};
    }
    // The one way in from another page is a link with the token: the user followed it.
    const std::string_view site = head.header("sec-fetch-site");
    const bool is_followed =
        head.header("sec-fetch-mode") == "navigate" && is_equal(head.parameter("token"), token_);
    if (!site.empty() && site != "same-origin" && site != "none" && !is_followed) {
        return Refusal{403, "Pages from elsewhere may not ask here."};
    }
    if (!knows_the_token(head)) {
        return Refusal{403, "Open the whole address that tether console has printed."};
    }
    const std::string_view type = head.header("content-type");
    if (changes && type != "application/json" && type.substr(0, 17) != "application/json;") {
        return Refusal{415, "A body is application/json."};
    }
    return std::nullopt;
}

}  // namespace console
