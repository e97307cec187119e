// What the doctor has to say about one thing.
#pragma once

#include <string>
#include <utility>

namespace doctor {

enum class Verdict { ok, warning, failure };

struct Finding {
    Verdict verdict;
    std::string text;
    std::string advice;  // what to do about it; may have several lines
};

inline Finding ok(std::string text) {
    return {Verdict::ok, std::move(text), {}};
}

inline Finding warning(std::string text, std::string advice) {
    return {Verdict::warning, std::move(text), std::move(advice)};
}

inline Finding failure(std::string text, std::string advice) {
    return {Verdict::failure, std::move(text), std::move(advice)};
}

}  // namespace doctor
