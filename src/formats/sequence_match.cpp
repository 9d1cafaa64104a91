// Matching of sequences: equal ends first, then the longest rising run of what is equal between them.
#include "formats/sequence_match.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "foundation/key_hash.h"

namespace pelt {

namespace {

// For each element of the middle of the second sequence a place of an equal one in the first, each taken once.
std::vector<int> equal_places(const std::vector<std::string>& before, const std::vector<std::string>& after, int begin,
                              int before_end, int after_end) {
    std::unordered_map<std::string_view, std::vector<int>, KeyHash> places;
    for (int i = before_end - 1; i >= begin; --i) { places[before[static_cast<size_t>(i)]].push_back(i); }
    std::vector<int> found;
    for (int i = begin; i < after_end; ++i) {
        const auto place = places.find(after[static_cast<size_t>(i)]);
        const bool is_there = place != places.end() && !place->second.empty();
        found.push_back(is_there ? place->second.back() : NO_MATCH);
        if (is_there) { place->second.pop_back(); }
    }
    return found;
}

// Leaves the longest run of rising values, the others become NO_MATCH.
void keep_rising(std::vector<int>& values) {
    std::vector<size_t> ends;  // of the best run of each length: the index of its last value
    std::vector<int> former(values.size(), NO_MATCH);
    for (size_t i = 0; i < values.size(); ++i) {
        if (values[i] == NO_MATCH) { continue; }
        const auto end = std::lower_bound(ends.begin(), ends.end(), values[i],
                                          [&](size_t index, int value) { return values[index] < value; });
        former[i] = end == ends.begin() ? NO_MATCH : static_cast<int>(*(end - 1));
        if (end == ends.end()) {
            ends.push_back(i);
        } else {
            *end = i;
        }
    }
    std::vector<bool> kept(values.size(), false);
    for (int i = ends.empty() ? NO_MATCH : static_cast<int>(ends.back()); i != NO_MATCH;
         i = former[static_cast<size_t>(i)]) {
        kept[static_cast<size_t>(i)] = true;
    }
    for (size_t i = 0; i < values.size(); ++i) {
        if (!kept[i]) { values[i] = NO_MATCH; }
    }
}

// Pairs what lies between two matches on both sides.
void pair_gaps(std::vector<int>& matches, int begin, int before_end) {
    int last = begin - 1;  // place of the last match
    for (size_t i = 0; i < matches.size();) {
        if (matches[i] != NO_MATCH) {
            last = matches[i++];
            continue;
        }
        size_t end = i;
        while (end < matches.size() && matches[end] == NO_MATCH) { ++end; }
        const int limit = end < matches.size() ? matches[end] : before_end;
        for (; i < end; ++i) {
            if (last + 1 < limit) { matches[i] = ++last; }
        }
    }
}

}  // namespace

std::vector<int> match_sequences(const std::vector<std::string>& before, const std::vector<std::string>& after) {
    const int before_size = static_cast<int>(before.size());
    const int after_size = static_cast<int>(after.size());
    int begin = 0;
    while (begin < before_size && begin < after_size &&
           before[static_cast<size_t>(begin)] == after[static_cast<size_t>(begin)]) {
        ++begin;
    }
    int tail = 0;
    while (tail < before_size - begin && tail < after_size - begin &&
           before[static_cast<size_t>(before_size - 1 - tail)] == after[static_cast<size_t>(after_size - 1 - tail)]) {
        ++tail;
    }
    std::vector<int> middle = equal_places(before, after, begin, before_size - tail, after_size - tail);
    keep_rising(middle);
    pair_gaps(middle, begin, before_size - tail);
    std::vector<int> matches;
    for (int i = 0; i < begin; ++i) { matches.push_back(i); }
    matches.insert(matches.end(), middle.begin(), middle.end());
    for (int i = tail; i > 0; --i) { matches.push_back(before_size - i); }
    return matches;
}

}  // namespace pelt
