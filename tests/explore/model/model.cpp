#include "tests/explore/model/model.h"

#include <algorithm>

#include "tests/explore/objects.h"

namespace explore::model {

namespace {

constexpr std::uint32_t impossible = 0;
constexpr std::size_t most_nodes = 400'000;

template <typename Bytes>
std::uint64_t hash_of(const Bytes& bytes) {
    static_assert(sizeof bytes % 8 == 0);
    std::uint64_t words[sizeof bytes / 8];
    std::memcpy(words, static_cast<const void*>(&bytes), sizeof bytes);
    std::uint64_t hash = 0;
    for (const std::uint64_t word : words) {
        hash = mix(hash, word);
    }
    return hash;
}

std::uint64_t hash_of_event(const Event& event) {
    std::uint64_t hash = mix(static_cast<std::uint64_t>(event.time), event.text);
    hash = mix(hash, event.number);
    hash = mix(hash, event.value);
    return mix(hash, static_cast<std::uint64_t>(event.kind) << 16 |
                         static_cast<std::uint64_t>(event.which) << 8 | event.who);
}

}  // namespace

Model::Model(const std::vector<const char*>& arguments) {
    State start;
    start.word = keep(arguments.size() >= 3 ? arguments[2] : "both");
    start.folder = keep(!arguments.empty() ? arguments[0] : "");
    start.card_present = card_unknown;
    start.reported_file_type = ~std::uint64_t{0};
    nodes_.emplace_back();  // impossible
    node_for({start});
}

std::uint32_t Model::node_for(Frontier frontier) {
    if (frontier.empty()) {
        return impossible;
    }
    std::uint64_t hash = 0;
    for (const State& state : frontier) {
        hash += hash_of(state);
    }
    const auto [place, fresh] = known_.try_emplace(hash, static_cast<std::uint32_t>(nodes_.size()));
    if (fresh) {
        nodes_.push_back(std::move(frontier));
    }
    return place->second;
}

std::size_t Model::follow(const std::vector<Event>& events) {
    if (nodes_.size() > most_nodes) {
        Frontier start = std::move(nodes_[1]);
        nodes_.assign(1, Frontier{});
        known_.clear();
        edges_.clear();
        followed_.clear();
        node_for(std::move(start));
    }
    const auto differ =
        std::mismatch(followed_.begin(), followed_.end(), events.begin(), events.end());
    const auto same = static_cast<std::size_t>(differ.first - followed_.begin());
    followed_.resize(same);
    path_.resize(same);
    std::uint32_t node = same == 0 ? 1 : path_.back();
    for (std::size_t i = same; i < events.size(); ++i) {
        const std::uint64_t edge = mix(node, hash_of_event(events[i]));
        const auto known = edges_.find(edge);
        if (known != edges_.end()) {
            node = known->second;
        } else {
            node = node_for(after(nodes_[node], events[i]));
            edges_.emplace(edge, node);
        }
        if (node == impossible) {
            return i;
        }
        followed_.push_back(events[i]);
        path_.push_back(node);
    }
    return events.size();
}

}  // namespace explore::model
