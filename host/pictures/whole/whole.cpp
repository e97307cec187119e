#include "host/pictures/whole/whole.h"

#include <algorithm>
#include <array>

#include "host/pictures/naming/stems.h"

namespace host::pictures {
namespace {

struct Ending {
    std::string_view text;
    Format format;
};

constexpr std::array<Ending, 7> endings{{
    {".jpg", Format::jpeg},
    {".jpeg", Format::jpeg},
    {".hif", Format::heif},
    {".heif", Format::heif},
    {".heic", Format::heif},
    {".arw", Format::arw},
    {".dng", Format::dng},
}};

// Movies are boxes too.
constexpr std::array<std::string_view, 2> movie_endings{".mp4", ".mov"};

// No camera's comes near it, and all of it is read: more would keep everybody waiting.
constexpr std::uint64_t largest_jpeg = std::uint64_t{512} << 20;

}  // namespace

Format format_of(std::string_view name) {
    const std::string ending = fold_case(ending_of(name));
    const auto* const found = std::find_if(endings.begin(), endings.end(),
                                           [&](const Ending& one) { return one.text == ending; });
    return found == endings.end() ? Format::other : found->format;
}

Kind kind_of(Format format) {
    switch (format) {
        case Format::arw:
        case Format::dng:
            return Kind::raw;
        case Format::jpeg:
        case Format::heif:
            return Kind::developed;
        case Format::other:
            break;
    }
    return Kind::other;
}

std::string why_not_whole(int file, std::uint64_t size, std::string_view name) {
    if (size == 0) {
        return "it is empty";
    }
    Window window(file, size);
    const Format format = format_of(name);
    switch (format) {
        case Format::jpeg:
            return size > largest_jpeg ? "it is too large for a JPEG" : why_not_whole_jpeg(window);
        case Format::arw:
        case Format::dng:
            return why_not_whole_tiff(window);
        case Format::heif:
            return why_not_whole_boxes(window);
        case Format::other:
            break;
    }
    const bool movie =
        std::count(movie_endings.begin(), movie_endings.end(), fold_case(ending_of(name))) > 0;
    return movie ? why_not_whole_boxes(window) : "";
}

}  // namespace host::pictures
