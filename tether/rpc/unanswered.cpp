#include "tether/rpc/unanswered.h"

#include <algorithm>
#include <utility>

namespace rpc {

using host::MutexLock;
using host::TimePoint;

namespace {

// Texts are made valid where they come in; should one have been forgotten, a mark stands for it and
// nothing is thrown.
std::string line_of(const Json& message) {
    return message.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string result_text(const Json& id, Json result) {
    return line_of({{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}});
}

std::string error_text(const Json& id, const Error& error) {
    Json told{{"code", error.code}, {"message", error.message}};
    if (!error.data.is_null()) {
        told["data"] = error.data;
    }
    return line_of({{"jsonrpc", "2.0"}, {"id", id}, {"error", std::move(told)}});
}

std::string notification_text(const char* method, Json parameters) {
    return line_of({{"jsonrpc", "2.0"}, {"method", method}, {"params", std::move(parameters)}});
}

Unanswered::Token Unanswered::add(std::optional<Json> id) {
    const MutexLock lock(mutex_);
    waiting_[++last_].id = std::move(id);
    return last_;
}

void Unanswered::limit(Token token, TimePoint deadline, Error late) {
    const MutexLock lock(mutex_);
    if (const auto found = waiting_.find(token); found != waiting_.end()) {
        found->second.deadline = deadline;
        found->second.late = std::move(late);
    }
}

// Written before anybody else can see that it is answered: who finds all answered may write the
// last answer.
void Unanswered::settle(Token token, const std::function<std::string(const Json& id)>& text) {
    const MutexLock lock(mutex_);
    const auto request = waiting_.extract(token);
    if (request && request.mapped().id) {
        writer_.answer(text(*request.mapped().id));
    }
}

void Unanswered::answer(Token token, Json result) {
    settle(token, [&result](const Json& id) { return result_text(id, std::move(result)); });
}

void Unanswered::fail(Token token, const Error& error) {
    settle(token, [&error](const Json& id) { return error_text(id, error); });
}

void Unanswered::strike(TimePoint now) {
    std::vector<std::pair<Token, Error>> late;
    {
        const MutexLock lock(mutex_);
        for (const auto& [token, request] : waiting_) {
            if (request.late && request.deadline <= now) {
                late.emplace_back(token, *request.late);
            }
        }
    }
    for (const auto& [token, error] : late) {
        fail(token, error);
    }
}

TimePoint Unanswered::next_deadline() {
    const MutexLock lock(mutex_);
    TimePoint next = TimePoint::max();
    for (const auto& [token, request] : waiting_) {
        next = std::min(next, request.deadline);
    }
    return next;
}

void Unanswered::fail_all_but(const std::vector<Token>& kept, const Error& error) {
    std::vector<Token> all;
    {
        const MutexLock lock(mutex_);
        for (const auto& [token, request] : waiting_) {
            if (std::find(kept.begin(), kept.end(), token) == kept.end()) {
                all.push_back(token);
            }
        }
    }
    for (const Token token : all) {
        fail(token, error);
    }
}

std::size_t Unanswered::count() {
    const MutexLock lock(mutex_);
    return waiting_.size();
}

}  // namespace rpc
