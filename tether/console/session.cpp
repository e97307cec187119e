#include "tether/console/session.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

#include "tether/rpc/parameters.h"
#include "tether/rpc/unanswered.h"
#include "tether/serve/methods.h"
#include "tether/serve/values.h"

namespace console {

using host::MutexLock;
using rpc::Json;

namespace {

// A folder that is in use may be free then, and a worker that was missing be there.
constexpr std::chrono::seconds before_the_next_try{1};

// Pictures of the ledger.
constexpr unsigned int pictures_on_a_page = 1000;

std::string text_of(const Json& message) {
    return message.dump(-1, ' ', false, Json::error_handler_t::replace);
}

rpc::Error the_end() {
    return serve::error({host::Code::cancelled, "The session has ended.", {}, {}});
}

host::Pipe made_pipe() {
    auto pipe = host::make_pipe();
    if (!pipe) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    return std::move(*pipe);
}

}  // namespace

Session::Session(Events& events, KnownPictures& pictures) : events_(events), pictures_(pictures) {}

int Session::run(serve::Options options, std::function<void()> begun) {
    host::Pipe input = made_pipe();
    host::Pipe output = made_pipe();
    begun_ = std::move(begun);
    input_ = std::move(input.write_end);
    options.input = input.read_end.number();
    options.output = output.write_end.number();
    options.lines = true;  // the worker's first ones too: they say why it cannot start
    std::thread reading([this, &output] { read(output.read_end); });
    std::thread initializing([this] { initialize(); });
    const int status = serve::carry_out(std::move(options));
    output.write_end.close();
    reading.join();
    initializing.join();
    return status;
}

// Again and again, until there is somebody who answers.
void Session::initialize() {
    const rpc::Read client{{"client", {{"name", "tether console"}, {"version", TETHER_VERSION}}}};
    do {
        const auto id = post({Json(0), "initialize", client});
        auto answer = wait_for(id);
        if (!answer) {
            return;
        }
        const bool done = answer->contains("result");
        {
            const MutexLock lock(mutex_);
            initialized_ = std::move(*answer);
        }
        answered_.notify_all();
        if (done) {
            return;
        }
    } while (!ends_by(host::after(before_the_next_try)));
}

bool Session::ends_by(host::TimePoint deadline) {
    const MutexLock lock(mutex_);
    while (!ended_ && mutex_.wait_until(answered_, deadline)) {}
    return ended_;
}

void Session::read(const host::Descriptor& output) {
    std::string rest;
    std::array<char, 65536> bytes;
    while (true) {
        const ssize_t count = ::read(output.number(), bytes.data(), bytes.size());
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return end();
        }
        const std::size_t searched = rest.size();
        rest.append(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        std::size_t begin = 0;
        for (std::size_t line_end = rest.find('\n', searched); line_end != std::string::npos;
             line_end = rest.find('\n', begin)) {
            take(rest.substr(begin, line_end - begin));
            begin = line_end + 1;
        }
        rest.erase(0, begin);
    }
}

void Session::take(std::string line) {
    Json message = Json::parse(line, nullptr, false);
    if (message.contains("method")) {
        return hear(std::move(line), message);
    }
    {
        const MutexLock lock(mutex_);
        const auto id = message.find("id");
        const auto request = id != message.end() && id->is_number_unsigned()
                                 ? waiting_.find(id->get<std::uint64_t>())
                                 : waiting_.end();
        if (request != waiting_.end()) {
            request->second = std::move(message);
        }
    }
    answered_.notify_all();
}

void Session::hear(std::string line, const Json& message) {
    const Json& parameters = message["params"];
    if (message["method"] == serve::notification::line) {
        events_.tell_line(std::move(line));
    } else if (message["method"] == serve::notification::state) {
        {
            const MutexLock lock(mutex_);
            folder_ = parameters["folder"].get<std::string>();
        }
        events_.tell_state(std::move(line));
        if (begun_) {
            std::exchange(begun_, nullptr)();
        }
    } else {
        if (message["method"] == serve::notification::picture) {
            pictures_.add(parameters);
        }
        events_.tell(std::move(line));
    }
}

void Session::end() {
    {
        const MutexLock lock(mutex_);
        ended_ = true;
    }
    answered_.notify_all();
    events_.end();
}

std::optional<std::string> Session::ask(std::string_view message) {
    const auto read = rpc::read_request(message);
    if (const auto* refusal = std::get_if<rpc::Refusal>(&read)) {
        return refusal->id ? std::optional(rpc::error_text(*refusal->id, refusal->error))
                           : std::nullopt;
    }
    const auto& request = std::get<rpc::Request>(read);
    const Json id = request.id.value_or(Json());
    std::optional<std::string> text = answered_here(request, id);
    if (!text) {
        auto answer = carry_out(request);
        if (answer) {
            (*answer)["id"] = id;
        }
        text = answer ? text_of(*answer) : rpc::error_text(id, the_end());
    }
    return request.id ? text : std::nullopt;
}

// What every page may ask, though the session is asked it only once.
std::optional<std::string> Session::answered_here(const rpc::Request& request, const Json& id) {
    const rpc::Method* method = rpc::find_method(serve::methods(), request.method);
    const bool subscribes = request.method == "subscribe";
    if (method == nullptr || (!subscribes && request.method != "initialize")) {
        return std::nullopt;
    }
    if (const auto wrong = rpc::wrong_with(*method, request.parameters)) {
        return rpc::error_text(id, {rpc::code::bad_parameters, *wrong, {}});
    }
    if (subscribes) {
        events_.want_lines(request.parameters.at("lines").get<bool>());
        return rpc::result_text(id, Json::object());
    }
    Json answer;
    {
        const MutexLock lock(mutex_);
        while (!initialized_ && !ended_) {
            mutex_.wait(answered_);
        }
        if (!initialized_) {
            return std::nullopt;
        }
        answer = *initialized_;
    }
    answer["id"] = id;
    return text_of(answer);
}

std::optional<Json> Session::ask(const std::string& method, rpc::Read parameters) {
    const auto answer = carry_out({Json(0), method, std::move(parameters)});
    if (!answer || !answer->contains("result")) {
        return std::nullopt;
    }
    return answer->at("result");
}

// Nothing: nobody answers any more, or nobody asked for an answer.
std::optional<Json> Session::carry_out(const rpc::Request& request) {
    auto answer = wait_for(post(request));
    if (answer && request.method == "pictures" && answer->contains("result")) {
        for (const Json& picture : answer->at("result").at("pictures")) {
            pictures_.add(picture);
        }
    }
    return answer;
}

// The number under which it will be answered; nothing when it will not be.
std::optional<std::uint64_t> Session::post(const rpc::Request& request) {
    std::optional<std::uint64_t> id;
    Json message{{"jsonrpc", "2.0"}};
    {
        const MutexLock lock(mutex_);
        if (ended_) {
            return std::nullopt;
        }
        if (request.id) {
            id = ++last_id_;
            waiting_.emplace(*id, std::nullopt);
            message["id"] = *id;
        }
    }
    message["method"] = request.method;
    message["params"] = request.parameters;
    const MutexLock lock(writing_);
    host::write_all(input_, text_of(message) + "\n", host::TimePoint::max());
    return id;
}

std::optional<Json> Session::wait_for(std::optional<std::uint64_t> id) {
    const MutexLock lock(mutex_);
    if (!id) {
        return std::nullopt;
    }
    while (!waiting_[*id] && !ended_) {
        mutex_.wait(answered_);
    }
    return std::move(waiting_.extract(*id).mapped());
}

std::variant<KnownPicture, Absence> Session::picture(const std::string& id) {
    if (auto known = pictures_.find(id)) {
        return *std::move(known);
    }
    const MutexLock lock(looking_);
    std::string after;
    while (true) {
        const auto page = ask("pictures", {{"after", after}, {"limit", pictures_on_a_page}});
        if (!page) {
            return Absence::not_to_be_known;
        }
        if (page->at("pictures").empty()) {
            return Absence::no_such_picture;
        }
        for (const Json& one : page->at("pictures")) {
            if (one.at("id") == id) {
                return KnownPicture{one.at("path").get<std::string>(),
                                    one.at("format").get<std::string>()};
            }
        }
        after = page->at("pictures").back().at("id").get<std::string>();
    }
}

std::string Session::folder() {
    const MutexLock lock(mutex_);
    return folder_;
}

}  // namespace console
