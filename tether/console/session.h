// `tether serve`, with any number of pages as its one client: it is spoken to through two pipes, as
// a host would, so that pages get what hosts get.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "host/process/clock.h"
#include "host/process/mutex.h"
#include "host/process/pipe.h"
#include "tether/console/events.h"
#include "tether/console/known_pictures.h"
#include "tether/rpc/json.h"
#include "tether/rpc/request.h"
#include "tether/serve/serve.h"

namespace console {

// Why there is no picture of that id: nobody has one, or the list of them could not be had.
enum class Absence { no_such_picture, not_to_be_known };

class Session {
  public:
    // Both must outlive it.
    Session(Events& events, KnownPictures& pictures);

    // Until the session has been shut down, by a page or by a signal; then its exit status.
    // `begun` is called once, when the session has said something.
    int run(serve::Options options, std::function<void()> begun);

    // From any thread: waits for the answer to a message of a page, whose text it returns. Nothing
    // when none is due.
    std::optional<std::string> ask(std::string_view message);

    // The same for requests of this program itself; the result, or nothing when it failed.
    std::optional<rpc::Json> ask(const std::string& method, rpc::Read parameters);

    // Also one that was told before this program began.
    std::variant<KnownPicture, Absence> picture(const std::string& id);

    // As it was told last; empty before.
    std::string folder();

  private:
    void initialize();
    void read(const host::Descriptor& output);
    void take(std::string line);
    void hear(std::string line, const rpc::Json& message);
    void end();
    bool ends_by(host::TimePoint deadline);
    std::optional<rpc::Json> carry_out(const rpc::Request& request);
    std::optional<std::uint64_t> post(const rpc::Request& request);
    std::optional<rpc::Json> wait_for(std::optional<std::uint64_t> id);
    std::optional<std::string> answered_here(const rpc::Request& request, const rpc::Json& id);

    Events& events_;
    KnownPictures& pictures_;
    std::function<void()> begun_;
    host::Descriptor input_;

    host::Mutex mutex_;
    std::condition_variable answered_;
    std::map<std::uint64_t, std::optional<rpc::Json>> waiting_ HOST_GUARDED_BY(mutex_);  // by id
    std::uint64_t last_id_ HOST_GUARDED_BY(mutex_) = 0;
    std::optional<rpc::Json> initialized_ HOST_GUARDED_BY(mutex_);  // the answer that came last
    std::string folder_ HOST_GUARDED_BY(mutex_);
    bool ended_ HOST_GUARDED_BY(mutex_) = false;

    host::Mutex writing_;
    host::Mutex looking_;  // for a picture: one at a time
};

}  // namespace console
