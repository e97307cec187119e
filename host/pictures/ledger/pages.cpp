#include "host/pictures/ledger/pages.h"

#include <algorithm>
#include <map>
#include <utility>

namespace host::pictures {
namespace {

// Pictures from a ledger's lines, as long as some are wanted.
class Page {
  public:
    Page(const Ledger& ledger, std::size_t limit) : ledger_(ledger), limit_(limit) {}

    // False, and nothing is here, when a picture was announced before that place.
    bool read_from(std::uint64_t begin) {
        bool announced = true;
        read(begin, "", [&] {
            announced = begin == 0;
            return announced;
        });
        if (!announced) {
            pictures.clear();
        }
        return announced;
    }

    // The whole ledger.
    void read_behind(const std::string& id) {
        read(0, id, [] { return true; });
    }

    std::vector<Picture> pictures;
    std::uint64_t end = 0;  // of the last one's line

  private:
    template <typename OnUnknown>
    void read(std::uint64_t begin, const std::string& behind, const OnUnknown& on_unknown) {
        std::map<std::string, Picture> placing;
        bool reached = behind.empty();
        ledger_.read_from(begin, [&](const LedgerEntry& entry, std::uint64_t line_end) {
            if (const auto* const line = std::get_if<Placing>(&entry)) {
                placing.insert_or_assign(line->picture.id, line->picture);
            } else if (const auto* const dropped = std::get_if<Dropped>(&entry)) {
                placing.erase(dropped->id);
            } else if (const auto* const placed = std::get_if<PlacedAs>(&entry)) {
                auto picture = placing.extract(placed->id);
                if (!picture && !on_unknown()) {
                    return false;
                }
                if (picture && reached) {
                    pictures.push_back(std::move(picture.mapped()));
                    end = line_end;
                }
                reached = reached || placed->id == behind;
            }
            return pictures.size() < limit_;
        });
    }

    const Ledger& ledger_;
    const std::size_t limit_;
};

}  // namespace

std::vector<Picture> Pages::behind(const std::string& id, const Ledger& ledger, std::size_t limit) {
    Page page(ledger, limit);
    // A picture whose placing was cut short may have been announced long before it was placed.
    if (!page.read_from(end_of(id, ledger))) {
        page.read_behind(id);
    }
    if (!page.pictures.empty()) {
        remember(page.pictures.back().id, page.end);
    }
    return std::move(page.pictures);
}

// 0 when it was not placed here. What is remembered is looked up all the same: the ledger is a file
// that others can write to.
std::uint64_t Pages::end_of(const std::string& id, const Ledger& ledger) {
    if (!read_id(id)) {
        return 0;
    }
    const PlacedAs placed{id};
    const auto mark =
        std::find_if(marks_.begin(), marks_.end(), [&](const Mark& one) { return one.id == id; });
    if (mark != marks_.end() && ledger.has_before(mark->end, placed)) {
        return mark->end;
    }
    const std::uint64_t end = ledger.end_of(placed).value_or(0);
    remember(id, end);
    return end;
}

void Pages::remember(const std::string& id, std::uint64_t end) {
    marks_.erase(
        std::remove_if(marks_.begin(), marks_.end(), [&](const Mark& one) { return one.id == id; }),
        marks_.end());
    marks_.push_front({id, end});
    if (marks_.size() > most) {
        marks_.pop_back();
    }
}

}  // namespace host::pictures
