// Addresses and what is answered there. The HTTP library finds the way and writes; of what a
// browser sends it gets only what Connections and Access have let through, written anew.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tether/console/http/connections.h"

namespace console {

// What a handler is asked.
struct Question {
    const Head& head;
    const std::string& body;
    std::vector<std::string> parts;  // of the address, what its pattern has in brackets
};

// What it answers: a text, or a text that is written piece by piece.
struct Answer {
    int status = 200;
    std::string type = "text/plain; charset=utf-8";
    std::string text;
    std::map<std::string, std::string> headers{};
    // The next piece, from `at` on; nothing: that was all. So many bytes in all; 0: nobody knows.
    std::function<std::optional<std::string>(std::size_t at)> pieces{};
    std::size_t bytes = 0;
};

using Handler = std::function<Answer(const Question&)>;

// A sentence for who reads it.
Answer sentence(int status, std::string_view text);

class Site {
  public:
    // Of the limits, those of an answer.
    explicit Site(const Limits& limits);
    ~Site();

    // Before the first request. `pattern` is a regular expression for the whole path.
    void get(const std::string& pattern, Handler handler);
    void post(const std::string& pattern, Handler handler);

    // On any number of threads. False: the connection cannot be used any more.
    bool serve(const Exchange& exchange);

    // The lines that every answer has.
    static std::string headers();

  private:
    class Library;
    const host::Duration write_time_;
    std::unique_ptr<Library> library_;
};

}  // namespace console
