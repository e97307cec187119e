// What each method does with its parameters, which are known to be good.
#include <chrono>
#include <utility>

#include "host/brain/times.h"
#include "host/pictures/store.h"
#include "tether/live/session_words.h"
#include "tether/rpc/text.h"
#include "tether/serve/server.h"
#include "tether/serve/values.h"

namespace serve {

using host::Code;
using host::Problem;
using rpc::Error;
using rpc::Json;
using rpc::Read;

namespace {

// The virtual camera answers at once, or hangs.
constexpr std::chrono::milliseconds at_once{900};

// Each may be a megabyte, and wait for a second.
constexpr unsigned int most_lists = 8;

constexpr std::size_t usual_limit = 100;

// One less than the brain takes: the last one is for a signal.
constexpr std::size_t most_ends = host::brain::limit::requests - 1;

std::optional<host::Time> time_of(const Read& parameters, const char* name) {
    const auto found = parameters.find(name);
    if (found == parameters.end()) {
        return std::nullopt;
    }
    return std::chrono::duration_cast<host::Time>(
        std::chrono::duration<double>(found->get<double>()));
}

std::optional<std::string> text_of(const Read& parameters, const char* name) {
    const auto found = parameters.find(name);
    if (found == parameters.end()) {
        return std::nullopt;
    }
    return found->get<std::string>();
}

Json outcome(const host::SessionState& state) {
    return json(state);
}
Json outcome(const host::Shot& shot) {
    return json(shot);
}
Json outcome(const host::Ended& ended) {
    return json(ended);
}
Json outcome(const host::Done&) {
    return Json::object();
}

void pass_on(rpc::Unanswered& unanswered, rpc::Unanswered::Token token,
             const host::Answer& answer) {
    std::visit(
        [&](const auto& value) {
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, Problem>) {
                unanswered.fail(token, error(value));
            } else {
                unanswered.answer(token, outcome(value));
            }
        },
        answer);
}

Error camera_silent() {
    return error({Code::camera_no_answer, "The virtual camera did not answer.", {}, {}});
}

}  // namespace

void Server::ask(Token token, host::Request request) {
    camera_.ask(std::move(request), [this, token](const host::Answer& answer) {
        pass_on(unanswered_, token, answer);
        changed_();
    });
}

void Server::initialize(Token token, const Read& parameters) {
    if (recorder_ != nullptr) {
        const Read& client = parameters.at("client");
        recorder_->add_client(tether::shown(client.at("name").get<std::string>()),
                              tether::shown(client.at("version").get<std::string>()));
    }
    initialization_ = Initialization::under_way;
    camera_.ask(host::Start{},
                [this, token](const host::Answer& answer) { initialized(token, answer); });
}

// After a problem the client may try again.
void Server::initialized(Token token, const host::Answer& answer) {
    const auto* state = std::get_if<host::SessionState>(&answer);
    initialization_ = state != nullptr ? Initialization::done : Initialization::failed;
    if (state == nullptr) {
        return pass_on(unanswered_, token, answer);
    }
    unanswered_.answer(token, {{"server", {{"name", "tether"}, {"version", version_}}},
                               {"protocol", 1},
                               {"worker",
                                {{"path", rpc::valid_text(worker_)},
                                 {"banner", rpc::valid_text(camera_.banner())},
                                 {"simulated", state->simulated}}}});
}

void Server::connect(Token token, const Read&) {
    ask(token, host::Connect{});
}

void Server::disconnect(Token token, const Read&) {
    ask(token, host::Disconnect{});
}

// False, and the request has failed, when its name is none that files can be given.
bool Server::takes_name(Token token, const Read& parameters) {
    const auto name = text_of(parameters, "name");
    const std::string why = name ? host::pictures::why_no_name(*name) : std::string();
    if (!why.empty()) {
        unanswered_.fail(token,
                         {rpc::code::bad_parameters, "params.name: " + rpc::valid_text(why), {}});
    }
    return why.empty();
}

void Server::capture(Token token, const Read& parameters) {
    if (!takes_name(token, parameters)) {
        return;
    }
    host::Capture request;
    request.patience = time_of(parameters, "patience");
    request.expires = time_of(parameters, "expires");
    request.name = text_of(parameters, "name");
    request.tag = text_of(parameters, "tag").value_or("");
    ask(token, std::move(request));
}

void Server::cancel(Token token, const Read& parameters) {
    ask(token, host::Cancel{text_of(parameters, "tag").value_or("")});
}

void Server::configure(Token token, const Read& parameters) {
    if (!takes_name(token, parameters)) {
        return;
    }
    host::Configure request;
    request.folder = text_of(parameters, "folder");
    request.name = text_of(parameters, "name");
    if (const auto word = text_of(parameters, "saveDestination")) {
        request.save_destination = host::save_destination_of(*word);
    }
    if (const auto word = text_of(parameters, "fileType")) {
        request.file_type = host::file_type_of(*word);
    }
    ask(token, std::move(request));
}

void Server::state(Token token, const Read&) {
    host::SessionState now;
    {
        const host::MutexLock lock(mutex_);
        now = state_;
    }
    unanswered_.answer(token, json(now));
}

void Server::pictures(Token token, const Read& parameters) {
    if (lists_under_way_ >= most_lists) {
        return unanswered_.fail(
            token, error({Code::busy, "Too many lists of pictures are asked for.", {}, {}}));
    }
    ++lists_under_way_;
    const auto limit = parameters.find("limit");
    camera_.pictures(text_of(parameters, "after").value_or(""),
                     limit == parameters.end() ? usual_limit : limit->get<std::size_t>(),
                     [this, token](const host::PicturesAnswer& answer) {
                         --lists_under_way_;
                         list_pictures(token, answer);
                         changed_();
                     });
}

void Server::list_pictures(Token token, const host::PicturesAnswer& answer) {
    if (const auto* problem = std::get_if<Problem>(&answer)) {
        return unanswered_.fail(token, error(*problem));
    }
    Json list = Json::array();
    for (const host::Picture& picture : std::get<std::vector<host::Picture>>(answer)) {
        list.push_back(json(picture));
    }
    unanswered_.answer(token, {{"pictures", std::move(list)}});
}

void Server::subscribe(Token token, const Read& parameters) {
    lines_wanted_ = parameters.at("lines").get<bool>();
    unanswered_.answer(token, Json::object());
}

void Server::simulate(Token token, const Read& parameters) {
    bool simulated = false;
    {
        const host::MutexLock lock(mutex_);
        simulated = state_.simulated;
    }
    if (!simulated) {
        return unanswered_.fail(
            token, {rpc::code::unknown_method, "simulate needs the virtual camera", {}});
    }
    if (!virtual_camera_) {
        return unanswered_.fail(token, camera_silent());
    }
    const host::TimePoint deadline = host::after(at_once);
    unanswered_.limit(token, deadline, camera_silent());
    const bool asked =
        virtual_camera_->tell(text_of(parameters, "line").value_or(""), deadline,
                              [this, token](const std::optional<std::vector<std::string>>& lines) {
                                  if (!lines) {
                                      return unanswered_.fail(token, camera_silent());
                                  }
                                  Json list = Json::array();
                                  for (const std::string& line : *lines) {
                                      list.push_back(rpc::valid_text(line));
                                  }
                                  unanswered_.answer(token, {{"lines", std::move(list)}});
                              });
    if (!asked) {
        unanswered_.fail(
            token, error({Code::busy, "Too many lines wait for the virtual camera.", {}, {}}));
    }
}

void Server::shutdown(Token token, const Read& parameters) {
    if (ends_.size() >= most_ends) {
        return unanswered_.fail(token,
                                error({Code::busy, "Too many requests are waiting.", {}, {}}));
    }
    ends_.push_back(token);
    ask_for_the_end(time_of(parameters, "patience"));
}

// One that comes later may only make the end come sooner.
void Server::ask_for_the_end(std::optional<host::Time> patience) {
    ending_ = true;
    camera_.ask(host::Shutdown{patience}, [this](const host::Answer& answer) {
        const auto* ended = std::get_if<host::Ended>(&answer);
        if (ended == nullptr) {
            return;
        }
        {
            const host::MutexLock lock(mutex_);
            ended_ = *ended;
        }
        changed_();
    });
}

// On the thread that takes requests, so that none can come in between.
void Server::finish() {
    std::optional<host::Ended> ended;
    {
        const host::MutexLock lock(mutex_);
        ended = ended_;
    }
    unanswered_.fail_all_but(ends_, error({Code::cancelled, "The session has ended.", {}, {}}));
    for (const Token token : ends_) {
        unanswered_.answer(token, json(ended.value_or(host::Ended{})));
    }
}

}  // namespace serve
