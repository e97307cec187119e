#include "host/pictures/ledger/entry.h"

#include <charconv>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <type_traits>

#include "host/values/utf8.h"

namespace host::pictures {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t id_digits = 16;

// The fields of a line, each of its own type or missing.
class Fields {
  public:
    explicit Fields(const Json& line) : line_(line) {}

    std::string text(const char* name) const {
        const auto found = line_.find(name);
        return found != line_.end() && found->is_string()
                   ? unescape_bytes(found->get_ref<const std::string&>())
                   : "";
    }
    std::optional<std::uint64_t> number(const char* name) const {
        const auto found = line_.find(name);
        return found != line_.end() && found->is_number_unsigned()
                   ? std::optional(found->get<std::uint64_t>())
                   : std::nullopt;
    }
    bool yes(const char* name) const {
        const auto found = line_.find(name);
        return found != line_.end() && found->is_boolean() && found->get<bool>();
    }

  private:
    const Json& line_;
};

template <typename Word>
Word of_word(std::string_view text, Word last) {
    for (int value = 0; value < static_cast<int>(last); ++value) {
        if (word(static_cast<Word>(value)) == text) {
            return static_cast<Word>(value);
        }
    }
    return last;
}

Json json_of(const Placing& placing) {
    const Picture& picture = placing.picture;
    Json line{{"placing", escape_bytes(picture.id)},
              {"run", escape_bytes(placing.run)},
              {"from", escape_bytes(placing.from)},
              {"device", placing.file.identity.device},
              {"inode", placing.file.identity.inode},
              {"bytes", placing.file.bytes},
              {"changed", static_cast<std::uint64_t>(placing.file.changed)},
              {"to", escape_bytes(picture.path)},
              {"reserves", placing.reserves}};
    if (placing.reserves) {
        line["written"] = static_cast<std::uint64_t>(placing.written);
    }
    if (picture.shot) {
        line["shot"] = *picture.shot;
    }
    if (placing.number > 0) {
        line["n"] = placing.number;
    }
    if (picture.after) {
        line["afterMs"] = static_cast<std::uint64_t>(picture.after->count());
    }
    line["tag"] = escape_bytes(picture.tag);
    line["pair"] = escape_bytes(picture.pair);
    line["kind"] = word(picture.kind);
    line["format"] = word(picture.format);
    line["cameraName"] = escape_bytes(picture.camera_name);
    line["whole"] = picture.whole;
    line["at"] = escape_bytes(picture.at);
    line["recovered"] = picture.recovered;
    return line;
}

// A path that leads out of the folder was not written here.
bool stays_below(const std::string& path) {
    const std::string slashed = "/" + path + "/";
    return !path.empty() && path.find('\0') == std::string::npos &&
           slashed.find("//") == std::string::npos && slashed.find("/../") == std::string::npos &&
           slashed.find("/./") == std::string::npos;
}

std::optional<LedgerEntry> placing_of(const Fields& fields) {
    Placing placing;
    Picture& picture = placing.picture;
    picture.id = fields.text("placing");
    picture.path = fields.text("to");
    placing.run = fields.text("run");
    placing.from = fields.text("from");
    const auto is_name = [](const std::string& name) {
        return stays_below(name) && name.find('/') == std::string::npos;
    };
    if (!read_id(picture.id) || !stays_below(picture.path) || !is_name(placing.run) ||
        !is_name(placing.from)) {
        return std::nullopt;
    }
    placing.file.identity = {fields.number("device").value_or(0),
                             fields.number("inode").value_or(0)};
    placing.file.bytes = fields.number("bytes").value_or(0);
    placing.file.changed = static_cast<std::int64_t>(fields.number("changed").value_or(0));
    placing.reserves = fields.yes("reserves");
    placing.written = static_cast<std::int64_t>(fields.number("written").value_or(0));
    placing.number = fields.number("n").value_or(0);
    picture.shot = fields.number("shot");
    if (const auto after = fields.number("afterMs")) {
        picture.after = std::chrono::milliseconds(static_cast<std::int64_t>(*after));
    }
    picture.tag = fields.text("tag");
    picture.pair = fields.text("pair");
    picture.kind = of_word(fields.text("kind"), Kind::other);
    picture.format = of_word(fields.text("format"), Format::other);
    picture.camera_name = fields.text("cameraName");
    picture.bytes = placing.file.bytes;
    picture.whole = fields.yes("whole");
    picture.at = fields.text("at");
    picture.recovered = fields.yes("recovered");
    return placing;
}

}  // namespace

std::string write_entry(const LedgerEntry& entry) {
    const Json line = std::visit(
        [](const auto& one) -> Json {
            using Entry = std::decay_t<decltype(one)>;
            if constexpr (std::is_same_v<Entry, Placing>) {
                return json_of(one);
            } else if constexpr (std::is_same_v<Entry, PlacedAs>) {
                return {{"placed", escape_bytes(one.id)}};
            } else if constexpr (std::is_same_v<Entry, ToldOf>) {
                return {{"told", escape_bytes(one.id)}};
            } else if constexpr (std::is_same_v<Entry, Dropped>) {
                return {{"dropped", escape_bytes(one.id)}};
            } else {
                return {{"left", escape_bytes(one.name)}, {"run", escape_bytes(one.run)}};
            }
        },
        entry);
    return line.dump() + "\n";
}

std::optional<LedgerEntry> read_entry(std::string_view line) {
    const Json json = Json::parse(line, nullptr, false);
    if (!json.is_object()) {
        return std::nullopt;
    }
    const Fields fields(json);
    if (json.contains("placing")) {
        return placing_of(fields);
    }
    if (json.contains("left")) {
        return LeftThere{fields.text("run"), fields.text("left")};
    }
    const auto known = [&](const char* name) {
        return read_id(fields.text(name)).has_value();
    };
    if (known("placed")) {
        return PlacedAs{fields.text("placed")};
    }
    if (known("told")) {
        return ToldOf{fields.text("told")};
    }
    if (known("dropped")) {
        return Dropped{fields.text("dropped")};
    }
    return std::nullopt;
}

std::string write_id(std::uint64_t number) {
    char text[id_digits + 1];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(number));
    return text;
}

std::optional<std::uint64_t> read_id(std::string_view id) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(id.data(), id.data() + id.size(), number, 16);
    if (id.size() != id_digits || error != std::errc() || end != id.data() + id.size() ||
        write_id(number) != id) {
        return std::nullopt;
    }
    return number;
}

}  // namespace host::pictures
