#include "tether/rpc/outgoing.h"

#include <utility>

namespace rpc {
namespace {

// Much in one go saves system calls, little lets go of memory soon.
constexpr std::size_t at_once = std::size_t{1} << 16;

}  // namespace

void Outgoing::add(std::string text, std::string picture) {
    text += '\n';
    bytes_ += text.size();
    waiting_.push_back({std::move(text), std::move(picture)});
}

void Outgoing::add_answer(std::string text) {
    add(std::move(text), {});
}

void Outgoing::add_state(std::string text) {
    if (bytes_ >= limits_.merge && state_ && *state_ >= taken_) {
        Waiting& older = waiting_[static_cast<std::size_t>(*state_ - taken_)];
        text += '\n';
        bytes_ += text.size();
        bytes_ -= older.text.size();
        older.text = std::move(text);
        return;
    }
    state_ = taken_ + waiting_.size();
    add(std::move(text), {});
}

bool Outgoing::add_picture(std::string text, std::string id) {
    if (is_full()) {
        return false;
    }
    add(std::move(text), std::move(id));
    return true;
}

bool Outgoing::add_news(std::string text) {
    return add_picture(std::move(text), {});
}

void Outgoing::add_line(const std::function<std::string(std::uint64_t dropped)>& text) {
    if (bytes_ >= limits_.no_lines) {
        ++dropped_;
        return;
    }
    add(text(std::exchange(dropped_, 0)), {});
}

Outgoing::Batch Outgoing::take() {
    Batch batch;
    while (!waiting_.empty() && batch.bytes.size() < at_once) {
        Waiting& first = waiting_.front();
        batch.bytes += first.text;
        if (!first.picture.empty()) {
            batch.pictures.push_back(std::move(first.picture));
        }
        waiting_.pop_front();
        ++taken_;
    }
    return batch;
}

void Outgoing::written(const Batch& batch) {
    bytes_ -= batch.bytes.size();
}

}  // namespace rpc
