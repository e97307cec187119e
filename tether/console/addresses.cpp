#include "tether/console/addresses.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <sys/statvfs.h>
#include <unistd.h>
#include <utility>
#include <variant>

#include "host/camera/uptime.h"
#include "host/values/iso_time.h"
#include "tether/console/disk.h"
#include "tether/console/page_files.h"
#include "tether/rpc/json.h"

namespace console {
namespace {

constexpr const char* json_type = "application/json";
constexpr std::size_t longest_piece = std::size_t{1} << 16;

// So that whoever stands between does not take the stream for dead, and one whose reader is gone is
// found out.
constexpr std::chrono::seconds between_comments{15};

// A preview and a picture never change: their ids are used once.
constexpr const char* for_a_day = "private, max-age=86400";

std::string type_of(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 4> types{{
        {".html", "text/html; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".svg", "image/svg+xml"},
    }};
    for (const auto& [ending, type] : types) {
        if (name.size() > ending.size() && name.substr(name.size() - ending.size()) == ending) {
            return std::string(type);
        }
    }
    return "application/octet-stream";
}

Answer json(const rpc::Json& value) {
    Answer answer;
    answer.type = json_type;
    answer.text = value.dump(-1, ' ', false, rpc::Json::error_handler_t::replace);
    return answer;
}

Answer page_file(std::string_view name) {
    for (const PageFile& file : page_files()) {
        if (file.name == name) {
            Answer answer;
            answer.type = type_of(name);
            answer.text = std::string(file.bytes);
            return answer;
        }
    }
    return sentence(404,
                    page_files().empty()
                        ? "This tether was built without its page: install npm and build again."
                        : "There is nothing at this address.");
}

// Whoever opens the address is let in from then on.
Answer first_page(const Access& access) {
    Answer answer = page_file("index.html");
    answer.headers["Set-Cookie"] = access.cookie();
    return answer;
}

Answer answer_to(Session& session, const std::string& message) {
    const auto text = session.ask(message);
    Answer answer;
    answer.status = text ? 200 : 204;
    answer.type = json_type;
    answer.text = text.value_or("");
    return answer;
}

Answer stream(Events& events, const Head& head) {
    const std::string_view came = head.header("last-event-id");
    const auto reader = std::make_shared<Events::Reader>(events.reader(
        came.empty() ? head.parameter("after") : came, head.parameter("lines") == "1"));
    Answer answer;
    answer.type = "text/event-stream";
    answer.pieces = [&events, reader](std::size_t) {
        return events.next(*reader, host::after(between_comments));
    };
    return answer;
}

Answer clock(host::Time begun) {
    using Milliseconds = std::chrono::duration<double, std::milli>;
    return json({{"atMs", Milliseconds(host::uptime() - begun).count()},
                 {"at", host::iso_time(host::time_of_day())}});
}

Answer stuck_disk() {
    return sentence(503, "The disk does not answer.");
}

Answer space(const std::string& folder) {
    const auto free = std::make_shared<std::optional<std::uint64_t>>();
    const bool answers = done_in_time([free, folder] {
        struct statvfs found {};
        if (statvfs(folder.c_str(), &found) == 0) {
            *free = std::uint64_t{found.f_bavail} * std::uint64_t{found.f_frsize};
        }
    });
    if (!answers) {
        return stuck_disk();
    }
    return *free ? json({{"folder", folder}, {"freeBytes", **free}})
                 : sentence(503, "The folder is not there.");
}

Answer record(const KeptRecord& kept, bool redact) {
    Answer answer;
    answer.headers["Content-Disposition"] = redact ? "attachment; filename=\"record-redacted.txt\""
                                                   : "attachment; filename=\"record.txt\"";
    answer.pieces = kept.pieces(redact);
    return answer;
}

std::string type_of_picture(const std::string& format) {
    return format == "jpeg"   ? "image/jpeg"
           : format == "heif" ? "image/heif"
           : format == "dng"  ? "image/x-adobe-dng"
           : format == "arw"  ? "image/x-sony-arw"
                              : "application/octet-stream";
}

// As a quoted word: an underscore stands for whatever could end it, or is not ASCII.
std::string name_for_download(const std::string& path) {
    std::string name = path.substr(path.rfind('/') + 1);
    std::replace_if(
        name.begin(), name.end(),
        [](char byte) {
            return byte < ' ' || byte > '~' || byte == '"' || byte == '\\' || byte == '%';
        },
        '_');
    return "attachment; filename=\"" + name + "\"";
}

// A file that is open, or why there is none.
std::variant<std::shared_ptr<const OpenFile>, Answer> file_of(
    const std::variant<KnownPicture, Absence>& looked_up) {
    const auto* known = std::get_if<KnownPicture>(&looked_up);
    if (known == nullptr) {
        return std::get<Absence>(looked_up) == Absence::no_such_picture
                   ? sentence(404, "There is no such picture.")
                   : sentence(503, "The pictures cannot be listed now.");
    }
    const auto file = std::make_shared<std::optional<OpenFile>>();
    if (!done_in_time([file, picture = *known] { *file = open_picture(picture); })) {
        return stuck_disk();
    }
    if (!*file) {
        return sentence(410, "The file is not in its place any more.");
    }
    return std::make_shared<const OpenFile>(std::move(**file));
}

// The bytes from `at` on; nothing when they cannot be read.
std::optional<std::string> piece(const std::shared_ptr<const OpenFile>& file, std::size_t at) {
    const auto bytes =
        std::make_shared<std::string>(std::min(longest_piece, file->bytes - at), '\0');
    const bool read = done_in_time([file, at, bytes] {
        const ssize_t count = ::pread(file->descriptor.number(), bytes->data(), bytes->size(),
                                      static_cast<off_t>(at));
        bytes->resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    });
    return read && !bytes->empty() ? std::optional(std::move(*bytes)) : std::nullopt;
}

Answer picture(Session& session, const Question& question) {
    const auto looked_up = session.picture(question.parts.at(0));
    auto found = file_of(looked_up);
    if (auto* none = std::get_if<Answer>(&found)) {
        return std::move(*none);
    }
    const auto& known = std::get<KnownPicture>(looked_up);
    const auto file = std::get<std::shared_ptr<const OpenFile>>(found);
    Answer answer;
    answer.type = type_of_picture(known.format);
    answer.headers["Cache-Control"] = for_a_day;
    if (question.head.parameter("download") == "1") {
        answer.headers["Content-Disposition"] = name_for_download(known.path);
    }
    answer.headers["Accept-Ranges"] = "none";
    answer.bytes = file->bytes;
    if (file->bytes > 0) {
        answer.pieces = [file](std::size_t at) {
            return piece(file, at);
        };
    }
    return answer;
}

Answer preview(Session& session, Previews& previews, const std::string& id) {
    auto found = file_of(session.picture(id));
    if (auto* none = std::get_if<Answer>(&found)) {
        return std::move(*none);
    }
    if (!previews.can_be_made()) {
        return sentence(404, "This tether was built without libjpeg-turbo, so it has no previews.");
    }
    const auto made = previews.of(id, *std::get<std::shared_ptr<const OpenFile>>(found));
    if (!made) {
        return sentence(503, "The preview took too long.");
    }
    if (!*made) {
        return sentence(404, "There is no preview of this picture.");
    }
    Answer answer;
    answer.type = "image/jpeg";
    answer.headers["Cache-Control"] = for_a_day;
    answer.text = **made;
    return answer;
}

}  // namespace

void lay_out(Site& site, const Behind& behind) {
    site.get("/", [behind](const Question&) { return first_page(behind.access); });
    site.get("/rpc", [](const Question&) {
        Answer answer = sentence(405, "Requests are posted here.");
        answer.headers["Allow"] = "POST";
        return answer;
    });
    site.post("/rpc", [behind](const Question& question) {
        return answer_to(behind.session, question.body);
    });
    site.get("/events",
             [behind](const Question& question) { return stream(behind.events, question.head); });
    site.get("/clock", [behind](const Question&) { return clock(behind.begun); });
    site.get("/space", [behind](const Question&) { return space(behind.session.folder()); });
    site.get("/record", [behind](const Question& question) {
        return record(behind.record, question.head.parameter("redacted") == "1");
    });
    const std::string id = "([0-9a-f]{16})";
    site.get("/pictures/" + id,
             [behind](const Question& question) { return picture(behind.session, question); });
    site.get("/pictures/" + id + "/preview", [behind](const Question& question) {
        return preview(behind.session, behind.previews, question.parts.at(0));
    });
    site.get("/([0-9A-Za-z_.-]+)",
             [](const Question& question) { return page_file(question.parts.at(0)); });
    site.post(".*", [](const Question&) {
        Answer answer = sentence(405, "Nothing is posted here.");
        answer.headers["Allow"] = "GET, HEAD";
        return answer;
    });
}

}  // namespace console
