// Everything that is said between a host and its worker, and what it means.
// Written by catalogue/generate: change catalogue/protocol.json.
#pragma once

#include <array>
#include <string_view>

namespace explain {

struct CommandText {
    std::string_view name;
    std::string_view meant;  // the name that it is a synonym of; its own
    std::string_view does;
    std::string_view answered;
};

inline constexpr std::array<CommandText, 22> command_texts{{
    {"CONNECT", "CONNECT",
     "finds a camera, a USB one first, and opens it; `word` replaces the save destination",
     "`STATUS|…`, then `CONNECTED|…` or `ERROR|…`; within about 20 s of \"Opening camera "
     "session\""},
    {"DISCONNECT", "DISCONNECT", "closes the session, gives the camera back",
     "`DISCONNECTED|`, always"},
    {"SET_DOWNLOAD_DIR", "SET_DOWNLOAD_DIR",
     "names the folder for downloads; `%7C`, `%25`, `%0A`, `%0D` stand for `|`, `%`, LF, CR",
     "`DOWNLOAD_DIR|folder`, then `ERROR|…` if the SDK refuses it"},
    {"SET_SAVE_DEST", "SET_SAVE_DEST",
     "`disk`: the computer, `card`: the memory card, anything else: both",
     "in a session: `SAVE_DEST|…`, if the camera takes it; without one: nothing before the next "
     "connection"},
    {"SET_SAVE_DESTINATION", "SET_SAVE_DEST",
     "`disk`: the computer, `card`: the memory card, anything else: both",
     "in a session: `SAVE_DEST|…`, if the camera takes it; without one: nothing before the next "
     "connection"},
    {"SAVE_DEST", "SET_SAVE_DEST",
     "`disk`: the computer, `card`: the memory card, anything else: both",
     "in a session: `SAVE_DEST|…`, if the camera takes it; without one: nothing before the next "
     "connection"},
    {"SET_FILE_TYPE", "SET_FILE_TYPE", "sets the camera's file type",
     "`FILE_TYPE|…`, what the camera really uses, 600 ms or more after it accepts, at once when "
     "it refuses"},
    {"CAPTURE", "CAPTURE", "half-press, 700 ms, release for 35 ms",
     "`REMOTE_CAPTURED|OK`: the sequence was sent, not that there is a picture"},
    {"REMOTE_CAPTURE", "CAPTURE", "half-press, 700 ms, release for 35 ms",
     "`REMOTE_CAPTURED|OK`: the sequence was sent, not that there is a picture"},
    {"CAPTURE_NONAF", "CAPTURE", "half-press, 700 ms, release for 35 ms",
     "`REMOTE_CAPTURED|OK`: the sequence was sent, not that there is a picture"},
    {"REMOTE_CAPTURE_NONAF", "CAPTURE", "half-press, 700 ms, release for 35 ms",
     "`REMOTE_CAPTURED|OK`: the sequence was sent, not that there is a picture"},
    {"PRELOAD", "PRELOAD", "nothing", "`PRELOADED|OK`"},
    {"PRIME", "PRIME", "nothing: when it is answered, every command before it is done",
     "`PRIME_DONE|OK`"},
    {"PUMP_ACTIVE", "PUMP_ACTIVE", "nothing", "`PUMP_ACTIVE_READY|OK`"},
    {"PUMP_IDLE", "PUMP_IDLE", "nothing", "`PUMP_IDLE_READY|OK`"},
    {"PUMP_PAUSE", "PUMP_IDLE", "nothing", "`PUMP_IDLE_READY|OK`"},
    {"PUMP_STOP", "PUMP_IDLE", "nothing", "`PUMP_IDLE_READY|OK`"},
    {"QUIT", "QUIT", "closes the session, leaves", "nothing; status 0 within 3 s"},
    {"__APPLY_SETTINGS", "__APPLY_SETTINGS",
     "sets the folder and the save destination of a session that has just come up, and reports the "
     "file type",
     "as a connection does; nothing without a session"},
    {"__CARD_CHECK", "__CARD_CHECK",
     "checks whether a memory card went in or came out, and then sets the destination again",
     "nothing, or as `SET_SAVE_DEST`"},
    {"__FILETYPE_CHECK", "__FILETYPE_CHECK", "checks whether the camera's file type has changed",
     "nothing, or `FILE_TYPE|…`"},
    {"__CONNECT_TIMEOUT", "__CONNECT_TIMEOUT",
     "gives back the handle of an opening that was not answered in time, unless a newer one has "
     "begun",
     "nothing"},
}};

struct LineText {
    std::string_view text;  // what is filled in stands in braces
    std::string_view when;
    std::string_view means;    // any line that begins so
    std::string_view problem;  // that it tells of; empty: none
};

inline constexpr std::array<LineText, 54> line_texts{{
    {"CPP_WORKER|START sony-1.0", "at the start, before anything else", "the first line", ""},
    {"READY|OK", "the SDK is up",
     "the SDK is up, commands are read. If it cannot be started, `ERROR|Sony Camera Remote SDK "
     "failed to initialise` comes instead, and the worker exits with status 1",
     ""},
    {"LOG|[SONY] USB transport adapters found: {adapters}", "at the start",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] USB transport adapters are MISSING from {adapters} — the SDK will not see any "
     "camera (0x8703)",
     "at the start, when the bundle is not whole",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] Camera Remote SDK {number}.{number}.{number}", "the SDK is up; its version",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] camera \"{model}\" over {connection}",
     "for each camera that the SDK lists, while looking",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] enumeration failed ({code}){hint}",
     "the SDK could not look for cameras, with another code than the last time",
     "a diagnostic, free text; a file name with a line break in it splits the line",
     "camera-not-found"},
    {"LOG|[SONY] session up (connection version {number})", "the camera has answered",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] no answer to Connect in 20 s — giving the handle back",
     "the camera has not answered",
     "a diagnostic, free text; a file name with a line break in it splits the line",
     "camera-no-answer"},
    {"LOG|[SONY] camera went away ({code})", "the session was lost, with the SDK's reason",
     "a diagnostic, free text; a file name with a line break in it splits the line", "camera-lost"},
    {"LOG|[SONY] camera went away (the SDK is trying to reconnect)",
     "the session was lost, and the SDK may bring it back",
     "a diagnostic, free text; a file name with a line break in it splits the line", "camera-lost"},
    {"LOG|[SONY] the camera is showing a caution on its own screen (0x0002008C)",
     "the SDK warned of it",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] warning {code}", "the SDK warned of something else",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] error {code}", "the SDK reported an error",
     "a diagnostic, free text; a file name with a line break in it splits the line",
     "camera-error"},
    {"LOG|[SONY] no download folder yet — shots stay on the camera",
     "a session came up before a folder was named",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] could not take PC Remote priority ({code})",
     "before a destination is set, which is tried all the same",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] could not set the save destination ({code}) — the camera keeps its own setting",
     "the camera refused, or was busy for more than 2 s; no `SAVE_DEST` follows",
     "a diagnostic, free text; a file name with a line break in it splits the line",
     "destination-not-taken"},
    {"LOG|[SONY] save destination: {destination}", "the camera took it",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] no memory card in the camera — saving to the computer only (the setting is "
     "\"{destination}\"; it returns when a card goes in)",
     "the camera took `disk` instead",
     "a diagnostic, free text; a file name with a line break in it splits the line",
     "card-missing"},
    {"LOG|[SONY] a memory card went in", "the camera reported it",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] the memory card came out", "the camera reported it",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] file type asked of the camera: {word}",
     "the camera accepted the change; whether it made it, `FILE_TYPE` says",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] the camera would not change its file type ({code})",
     "the camera refused, or was busy for more than 2 s",
     "a diagnostic, free text; a file name with a line break in it splits the line",
     "file-type-not-taken"},
    {"LOG|[SONY] RAW+JPEG at the camera — both files come to the computer",
     "the file type is a pair",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] RAW+HEIF at the camera — both files come to the computer",
     "the file type is a pair that `FILE_TYPE` calls other",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] could not ask for both halves of a RAW pair ({code}) — the camera sends its own "
     "choice",
     "the file type is a pair, and the camera refused to send both",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] landed {name}", "a file has arrived; the name is not escaped",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"LOG|[SONY] signal {number} — closing the camera session before exit",
     "SIGHUP, SIGINT or SIGTERM came",
     "a diagnostic, free text; a file name with a line break in it splits the line", ""},
    {"STATUS|Looking for a camera", "`CONNECT` has begun", "progress, for people", ""},
    {"STATUS|Opening camera session", "a camera was found", "progress, for people", ""},
    {"STATUS|No memory card in the camera — saving to the computer only",
     "the destination that was asked for needs a card", "progress, for people", "card-missing"},
    {"ERROR|Sony Camera Remote SDK failed to initialise", "the worker leaves with status 1",
     "a failure, for people", "sdk-not-initialised"},
    {"ERROR|Camera not detected", "`CONNECT` found no camera", "a failure, for people",
     "camera-not-found"},
    {"ERROR|Could not open the camera ({code})",
     "the SDK refused at once; another program may have the camera", "a failure, for people",
     "camera-refused"},
    {"ERROR|Could not open the camera (timeout) — replug the camera",
     "the camera did not answer in 20 s", "a failure, for people", "camera-no-answer"},
    {"ERROR|Camera reported {code}", "the SDK reported an error, during an opening or later",
     "a failure, for people", "camera-error"},
    {"ERROR|Could not set the download folder ({code})", "the SDK refused the folder",
     "a failure, for people", "folder-not-taken"},
    {"ERROR|Camera not connected", "`CAPTURE` or `SET_FILE_TYPE` without a session",
     "a failure, for people", "not-connected"},
    {"ERROR|Unknown file type: {word}",
     "`SET_FILE_TYPE` with another word than `jpeg`, `raw`, `both`", "a failure, for people", ""},
    {"ERROR|The camera would not change its file type — set it on the camera",
     "the camera refused, or was busy for more than 2 s", "a failure, for people",
     "file-type-not-taken"},
    {"ERROR|Unknown command: {line}", "no command has this name", "a failure, for people", ""},
    {"CONNECTED|{model}", "the camera has answered, or came back",
     "the session is up. `CONNECTED|already`: nothing was opened (a `word` counts from the next "
     "connection or card change on), because a session is up or opening, or a lost camera was not "
     "given up with `DISCONNECT`",
     ""},
    {"CONNECTED|already", "`CONNECT` while the camera's handle is taken",
     "the session is up. `CONNECTED|already`: nothing was opened (a `word` counts from the next "
     "connection or card change on), because a session is up or opening, or a lost camera was not "
     "given up with `DISCONNECT`",
     ""},
    {"DISCONNECTED|", "`DISCONNECT` is done, or the session was lost",
     "the session is closed, or the camera went away", "camera-lost"},
    {"DOWNLOAD_DIR|{folder}", "`SET_DOWNLOAD_DIR` is done", "the folder now in force", ""},
    {"SAVE_DEST|{destination}", "the camera took the destination",
     "the destination now in force; `disk` while the card that was asked for is missing", ""},
    {"SAVE_DEST|disk", "the camera took `disk`, because no card is in",
     "the destination now in force; `disk` while the card that was asked for is missing", ""},
    {"FILE_TYPE|{fileType}", "after a connection, a command or a turn of the dial",
     "the camera's file type, after each connection, each `SET_FILE_TYPE` and each change at the "
     "camera",
     ""},
    {"REMOTE_CAPTURED|OK", "`CAPTURE` is done", "the shutter sequence was sent", ""},
    {"DOWNLOADED|{path}", "a file has arrived whole", "a file is on the computer", ""},
    {"PRELOADED|OK", "`PRELOAD` is done", "`PRELOAD` was read", ""},
    {"PRIME_DONE|OK", "`PRIME` is done", "all commands before `PRIME` are done", ""},
    {"PUMP_ACTIVE_READY|OK", "`PUMP_ACTIVE` is done", "`PUMP_ACTIVE` was read", ""},
    {"PUMP_IDLE_READY|OK", "`PUMP_IDLE`, `PUMP_PAUSE` or `PUMP_STOP` is done",
     "`PUMP_IDLE` was read", ""},
}};

}  // namespace explain
