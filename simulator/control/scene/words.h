#pragma once

// One line of the scene language as words: separated by spaces and commas, quoted texts with
// escapes,
// `#` starting a comment. A taker that does not find what it wants notes the first thing that is
// wrong and returns nothing useful; the verb acts only when `finished`. A line that is only checked
// is never finished, and what it needs of the camera is not looked at.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/sdk/lock.h"

namespace camera_sim {

class Words {
  public:
    enum class For { doing, checking };
    explicit Words(std::string_view line, For purpose = For::doing);

    bool left() const {
        return next_ < words_.size();
    }
    bool take(std::string_view bare_word);  // whether it was the next word
    bool next_is_number() const;
    std::string next_text() const;  // empty at the end of the line

    std::string word(const char* what);  // a bare word
    std::string text(const char* what);  // a bare word or a quoted text
    std::optional<std::string> text_or_null(const char* what);
    std::uint64_t number(const char* what);
    std::uint32_t code(const char* what);   // a number of at most 32 bits
    std::uint32_t count(const char* what);  // a number of at most a million
    Duration duration(const char* what);
    std::string rest();  // the line from the next word on, as written

    bool finished();  // nothing is left and nothing was wrong
    For purpose() const {
        return purpose_;
    }
    void wrong(const std::string& sentence);
    const std::string& error() const {
        return error_;
    }

  private:
    struct Word {
        std::string text;
        bool quoted;
        std::size_t begin;
    };
    const Word* next(const char* what);

    std::string line_;
    For purpose_;
    std::vector<Word> words_;
    std::size_t next_ = 0;
    std::string error_;
};

}  // namespace camera_sim
