// Cuts what is too large for one model.
#include "interchange/soup.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace pelt {

namespace {

constexpr uint32_t NOT_YET = std::numeric_limits<uint32_t>::max();

int64_t centre_along(const SoupPart& part, const SoupFace& face, size_t axis) {
    int64_t sum = 0;
    for (int32_t i = 0; i < face.count; ++i) { sum += part.vertices[face.corners[static_cast<size_t>(i)]].place[axis]; }
    return sum * 12 / face.count;  // whole for faces of every count
}

size_t longest_axis(const SoupPart& part) {
    std::array<int64_t, 3> extent{};
    for (size_t axis = 0; axis < extent.size(); ++axis) {
        const auto [low, high] = std::minmax_element(
            part.vertices.begin(), part.vertices.end(),
            [&](const SoupVertex& a, const SoupVertex& b) { return a.place[axis] < b.place[axis]; });
        extent[axis] = low == part.vertices.end() ? 0 : int64_t{high->place[axis]} - low->place[axis];
    }
    return static_cast<size_t>(std::max_element(extent.begin(), extent.end()) - extent.begin());
}

}  // namespace

void soup_compact(SoupPart* part) {
    std::vector<uint32_t> renumbered(part->vertices.size(), NOT_YET);
    std::vector<SoupVertex> kept;
    for (SoupFace& face : part->faces) {
        for (size_t i = 0; i < static_cast<size_t>(face.count); ++i) {
            uint32_t& number = renumbered[face.corners[i]];
            if (number == NOT_YET) {
                number = static_cast<uint32_t>(kept.size());
                kept.push_back(part->vertices[face.corners[i]]);
            }
            face.corners[i] = number;
        }
    }
    part->vertices = std::move(kept);
}

std::array<SoupPart, 2> soup_halves(const SoupPart& part) {
    const size_t axis = longest_axis(part);
    std::vector<size_t> order(part.faces.size());
    for (size_t i = 0; i < order.size(); ++i) { order[i] = i; }
    const auto middle = order.begin() + static_cast<std::ptrdiff_t>(order.size() / 2);
    std::nth_element(order.begin(), middle, order.end(), [&](size_t a, size_t b) {
        const int64_t at_a = centre_along(part, part.faces[a], axis);
        const int64_t at_b = centre_along(part, part.faces[b], axis);
        return at_a != at_b ? at_a < at_b : a < b;
    });
    std::sort(order.begin(), middle);
    std::sort(middle, order.end());
    std::array<SoupPart, 2> halves{SoupPart{part.name, part.coloured, part.vertices, {}},
                                   SoupPart{part.name, part.coloured, part.vertices, {}}};
    for (auto at = order.begin(); at != order.end(); ++at) {
        halves[at < middle ? 0 : 1].faces.push_back(part.faces[*at]);
    }
    if (part.faces.size() < 2) { std::swap(halves[0], halves[1]); }
    for (SoupPart& half : halves) { soup_compact(&half); }
    return halves;
}

}  // namespace pelt
