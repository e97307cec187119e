// Settings of a camera that is busy, changing, or gone.

#include "tests/explore/scenes/all.h"

namespace explore {

namespace {

constexpr std::uint32_t file_type = 0x0106;
constexpr std::uint32_t first_card = 0x0708;
constexpr std::uint32_t second_card = 0x070D;
constexpr std::uint32_t reconnecting = 0x00020002;

}  // namespace

const Scene word_while_session_drops{
    .name = "word_while_session_drops",
    .proves = "A busy camera is asked again only while the session is up.",
    .answer = [](const Asked& asked) -> Answer {
        // Busy for the host's word, not for the settings before it.
        return {.result = asked.call == Call::set_property && asked.times > 2 ? busy : 0U};
    },
    .host =
        [] {
            host::write("CONNECT");
            host::await("SAVE_DEST|both");
            host::write("SET_SAVE_DEST|disk");
            host::write("PRIME");
            host::await("PRIME_DONE|OK");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::await_call(Call::set_property, 4);
            device::warning(reconnecting);
            device::connected();
        },
};

const Scene file_type_while_session_drops{
    .name = "file_type_while_session_drops",
    .proves = "A file type that is asked for while the session drops is reported as it really is.",
    .answer = [](const Asked& asked) -> Answer {
        return {.result =
                    asked.call == Call::set_property && asked.code == file_type && asked.times < 6
                        ? busy
                        : 0U};
    },
    .host =
        [] {
            host::write("CONNECT");
            host::await("FILE_TYPE|jpeg");
            host::write("SET_FILE_TYPE|both");
            host::write("SET_FILE_TYPE|heif");
            host::await_beginning("ERROR|");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::await_call(Call::set_property, 3);
            device::disconnected(0x8208);
        },
    .second =
        [] {
            device::await_call(Call::set_property, 4);
            device::set(file_type, 4);
            device::properties({file_type});
        },
};

const Scene card_pulled_while_applying{
    .name = "card_pulled_while_applying",
    .proves = "A card pulled at any moment ends with the host knowing where the shots go.",
    .arguments = {"", "", "card"},
    .host =
        [] {
            host::write("CONNECT");
            host::await("SAVE_DEST|disk");
            host::await("SAVE_DEST|card");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::set(first_card, 1);
            device::properties({first_card, second_card});
            device::pause(second);
            device::set(first_card, 2);
            device::properties({first_card});
        },
};

const Scene notices_in_a_storm{
    .name = "notices_in_a_storm",
    .proves = "Notices of two threads at once: each is handled once, in the order of the queue.",
    .host =
        [] {
            host::connect();
            host::write("SAVE_DEST|disk");
            host::write("PRIME");
            host::await("PRIME_DONE|OK");
            host::pause(second);
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::set(file_type, 3);
            device::properties({file_type, 0x1234, first_card});
            device::properties({0x1234});
        },
    .second =
        [] {
            device::await_call(Call::set_property, 2);
            device::set(first_card, 1);
            device::properties({second_card, file_type, file_type});
        },
};

const Scene settings_cross_session{
    .name = "settings_cross_session",
    .proves = "Settings written while the session comes up are in force once it is up.",
    .host =
        [] {
            host::write("CONNECT");
            host::write("SET_DOWNLOAD_DIR|/new%7Cfolder");
            host::write("SET_SAVE_DEST|card");
            host::write("SET_FILE_TYPE|raw");
            host::await_anywhere("CONNECTED|MODEL-A");
            host::write("PRIME");
            host::await("PRIME_DONE|OK");
            host::write("QUIT");
        },
    .camera = device::answer_connect,
};

}  // namespace explore
