// Who may ask anything: the browser that was given the address with the token, and only pages that
// came from here.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "tether/console/http/request_head.h"

namespace console {

class Access {
  public:
    // With a token that nobody can guess. Throws when the system has no random numbers.
    explicit Access(unsigned int port);

    // Why it is refused; nothing when it may be carried out.
    std::optional<Refusal> refuses(const Head& head) const;

    // What the user opens.
    std::string address() const {
        return origin_ + "/?token=" + token_;
    }
    // Lets one request in, the first: whoever can see how a browser is started may read it.
    std::string address_for_once() const {
        return origin_ + "/?once=" + once_;
    }
    // What the browser keeps.
    std::string cookie() const {
        return cookie_name_ + "=" + token_ + "; Path=/; HttpOnly; SameSite=Strict";
    }

  private:
    bool knows_the_token(const Head& head) const;

    std::string token_;
    std::string once_;
    mutable std::atomic<bool> once_used_{false};
    std::string host_;
    std::string origin_;
    std::string cookie_name_;  // browsers keep one jar for all ports
};

}  // namespace console
