// Requests that have not been answered yet: each is answered exactly once, whoever comes first and
// whatever thread it comes on.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/process/clock.h"
#include "host/process/mutex.h"
#include "tether/rpc/errors.h"
#include "tether/rpc/json.h"
#include "tether/rpc/writer.h"

namespace rpc {

// The texts of both kinds of answer and of a notification.
std::string result_text(const Json& id, Json result);
std::string error_text(const Json& id, const Error& error);
std::string notification_text(const char* method, Json parameters);

// Every operation may be called from any thread.
class Unanswered {
  public:
    // Counts from 1 on, and is never used twice.
    using Token = std::uint64_t;

    explicit Unanswered(Writer& writer) : writer_(writer) {}

    // Nothing as id: nobody wants the answer.
    Token add(std::optional<Json> id);

    // Answers with `late` unless it has been answered by then.
    void limit(Token token, host::TimePoint deadline, Error late);

    // Nothing happens when it has been answered already.
    void answer(Token token, Json result);
    void fail(Token token, const Error& error);

    // Answers what is late.
    void strike(host::TimePoint now);
    host::TimePoint next_deadline();

    // Answers all that is left but these.
    void fail_all_but(const std::vector<Token>& kept, const Error& error);

    std::size_t count();

  private:
    struct Waiting {
        std::optional<Json> id;
        host::TimePoint deadline = host::TimePoint::max();
        std::optional<Error> late;  // known once there is a deadline
    };

    void settle(Token token, const std::function<std::string(const Json& id)>& text);

    Writer& writer_;
    host::Mutex mutex_;
    std::map<Token, Waiting> waiting_ HOST_GUARDED_BY(mutex_);
    Token last_ HOST_GUARDED_BY(mutex_) = 0;
};

}  // namespace rpc
