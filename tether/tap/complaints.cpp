#include "tether/tap/complaints.h"

#include <utility>

namespace tap {
namespace {

constexpr std::size_t most_of_each = 5;
constexpr std::size_t longest_shown = 200;

std::string shown(tether::RecordLine line) {
    const std::size_t size = line.text.size();
    const bool cut = size > longest_shown;
    line.text.resize(cut ? longest_shown : size);
    line.whole = line.whole || cut;
    return written(line) + (cut ? " ... (" + std::to_string(size) + " bytes)" : "");
}

}  // namespace

void Complaints::add(Fault fault, std::chrono::milliseconds at,
                     std::vector<tether::RecordLine> lines) {
    if (++counts_[static_cast<std::size_t>(fault)] <= most_of_each) {
        kept_.push_back({fault, at, std::move(lines)});
    }
}

std::string Complaints::report() const {
    std::string text;
    for (const Complaint& complaint : kept_) {
        text += "\n" +
                tether::written({complaint.at, '#', std::string(text_of(complaint.fault).what)}) +
                "\n";
        for (const tether::RecordLine& line : complaint.lines) {
            text += "    " + shown(line) + "\n";
        }
        text += "    " + std::string(text_of(complaint.fault).instead) + "\n";
    }
    for (std::size_t index = 0; index < counts_.size(); ++index) {
        if (counts_[index] > most_of_each) {
            text += "\nand " + std::to_string(counts_[index] - most_of_each) +
                    " times more: " + std::string(fault_texts[index].what) + "\n";
        }
    }
    return text;
}

}  // namespace tap
