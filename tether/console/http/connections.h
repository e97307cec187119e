// The connections of all browsers. One thread holds those that have not asked anything yet, however
// many they are and however slowly they write; a request that has come whole is served on a thread
// of its own.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>

#include "host/process/clock.h"
#include "host/process/mutex.h"
#include "host/process/pipe.h"
#include "tether/console/http/request_head.h"
#include "tether/serve/wake_up.h"

namespace console {

struct Limits {
    // A Mac's process has 256 descriptors, and the camera's files need some.
    std::size_t connections = 128;
    std::size_t served = 64;                                // at the same time
    std::size_t requests = 1000;                            // on one connection
    host::Duration request_time{std::chrono::seconds(10)};  // from the first byte to the last
    host::Duration idle_time{std::chrono::seconds(60)};     // between two requests
    host::Duration write_time{std::chrono::seconds(10)};    // for a piece of an answer
};

// A request and where its answer goes. Of the thread that serves it.
struct Exchange {
    Head head;
    std::string body;
    const host::Descriptor& socket;  // does not block
    bool last = false;               // the connection is closed behind it
};

class Connections {
  public:
    struct Answering {
        // Whether a request is carried out at all, before its body is read. Must not wait.
        std::function<std::optional<Refusal>(const Head&)> refuses;
        // On a thread of its own. False: the connection cannot be used any more.
        std::function<bool(const Exchange&)> serve;
        // The lines of the head that every answer has, each with its line end.
        std::string headers;
    };

    // `listening` is bound, listens and does not block.
    Connections(host::Descriptor listening, Limits limits, Answering answering);
    // Waits for ever, if need be.
    ~Connections();
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    // Breaks off what is not answered soon, and waits until nobody answers any more. False when
    // somebody still does at the deadline.
    bool end(host::TimePoint deadline);

  private:
    struct Connection {
        host::Descriptor socket;
        std::string read;                // of the next request, and what came behind it
        std::optional<Head> head;        // of a request whose body is still to come
        std::size_t length_of_head = 0;  // of that
        std::size_t requests = 0;
        bool refused = false;  // what it still writes is thrown away
        std::size_t thrown_away = 0;
        host::TimePoint deadline;
    };
    using Waiting = std::list<Connection>;

    void work();
    int until_next_deadline() const;
    void accept_all();
    void make_room();
    bool read(Connection& connection);
    bool look_for_request(Connection& connection);
    bool take_head(Connection& connection);
    void refuse(Connection& connection, const Refusal& refusal);
    void serve(Connection connection);
    void serve_here(Connection& connection);
    void take_back();

    const host::Descriptor listening_;
    const Limits limits_;
    const Answering answering_;
    serve::WakeUp wake_up_;
    Waiting waiting_;                             // the thread's, oldest first
    std::optional<host::TimePoint> rests_until_;  // the thread's: nobody is let in before

    host::Mutex mutex_;
    std::condition_variable served_;
    Waiting coming_back_ HOST_GUARDED_BY(mutex_);
    std::set<int> being_served_ HOST_GUARDED_BY(mutex_);  // their sockets
    bool ending_ HOST_GUARDED_BY(mutex_) = false;

    std::thread thread_;  // the constructor and the destructor only
};

}  // namespace console
