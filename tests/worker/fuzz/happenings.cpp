#include "tests/worker/fuzz/happenings.h"

#include <cstddef>

namespace {

// What follows a name stands in for a number, a text or nothing: # and $ are drawn.
constexpr const char* scene_lines[] = {"card in",
                                       "card out",
                                       "card full",
                                       "dial jpeg",
                                       "dial raw",
                                       "dial both",
                                       "dial heif",
                                       "dial #",
                                       "shutter",
                                       "counter 9999",
                                       "unplug",
                                       "unplug reconnecting",
                                       "plug",
                                       "flap 2",
                                       "sleep",
                                       "wake",
                                       "busy 900ms",
                                       "busy 30s",
                                       "set # #",
                                       "unreadable #",
                                       "readable #",
                                       "connected #",
                                       "disconnected #",
                                       "warning #",
                                       "caution",
                                       "error #",
                                       "properties # #",
                                       "properties none",
                                       "properties null #",
                                       "deliver $ 0xFFFFFFFF",
                                       "deliver $ #",
                                       "deliver null 0xFFFFFFFF",
                                       "storm 20 # #",
                                       "answer normal",
                                       "answer held",
                                       "answer never",
                                       "answer before return",
                                       "answer error #",
                                       "answer disconnected #",
                                       "answer now",
                                       "no camera",
                                       "camera missing",
                                       "camera $ over USB",
                                       "camera $ over $, card out",
                                       "camera null over null",
                                       "camera \"MODEL-A\" over USB",
                                       "no focus",
                                       "buffer 1",
                                       "clear faults",
                                       "during Release deliver $ 0xFFFFFFFF",
                                       "during Release storm 20 #",
                                       "during Release connected #",
                                       "during Release second disconnected #",
                                       "next EnumCameraObjects answers #",
                                       "next EnumCameraObjects answers # with list",
                                       "next EnumCameraObjects gives null",
                                       "next EnumCameraObjects gives nothing",
                                       "next EnumCameraObjects gives 40",
                                       "next Connect answers #",
                                       "next Disconnect answers #",
                                       "next ReleaseDevice answers #",
                                       "next SetSaveInfo answers #",
                                       "next SendCommand answers #",
                                       "next 3 SetDeviceProperty answers 0x8402",
                                       "every SetDeviceProperty answers #",
                                       "next SetDeviceProperty # answers #",
                                       "next 2 GetSelectDeviceProperties answers #",
                                       "next GetSelectDeviceProperties answers # with array",
                                       "next 2 GetSelectDeviceProperties gives null",
                                       "next GetSelectDeviceProperties gives nothing",
                                       "next GetSelectDeviceProperties gives unreadable",
                                       "every GetSelectDeviceProperties # gives #",
                                       "next file truncated",
                                       "next file missing",
                                       "next file twice",
                                       "next file absolute",
                                       "next file named $",
                                       "next file named null",
                                       "next file number #",
                                       "every pair reversed",
                                       "every pair half"};

constexpr const char* host_lines[] = {"CONNECT\n",
                                      "CONNECT|card\n",
                                      "DISCONNECT\n",
                                      "SET_DOWNLOAD_DIR|$\n",
                                      "SET_DOWNLOAD_DIR|\n",
                                      "SET_SAVE_DEST|disk\n",
                                      "SET_SAVE_DEST|card\n",
                                      "SET_SAVE_DEST|both\n",
                                      "CAPTURE\n",
                                      "SET_FILE_TYPE|jpeg\n",
                                      "SET_FILE_TYPE|raw\n",
                                      "SET_FILE_TYPE|both\n",
                                      "PRIME\n",
                                      "__CARD_CHECK\n",
                                      "__FILETYPE_CHECK\n",
                                      "__APPLY_SETTINGS\n",
                                      "__CONNECT_TIMEOUT|1\n"};

std::string quoted(const std::string& text) {
    constexpr const char* digits = "0123456789ABCDEF";
    std::string word = "\"";
    for (const char byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        word += {'\\', 'x', digits[value >> 4], digits[value & 15]};
    }
    return word + '"';
}

}  // namespace

std::string scene_line(Bytes& bytes) {
    std::string line = bytes.number(3) == 3 ? "second " : "";
    for (const char* form = bytes.one_of(scene_lines); *form != '\0'; ++form) {
        if (*form == '#') {
            line += std::to_string(bytes.code());
        } else if (*form == '$') {
            line += quoted(bytes.text(16));
        } else {
            line += *form;
        }
    }
    return line;
}

std::string host_bytes(Bytes& bytes, const std::string& named_folder) {
    if (bytes.number(7) == 7) {
        return bytes.text(60) + "\n";
    }
    const std::string line = bytes.one_of(host_lines);
    const std::size_t folder = line.find('$');
    return folder == std::string::npos ? line : line.substr(0, folder) + named_folder + "\n";
}
