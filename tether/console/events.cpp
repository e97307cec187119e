#include "tether/console/events.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <utility>

#include "tether/rpc/json.h"

namespace console {

using host::MutexLock;

namespace {

// What is sent in one go.
constexpr std::size_t enough_at_once = std::size_t{1} << 16;
// What an event takes beside its text.
constexpr std::size_t overhead = 96;

constexpr std::string_view missed = R"({"jsonrpc":"2.0","method":"missed","params":{}})";

// Another one in each run, so that numbers of an earlier one mean nothing.
std::string drawn_epoch() {
    return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(
                              std::chrono::system_clock::now().time_since_epoch())
                              .count());
}

// A line that stands behind others that are not remembered.
std::string with_dropped(const std::string& text, std::uint64_t more) {
    rpc::Json message = rpc::Json::parse(text);
    rpc::Json& dropped = message["params"]["dropped"];
    dropped = dropped.get<std::uint64_t>() + more;
    return message.dump();
}

}  // namespace

Events::Events(std::size_t most_bytes) : most_bytes_(most_bytes), epoch_(drawn_epoch()) {}

void Events::tell(std::string text) {
    add(Kind::news, std::move(text));
}

void Events::tell_state(std::string text) {
    {
        const MutexLock lock(mutex_);
        state_ = text;
    }
    add(Kind::news, std::move(text));
}

void Events::tell_line(std::string text) {
    add(Kind::line, std::move(text));
}

void Events::tell_call(std::string text) {
    add(Kind::call, std::move(text));
}

void Events::add(Kind kind, std::string text) {
    {
        const MutexLock lock(mutex_);
        Kept& kept = kind == Kind::news ? news_ : lines_;
        lines_told_ += kind == Kind::line ? 1 : 0;
        kept.bytes += text.size() + overhead;
        kept.events.push_back({++last_, kind, lines_told_, std::move(text)});
        while (kept.bytes > most_bytes_) {
            drop_oldest(kept);
        }
    }
    told_.notify_all();
}

void Events::drop_oldest(Kept& kept) {
    kept.bytes -= kept.events.front().text.size() + overhead;
    kept.lost = kept.events.front().number;
    kept.events.pop_front();
}

void Events::want_lines(bool wanted) {
    const MutexLock lock(mutex_);
    lines_wanted_ = wanted;
}

void Events::end() {
    {
        const MutexLock lock(mutex_);
        ended_ = true;
    }
    told_.notify_all();
}

// With what a reader needs to go on from there.
std::string Events::id(std::uint64_t number, std::uint64_t lines) const {
    return epoch_ + "-" + std::to_string(number) + "-" + std::to_string(lines);
}

std::optional<Events::Reader> Events::read_id(std::string_view text) const {
    Reader reader;
    const std::string epoch = epoch_ + "-";
    if (text.substr(0, epoch.size()) != epoch) {
        return std::nullopt;
    }
    const char* end = text.data() + text.size();
    const auto number = std::from_chars(text.data() + epoch.size(), end, reader.after);
    if (number.ec != std::errc() || number.ptr == end || *number.ptr != '-') {
        return std::nullopt;
    }
    const auto lines = std::from_chars(number.ptr + 1, end, reader.lines);
    if (lines.ec != std::errc() || lines.ptr != end) {
        return std::nullopt;
    }
    return reader;
}

Events::Reader Events::reader(std::string_view after, bool wants_lines) {
    const MutexLock lock(mutex_);
    Reader reader;
    if (after.empty()) {
        reader.after = last_;
        reader.lines = lines_told_;
    } else if (after == "0") {
        reader.begun = true;
    } else if (const auto known = read_id(after); known && known->after <= last_) {
        reader = *known;
        reader.begun = true;
    } else {
        reader.missed = true;
    }
    reader.wants_lines = wants_lines;
    reader.number = ++readers_;
    told_.notify_all();
    return reader;
}

std::optional<std::string> Events::next(Reader& reader, host::TimePoint deadline) {
    const MutexLock lock(mutex_);
    while (readers_ - reader.number < most_readers) {
        std::string text = begin(reader);
        text += collect(reader);
        if (!text.empty()) {
            return text;
        }
        if (ended_) {
            return std::nullopt;
        }
        if (!mutex_.wait_until(told_, deadline)) {
            return ":\n\n";
        }
    }
    return std::nullopt;
}

// What stands before everything else, if anything does.
std::string Events::begin(Reader& reader) {
    std::string text;
    if (reader.missed || news_.lost > reader.after) {
        reader.after = news_.lost;
        reader.lines = 0;
        reader.begun = false;
        reader.missed = false;
        text = "event: missed\ndata: " + std::string(missed) + "\n\n";
    }
    if (!reader.begun && !state_.empty()) {
        reader.begun = true;
        text += "id: " + id(reader.after, reader.lines) + "\ndata: " + state_ + "\n\n";
    }
    return text;
}

// What has come behind the reader, in order.
std::string Events::collect(Reader& reader) {
    const auto behind = [&](const Kept& kept) {
        return std::upper_bound(
            kept.events.begin(), kept.events.end(), reader.after,
            [](std::uint64_t number, const Event& event) { return number < event.number; });
    };
    auto news = behind(news_);
    auto line = behind(lines_);
    std::string text;
    while (text.size() < enough_at_once &&
           (news != news_.events.end() || line != lines_.events.end())) {
        const bool is_news = line == lines_.events.end() ||
                             (news != news_.events.end() && news->number < line->number);
        append(text, is_news ? *news++ : *line++, reader);
    }
    return text;
}

void Events::append(std::string& text, const Event& event, Reader& reader) {
    reader.after = event.number;
    const bool wanted = event.kind == Kind::news || reader.wants_lines ||
                        (event.kind == Kind::line && lines_wanted_);
    if (!wanted) {
        // What nobody asked for is not missed.
        reader.lines = event.lines;
        return;
    }
    text += "id: " + id(event.number, event.lines) + "\ndata: ";
    if (event.kind == Kind::line) {
        const std::uint64_t dropped = event.lines - 1 - std::min(reader.lines, event.lines - 1);
        text += dropped == 0 ? event.text : with_dropped(event.text, dropped);
        reader.lines = event.lines;
    } else {
        text += event.text;
    }
    text += "\n\n";
}

}  // namespace console
