#include "tether/console/http/site.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <exception>
#include <httplib.h>
#include <optional>
#include <utility>

namespace console {
namespace {

constexpr std::pair<const char*, const char*> of_every_answer[] = {
    {"Cache-Control", "no-store"},
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
};

// The library sees nothing else of a request: it decodes percent signs in headers, believes several
// that others invent, unpacks and cuts bodies as headers tell it, and puts no limit to much of
// that.
std::string written_anew(const Exchange& exchange) {
    std::string text = exchange.head.method + " " + exchange.head.target + " HTTP/1.1\r\n";
    if (exchange.head.method == "POST") {
        text += "Content-Type: application/json\r\nContent-Length: " +
                std::to_string(exchange.body.size()) + "\r\n";
    }
    return text + "\r\n" + exchange.body;
}

// A request that has come whole, and the socket for its answer. None of these operations says that
// it overrides: which there are differs from one version of the library to the next.
class WholeRequest : public httplib::Stream {
  public:
    WholeRequest(std::string text, const Exchange& exchange, host::Duration write_time)
        : text_(std::move(text)), exchange_(exchange), write_time_(write_time) {}

    bool is_readable() const {
        return read_ < text_.size();
    }
    bool wait_readable() const {
        return is_readable();
    }
    bool is_writable() const {
        return !broken_;
    }
    bool wait_writable() const {
        return !broken_;
    }
    ssize_t read(char* bytes, std::size_t size) {
        const std::size_t count = std::min(size, text_.size() - read_);
        std::memcpy(bytes, text_.data() + read_, count);
        read_ += count;
        return static_cast<ssize_t>(count);
    }
    ssize_t write(const char* bytes, std::size_t size) {
        broken_ =
            broken_ || !host::write_all(exchange_.socket, {bytes, size}, host::after(write_time_));
        return broken_ ? -1 : static_cast<ssize_t>(size);
    }
    void get_remote_ip_and_port(std::string&, int&) const {}
    void get_local_ip_and_port(std::string&, int&) const {}
    // It would want to wait on it.
    socket_t socket() const {
        return INVALID_SOCKET;
    }
    time_t duration() const {
        return 0;
    }

    bool is_broken() const {
        return broken_;
    }

  private:
    const std::string text_;
    const Exchange& exchange_;
    const host::Duration write_time_;
    std::size_t read_ = 0;
    bool broken_ = false;
};

// The one that this thread serves: the library has no place for what it does not know.
thread_local const Exchange* t_exchange = nullptr;

void set_pieces(httplib::Response& response, const Answer& answer) {
    const auto pieces = answer.pieces;
    if (answer.bytes > 0) {
        response.set_content_provider(
            answer.bytes, answer.type,
            [pieces](std::size_t at, std::size_t, httplib::DataSink& sink) {
                // One that ends early is broken off, so that the browser notices.
                const auto piece = pieces(at);
                return piece && sink.write(piece->data(), piece->size());
            });
        return;
    }
    response.set_chunked_content_provider(answer.type,
                                          [pieces](std::size_t at, httplib::DataSink& sink) {
                                              const auto piece = pieces(at);
                                              if (!piece) {
                                                  sink.done();
                                                  return true;
                                              }
                                              return sink.write(piece->data(), piece->size());
                                          });
}

void set(httplib::Response& response, const Answer& answer) {
    response.status = answer.status;
    for (const auto& [name, value] : answer.headers) {
        response.headers.erase(name);
        response.set_header(name, value);
    }
    if (answer.pieces) {
        return set_pieces(response, answer);
    }
    if (!answer.text.empty()) {
        response.set_content(answer.text, answer.type);
    }
}

httplib::Server::Handler through(Handler handler) {
    return [handler = std::move(handler)](const httplib::Request& request,
                                          httplib::Response& response) {
        Question question{t_exchange->head, t_exchange->body, {}};
        for (std::size_t at = 1; at < request.matches.size(); ++at) {
            question.parts.push_back(request.matches[at]);
        }
        set(response, handler(question));
    };
}

}  // namespace

Answer sentence(int status, std::string_view text) {
    Answer answer;
    answer.status = status;
    answer.text = std::string(text) + "\n";
    return answer;
}

// The library's own connections, threads and time-outs are not used: see Connections.
class Site::Library : public httplib::Server {
  public:
    explicit Library(const Limits& limits) {
        // It takes no listening socket for the sign that it is to stop.
        svr_sock_ = 0;
        set_payload_max_length(longest_body);
        // Only told to the browser.
        set_keep_alive_timeout(
            std::chrono::duration_cast<std::chrono::seconds>(limits.idle_time).count());
        set_keep_alive_max_count(limits.requests);
        httplib::Headers headers;
        for (const auto& [name, value] : of_every_answer) {
            headers.emplace(name, value);
        }
        set_default_headers(std::move(headers));
        set_exception_handler([](const auto&, auto& response, auto&&...) {
            set(response, sentence(500, "Something went wrong here."));
        });
        set_error_handler([](const httplib::Request&, httplib::Response& response) {
            if (response.body.empty() && response.status == 404) {
                response.set_content("There is nothing at this address.\n",
                                     "text/plain; charset=utf-8");
            }
        });
    }

    bool serve(WholeRequest& request, bool last) {
        bool closed = false;
        return process(*this, request, last, closed) && !closed && !request.is_broken();
    }

  private:
    // What it takes differs from one version to the next.
    template <typename Self>
    static bool process(Self& self, WholeRequest& request, bool last, bool& closed) {
        if constexpr (requires { self.process_request(request, last, closed, nullptr); }) {
            return self.process_request(request, last, closed, nullptr);
        } else {
            return self.process_request(request, std::string(), 0, std::string(), 0, last, closed,
                                        nullptr);
        }
    }
};

Site::Site(const Limits& limits)
    : write_time_(limits.write_time), library_(std::make_unique<Library>(limits)) {}
Site::~Site() = default;

void Site::get(const std::string& pattern, Handler handler) {
    library_->Get(pattern, through(std::move(handler)));
}

void Site::post(const std::string& pattern, Handler handler) {
    library_->Post(pattern, through(std::move(handler)));
}

bool Site::serve(const Exchange& exchange) {
    t_exchange = &exchange;
    WholeRequest request(written_anew(exchange), exchange, write_time_);
    try {
        return library_->serve(request, exchange.last);
    } catch (const std::exception&) {
        return false;
    }
}

std::string Site::headers() {
    std::string text;
    for (const auto& [name, value] : of_every_answer) {
        text += std::string(name) + ": " + value + "\r\n";
    }
    return text;
}

}  // namespace console
