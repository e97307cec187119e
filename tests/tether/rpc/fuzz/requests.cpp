// Any bytes as what a client writes: cut into messages, read, held against the table of methods,
// and answered.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/worker/fuzz/require.h"
#include "tether/rpc/messages.h"
#include "tether/rpc/parameters.h"
#include "tether/rpc/request.h"
#include "tether/rpc/text.h"
#include "tether/rpc/unanswered.h"
#include "tether/serve/methods.h"

namespace {

std::vector<std::string> messages_of(std::string_view bytes, std::size_t at_once) {
    rpc::Messages messages;
    std::vector<std::string> texts;
    const auto take_all = [&] {
        while (const auto message = messages.next()) {
            require(!message->too_long, "no short message is too long");
            texts.push_back(message->text);
        }
    };
    for (std::size_t at = 0; at < bytes.size(); at += at_once) {
        messages.add(bytes.substr(at, at_once));
        take_all();
    }
    messages.finish();
    take_all();
    return texts;
}

std::string joined(const std::vector<std::string>& messages) {
    std::string bytes;
    for (const std::string& message : messages) {
        bytes += message + '\n';
    }
    return bytes;
}

// Strict, unlike what writes answers: a mark in the place of bytes would be a name that is lost.
void is_one_line_of_json(const rpc::Json& value) {
    const std::string text = value.dump();
    require(text.find('\n') == std::string::npos, "an answer is one line");
    require(rpc::Read::accept(text), "an answer is JSON");
}

void answer(std::string_view message) {
    const auto read = rpc::read_request(message);
    if (const auto* refusal = std::get_if<rpc::Refusal>(&read)) {
        const int code = refusal->error.code;
        require(code == -32700 || code == -32600 || code == -32602, "a code of the standard");
        is_one_line_of_json(refusal->error.message);
        require(rpc::Read::accept(message) || code == -32700 ||
                    refusal->error.message.find("deep") != std::string::npos,
                "what is not JSON is a parse error");
        return;
    }
    const auto& request = std::get<rpc::Request>(read);
    require(request.parameters.is_object(), "parameters are by name");
    if (request.id) {
        is_one_line_of_json(*request.id);
        require(rpc::Read::accept(rpc::result_text(*request.id, rpc::Json::object())),
                "every id can be answered");
    }
    // Whatever the method is, its parameters may be meant for any.
    for (const rpc::Method& method : serve::methods()) {
        if (const auto wrong = rpc::wrong_with(method, request.parameters)) {
            require(wrong->substr(0, 7) == "params.", "what is wrong is named");
            require(wrong->size() < 300, "a sentence is short, whatever a client calls things");
            is_one_line_of_json(*wrong);
        }
    }
}

std::string without_percent_signs(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%') {
            bytes += static_cast<char>(std::stoi(std::string(text.substr(at + 1, 2)), nullptr, 16));
            at += 2;
        } else {
            bytes += text[at];
        }
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> messages = messages_of(bytes, std::max<std::size_t>(size, 1));
    require(messages == messages_of(bytes, 1 + size % 7), "how the bytes come changes nothing");
    require(joined(messages) == (bytes.empty() || bytes.back() == '\n' ? bytes : bytes + '\n'),
            "the messages are the bytes");
    for (const std::string& message : messages) {
        answer(message);
    }

    const std::string shown = rpc::valid_text(bytes);
    is_one_line_of_json(shown);
    require(shown == bytes || without_percent_signs(shown) == bytes, "a shown name leads back");
    return 0;
}
