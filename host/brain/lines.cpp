// What the worker says, line by line. A line that does not belong to the state is a hint that comes
// to nothing.
#include <array>
#include <cstdlib>

#include "host/brain/brain.h"
#include "host/brain/text.h"

namespace host::brain {
namespace {

// The first "0x" and eight digits of a line.
std::optional<std::uint32_t> code_in(std::string_view text) {
    const std::size_t at = text.find("0x");
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string digits(text.substr(at + 2, 8));
    if (digits.size() != 8 || digits.find_first_not_of("0123456789ABCDEF") != std::string::npos) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(std::strtoul(digits.c_str(), nullptr, 16));
}

}  // namespace

void Brain::obey(const HeldLine& line) {
    struct Row {
        std::string_view key;
        void (Brain::*hear)(std::string_view text);
    };
    static constexpr std::array<Row, 12> rows{{
        {"CPP_WORKER|", &Brain::hear_banner},
        {"READY|", &Brain::hear_ready},
        {"LOG|[SONY] ", &Brain::hear_log},
        {"STATUS|", &Brain::hear_status},
        {"ERROR|", &Brain::hear_error},
        {"CONNECTED|", &Brain::hear_connected},
        {"DISCONNECTED|", &Brain::hear_disconnected},
        {"DOWNLOAD_DIR|", &Brain::hear_download_dir},
        {"SAVE_DEST|", &Brain::hear_save_dest},
        {"FILE_TYPE|", &Brain::hear_file_type},
        {"REMOTE_CAPTURED|", &Brain::hear_captured},
        {"DOWNLOADED|", &Brain::hear_downloaded},
    }};
    if (worker_ == Worker::none) {
        return;
    }
    at_ = line.at;
    if (line.text == "PRIME_DONE|OK") {
        return hear_fence();
    }
    for (const Row& row : rows) {
        if (line.text.starts_with(row.key)) {
            return (this->*row.hear)(std::string_view(line.text).substr(row.key.size()));
        }
    }
}

void Brain::hear_banner(std::string_view text) {
    if (worker_ == Worker::silent && banner_.empty()) {
        banner_ = beginning(text, limit::camera_name);
    }
}

// Why something was not done stands in a log line only.
void Brain::hear_log(std::string_view text) {
    const std::optional<std::uint32_t> code = code_in(text);
    if (!code) {
        return;
    }
    if (text.starts_with("could not set the save destination (")) {
        answered_ = true;
        if (state_ != State::settling || !settling_.type_is_next) {
            refusal_ = code;
        }
        if (destination_is_settled() && probe_.fence == 0) {
            raise({Code::destination_not_taken,
                   "The camera did not take the save destination again.",
                   code,
                   {}});
        }
    } else if (text.starts_with("the camera would not change its file type (")) {
        refusal_ = code;
    } else if (text.starts_with("could not ask for both halves of a RAW pair (")) {
        hear_pair_refused(*code);
    } else if (shot_ && shot_->step >= ShotInHand::Step::firing &&
               (text.starts_with("warning ") || text.starts_with("error ") ||
                text.starts_with("the camera is showing a caution"))) {
        shot_->caution = code;
    }
}

void Brain::hear_status(std::string_view text) {
    // Whatever seemed to happen to the session before this line stood in a camera's name.
    if (state_ == State::opening && text == "Opening camera session") {
        opening_.connected = false;
        opening_.type.reset();
        opening_.failure.reset();
    }
}

void Brain::hear_error(std::string_view text) {
    const std::optional<std::uint32_t> code = code_in(text);
    if (text == "Camera not connected") {
        not_connected_ = true;
    } else if (text.starts_with("Could not set the download folder (")) {
        folder_refused(code);
    } else if (worker_ == Worker::silent && text == "Sony Camera Remote SDK failed to initialise") {
        why_not_starting_ =
            Problem{Code::sdk_not_initialised, "The camera SDK could not be started.", {}, {}};
    } else if (state_ == State::opening) {
        hear_error_while_opening(text, code);
    } else if (text.starts_with("Camera reported ")) {
        Problem problem{Code::camera_error, "The camera reported an error.", code, {}};
        if (shot_ && shot_->step >= ShotInHand::Step::firing) {
            shot_->caution = code;
            problem.shot = shot_->shot.number;
        }
        mention(problem);
    }
}

void Brain::hear_error_while_opening(std::string_view text, std::optional<std::uint32_t> code) {
    if (text == "Camera not detected") {
        opening_.failure = Problem{Code::camera_not_found, "No camera was found.", {}, {}};
    } else if (text.starts_with("Could not open the camera (timeout)")) {
        opening_.failure = Problem{Code::camera_no_answer, "The camera does not answer.", {}, {}};
    } else if (text.starts_with("Could not open the camera (")) {
        opening_.failure = Problem{Code::camera_refused,
                                   "The camera could not be opened; another program may use it.",
                                   code,
                                   {}};
    } else if (text.starts_with("Camera reported ")) {
        opening_.failure = Problem{
            Code::camera_error, "The camera reported an error while it was opened.", code, {}};
    }
    judge_opening();
}

void Brain::hear_fence() {
    if (!fence_.heard(now_)) {
        return;
    }
    if (!prepared_ && fence_.passed(prepare_)) {
        prepared();
    }
    if (state_ == State::opening) {
        judge_opening();
    } else if (state_ == State::settling && settling_.fence != 0 &&
               fence_.passed(settling_.fence)) {
        round_over();
    } else if (state_ == State::closing && fence_.passed(closing_)) {
        closed();
    }
    if (probe_.fence != 0 && fence_.passed(probe_.fence)) {
        probed();
    }
    if (shot_ && shot_->step == ShotInHand::Step::firing && fence_.passed(shot_->fence)) {
        fired();
    }
}

}  // namespace host::brain
