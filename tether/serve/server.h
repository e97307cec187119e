// What a client asks, asked of the camera, and what comes of it, told to the client.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/camera.h"
#include "host/process/clock.h"
#include "host/process/mutex.h"
#include "tether/rpc/messages.h"
#include "tether/rpc/request.h"
#include "tether/rpc/unanswered.h"
#include "tether/rpc/writer.h"
#include "tether/serve/recorder.h"
#include "tether/serve/virtual_camera.h"

namespace serve {

struct Setup {
    host::CameraOptions camera;  // its listener is the server's own
    std::string control;         // where the virtual camera listens; empty: nowhere
    Recorder* recorder = nullptr;
    int output = 1;
    bool lines = false;  // are told from the beginning, as if they had been subscribed
    std::string version;
    // Called from any thread when there is something new about what the operations below say.
    std::function<void()> changed;
};

// The operations are for one thread; the camera, the disk, the virtual camera and the writer call
// back on their own.
class Server {
  public:
    explicit Server(Setup setup);

    void take(const rpc::Message& message);

    // The user wants to stop, or nobody reads any more: in order, and sooner than a shutdown with
    // more patience.
    void end();

    // No more messages come. A client that has asked for the end may wait for it so.
    void end_unless_asked();

    // So much waits to be written or answered that no more may be asked.
    bool is_full();
    bool client_is_gone();

    // The camera has been shut down. From now on requests are refused; finish() comes next.
    bool has_ended();

    // Answers all that has not been answered, shutdown last. Nothing is taken any more.
    void finish();

    bool flush(std::chrono::nanoseconds patience);

    // Answers what the virtual camera has not answered in time.
    void strike();
    host::TimePoint next_deadline();

  private:
    using Token = rpc::Unanswered::Token;
    using Operation = void (Server::*)(Token, const rpc::Read&);

    static Operation operation_of(const std::string& method);
    void carry_out(const rpc::Request& request);
    // Why it is not the time to initialize, or to ask for anything else; nothing when it is.
    const char* out_of_turn(const std::string& method);
    void refuse(const std::optional<rpc::Json>& id, const rpc::Error& error);

    // methods
    void initialize(Token token, const rpc::Read& parameters);
    void connect(Token token, const rpc::Read& parameters);
    void disconnect(Token token, const rpc::Read& parameters);
    void capture(Token token, const rpc::Read& parameters);
    void cancel(Token token, const rpc::Read& parameters);
    void configure(Token token, const rpc::Read& parameters);
    void state(Token token, const rpc::Read& parameters);
    void pictures(Token token, const rpc::Read& parameters);
    void subscribe(Token token, const rpc::Read& parameters);
    void simulate(Token token, const rpc::Read& parameters);
    void shutdown(Token token, const rpc::Read& parameters);

    bool takes_name(Token token, const rpc::Read& parameters);
    void ask(Token token, host::Request request);
    void ask_for_the_end(std::optional<host::Time> patience);
    void initialized(Token token, const host::Answer& answer);
    void list_pictures(Token token, const host::PicturesAnswer& answer);

    // The camera's thread.
    host::Listener listener();
    void tell_line(const host::WireLine& line);

    const std::string worker_;
    const std::string version_;
    Recorder* const recorder_;
    const std::function<void()> changed_;

    enum class Initialization { none, under_way, failed, done };
    std::atomic<Initialization> initialization_{Initialization::none};
    std::atomic<bool> lines_wanted_;
    std::atomic<unsigned int> lists_under_way_{0};  // asked of the disk, which may be stuck
    bool ending_ = false;
    bool told_to_end_ = false;  // by other than a request
    std::vector<Token> ends_;   // requests to shut down

    host::Mutex mutex_;
    host::SessionState state_ HOST_GUARDED_BY(mutex_);  // as it was told last
    std::optional<host::Ended> ended_ HOST_GUARDED_BY(mutex_);

    rpc::Writer writer_;
    rpc::Unanswered unanswered_;
    host::Camera camera_;
    std::unique_ptr<VirtualCamera> virtual_camera_;
};

}  // namespace serve
