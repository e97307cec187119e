#include "tether/serve/server.h"

#include <chrono>
#include <utility>

#include "tether/rpc/parameters.h"
#include "tether/rpc/text.h"
#include "tether/serve/methods.h"
#include "tether/serve/values.h"

namespace serve {

using host::MutexLock;
using rpc::Error;
using rpc::Json;

namespace {

// More than the brain lets wait of all kinds together: it refuses the rest at once.
constexpr std::size_t most_unanswered = 320;

}  // namespace

Server::Server(Setup setup)
    : worker_(setup.camera.worker),
      version_(std::move(setup.version)),
      recorder_(setup.recorder),
      changed_(std::move(setup.changed)),
      lines_wanted_(setup.lines),
      writer_(setup.output, {[this](const std::string& id) { camera_.told(id); },
                             [this] {
                                 changed_();
                             }}),
      unanswered_(writer_),
      camera_([this, &setup] {
          setup.camera.listener = listener();
          const MutexLock lock(mutex_);
          state_.folder = setup.camera.wishes.folder;
          state_.save_destination.asked = setup.camera.wishes.save_destination;
          state_.file_type.asked = setup.camera.wishes.file_type;
          return std::move(setup.camera);
      }()) {
    if (!setup.control.empty()) {
        virtual_camera_ = std::make_unique<VirtualCamera>(setup.control);
    }
}

host::Listener Server::listener() {
    host::Listener listener;
    listener.state = [this](const host::SessionState& now) {
        {
            const MutexLock lock(mutex_);
            state_ = now;
        }
        writer_.state(rpc::notification_text(notification::state, json(now)));
    };
    // Known only once it is written: told() says so then.
    listener.picture = [this](const host::Picture& picture) {
        writer_.picture(rpc::notification_text(notification::picture, json(picture)), picture.id);
        return false;
    };
    listener.shot = [this](const host::Shot& shot) {
        writer_.news(rpc::notification_text(notification::shot, json(shot)));
    };
    listener.problem = [this](const host::Problem& problem) {
        writer_.news(rpc::notification_text(notification::problem, json(problem)));
    };
    listener.line = [this](const host::WireLine& line) {
        tell_line(line);
    };
    return listener;
}

void Server::tell_line(const host::WireLine& line) {
    if (recorder_ != nullptr) {
        recorder_->add(line);
    }
    if (lines_wanted_ && line.direction != host::WireLine::Direction::error) {
        writer_.line([&line](std::uint64_t dropped) {
            return rpc::notification_text(notification::line, json(line, dropped));
        });
    }
}

void Server::refuse(const std::optional<Json>& id, const Error& error) {
    if (id) {
        writer_.answer(rpc::error_text(*id, error));
    }
}

void Server::take(const rpc::Message& message) {
    if (message.too_long) {
        const std::string most = std::to_string(rpc::longest_message);
        refuse(Json(), {rpc::code::bad_json, "A message has at most " + most + " bytes", {}});
        return;
    }
    const auto read = rpc::read_request(message.text);
    if (const auto* refusal = std::get_if<rpc::Refusal>(&read)) {
        refuse(refusal->id, refusal->error);
    } else {
        carry_out(std::get<rpc::Request>(read));
    }
}

Server::Operation Server::operation_of(const std::string& method) {
    static const std::pair<std::string_view, Operation> operations[] = {
        {"initialize", &Server::initialize}, {"connect", &Server::connect},
        {"disconnect", &Server::disconnect}, {"capture", &Server::capture},
        {"cancel", &Server::cancel},         {"configure", &Server::configure},
        {"state", &Server::state},           {"pictures", &Server::pictures},
        {"subscribe", &Server::subscribe},   {"simulate", &Server::simulate},
        {"shutdown", &Server::shutdown},
    };
    for (const auto& [name, operation] : operations) {
        if (name == method) {
            return operation;
        }
    }
    return nullptr;
}

void Server::carry_out(const rpc::Request& request) {
    const rpc::Method* method = rpc::find_method(methods(), request.method);
    const Operation operation = operation_of(request.method);
    if (method == nullptr || operation == nullptr) {
        return refuse(request.id, {rpc::code::unknown_method,
                                   "There is no such method; docs/serve.md has those there are",
                                   {}});
    }
    if (const char* why = out_of_turn(request.method)) {
        return refuse(request.id, {rpc::code::invalid_request, why, {}});
    }
    if (const auto wrong = rpc::wrong_with(*method, request.parameters)) {
        return refuse(request.id, {rpc::code::bad_parameters, *wrong, {}});
    }
    (this->*operation)(unanswered_.add(request.id), request.parameters);
}

// The standard has no code of its own for a request out of turn: it is an invalid one.
const char* Server::out_of_turn(const std::string& method) {
    const bool is_initialize = method == "initialize";
    const bool is_shutdown = method == "shutdown";
    if (has_ended() && !is_shutdown) {
        return "The session has ended";
    }
    switch (const Initialization so_far = initialization_; so_far) {
        case Initialization::none:
            return is_initialize ? nullptr : "initialize comes first";
        case Initialization::failed:
            // It may have left a worker that is still being tried.
            return is_initialize || is_shutdown ? nullptr
                                                : "initialize comes first, and has failed";
        case Initialization::under_way:
        case Initialization::done:
            break;
    }
    return is_initialize ? "initialize comes once" : nullptr;
}

void Server::end() {
    if (!std::exchange(told_to_end_, true)) {
        ask_for_the_end({});
    }
}

void Server::end_unless_asked() {
    if (!ending_) {
        end();
    }
}

bool Server::is_full() {
    return writer_.is_full() || unanswered_.count() >= most_unanswered;
}

bool Server::client_is_gone() {
    return writer_.client_is_gone();
}

bool Server::has_ended() {
    const MutexLock lock(mutex_);
    return ended_.has_value();
}

bool Server::flush(std::chrono::nanoseconds patience) {
    return writer_.flush(patience);
}

void Server::strike() {
    unanswered_.strike(host::Clock::now());
}

host::TimePoint Server::next_deadline() {
    return unanswered_.next_deadline();
}

}  // namespace serve
