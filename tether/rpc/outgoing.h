// What waits to be written to a client, in order, and what becomes of it when the client does not
// read. Takes no lock of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace rpc {

struct OutgoingLimits {
    std::size_t full = std::size_t{1} << 20;      // only answers are taken beyond it
    std::size_t no_lines = std::size_t{1} << 18;  // no notifications of lines beyond it
    std::size_t merge = std::size_t{1} << 16;     // beyond it, a state takes an older one's place
};

// A text is one message, without its line feed.
class Outgoing {
  public:
    explicit Outgoing(const OutgoingLimits& limits = {}) : limits_(limits) {}

    // Never dropped: whoever asks is kept from asking for more while this is full().
    void add_answer(std::string text);

    // Takes the place of one that waits, when much waits: what stands behind that one follows from
    // the newer state all the same.
    void add_state(std::string text);

    // False, and nothing is written, when this is full. `id` is among those that were written once
    // it has been.
    bool add_picture(std::string text, std::string id);
    bool add_news(std::string text);

    // `text` is given the number of lines that were dropped before this one.
    void add_line(const std::function<std::string(std::uint64_t dropped)>& text);

    // What is to be written next, in one go; no bytes: nothing.
    struct Batch {
        std::string bytes;
        std::vector<std::string> pictures;  // by their ids
    };
    Batch take();
    // Until then it counts as waiting.
    void written(const Batch& batch);

    std::size_t bytes() const {
        return bytes_;
    }
    bool is_full() const {
        return bytes_ >= limits_.full;
    }

  private:
    struct Waiting {
        std::string text;  // with its line feed
        std::string picture;
    };

    void add(std::string text, std::string picture);

    const OutgoingLimits limits_;
    std::deque<Waiting> waiting_;
    std::uint64_t taken_ = 0;             // messages, of all times
    std::optional<std::uint64_t> state_;  // the latest one's number, counted the same way
    std::size_t bytes_ = 0;               // with those being written
    std::uint64_t dropped_ = 0;
};

}  // namespace rpc
