// Deals the corners of faces to points.
//
// What surprises: a point takes the normal that most of its corners have and no other point has yet. So the eight
// corners of a box hold its six normals, and none costs an id.
#include "interchange/point_pool.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <unordered_map>
#include <utility>

#include "foundation/key_hash.h"

namespace pelt {

namespace {

constexpr uint32_t NONE = std::numeric_limits<uint32_t>::max();

template <size_t Size>
struct ArrayHash {
    size_t operator()(const std::array<uint32_t, Size>& key) const {
        return static_cast<size_t>(key_hash(key.data(), sizeof key));
    }
};
template <size_t Size>
using ArrayMap = std::unordered_map<std::array<uint32_t, Size>, uint32_t, ArrayHash<Size>>;

// The number under the key; a new one, the next, where there is none.
template <size_t Size>
uint32_t number_of(ArrayMap<Size>& numbers, const std::array<uint32_t, Size>& key) {
    return numbers.insert({key, static_cast<uint32_t>(numbers.size())}).first->second;
}

struct PointDealing {
    const SoupPart& part;
    PointPool& pool;
    ArrayMap<5> spots = {};       // by place, colour and skin
    ArrayMap<4> uses = {};        // by spot, look and coordinates: which of the spot's points
    ArrayMap<2> use_counts = {};  // by spot and look
    ArrayMap<2> points = {};      // by spot and which of its points
    std::vector<uint32_t> of_vertex = {};
};

uint32_t bits_of(int32_t value) { return static_cast<uint32_t>(value); }

uint32_t packed(const std::array<uint8_t, 4>& colour) { return std::bit_cast<uint32_t>(colour); }

uint32_t point_of_vertex(PointDealing& dealing, uint32_t number, int32_t look, bool has_uvee) {
    if (dealing.of_vertex[number] != NONE) { return dealing.of_vertex[number]; }
    const SoupVertex& vertex = dealing.part.vertices[number];
    const uint32_t spot =
        number_of(dealing.spots, {bits_of(vertex.place[0]), bits_of(vertex.place[1]), bits_of(vertex.place[2]),
                                  dealing.part.coloured ? packed(vertex.colour) : 0, bits_of(vertex.skin)});
    uint32_t use = 0;
    if (has_uvee) {
        const auto [known, is_new] = dealing.uses.insert(
            {{spot, bits_of(look), std::bit_cast<uint32_t>(vertex.uv[0]), std::bit_cast<uint32_t>(vertex.uv[1])}, 0});
        if (is_new) { known->second = dealing.use_counts[{spot, bits_of(look)}]++; }
        use = known->second;
    }
    const uint32_t point = number_of(dealing.points, {spot, use});
    if (point == dealing.pool.points.size()) {
        dealing.pool.points.push_back({vertex.place, {0, 0, 0}, vertex.colour, vertex.skin});
    }
    if (has_uvee) { dealing.pool.uvees[look][point] = vertex.uv; }
    dealing.of_vertex[number] = point;
    return point;
}

void deal_points(PointDealing& dealing, const std::vector<bool>& has_uvees) {
    dealing.of_vertex.assign(dealing.part.vertices.size(), NONE);
    dealing.pool.faces.reserve(dealing.part.faces.size());
    for (const SoupFace& face : dealing.part.faces) {
        if (dealing.pool.points.size() > POOL_POINT_LIMIT) { return; }
        PoolFace dealt{face.look, face.count, {}, {}};
        const bool has_uvee = face.count >= 3 && has_uvees[static_cast<size_t>(face.look)];
        for (size_t i = 0; i < static_cast<size_t>(face.count); ++i) {
            dealt.points[i] = point_of_vertex(dealing, face.corners[i], face.look, has_uvee);
        }
        dealing.pool.faces.push_back(dealt);
    }
}

// ---- normals ----

using Normal = std::array<int16_t, 3>;

bool is_none(const Normal& normal) { return normal == Normal{0, 0, 0}; }

// A normal as a corner has it: its number among those that differ in direction or in what moves them.
struct NormalDealing {
    ArrayMap<3> numbers = {};
    std::vector<Normal> normals = {};
    std::vector<uint32_t> holders = {};                       // by normal: a point that has it
    std::vector<std::pair<uint32_t, uint32_t>> corners = {};  // point and normal, one for each corner with a normal
};

std::array<uint32_t, 3> normal_key(const SoupVertex& vertex) {
    const auto half = [](int16_t value) { return static_cast<uint32_t>(static_cast<uint16_t>(value)); };
    return {half(vertex.normal[0]) << 16 | half(vertex.normal[1]), half(vertex.normal[2]), bits_of(vertex.skin)};
}

void gather_normals(const SoupPart& part, const PointPool& pool, NormalDealing& dealing) {
    for (size_t i = 0; i < part.faces.size(); ++i) {
        for (size_t c = 0; c < static_cast<size_t>(part.faces[i].count); ++c) {
            const SoupVertex& vertex = part.vertices[part.faces[i].corners[c]];
            if (is_none(vertex.normal)) { continue; }
            const uint32_t number = number_of(dealing.numbers, normal_key(vertex));
            if (number == dealing.normals.size()) { dealing.normals.push_back(vertex.normal); }
            dealing.corners.push_back({pool.faces[i].points[c], number});
        }
    }
    dealing.holders.assign(dealing.normals.size(), NONE);
    std::sort(dealing.corners.begin(), dealing.corners.end());
}

// One normal for each point that has a corner with one.
void give_points_normals(NormalDealing& dealing, PointPool& pool) {
    for (auto at = dealing.corners.begin(); at != dealing.corners.end();) {
        const uint32_t point = at->first;
        uint32_t best = NONE;
        std::pair<bool, std::ptrdiff_t> best_worth{false, 0};
        while (at != dealing.corners.end() && at->first == point) {
            const auto end = std::find_if(at, dealing.corners.end(), [&](const auto& other) { return other != *at; });
            const std::pair<bool, std::ptrdiff_t> worth{dealing.holders[at->second] == NONE, end - at};
            if (best == NONE || worth > best_worth) {
                best = at->second;
                best_worth = worth;
            }
            at = end;
        }
        pool.points[point].normal = dealing.normals[best];
        if (dealing.holders[best] == NONE) { dealing.holders[best] = point; }
    }
}

void deal_normals(const SoupPart& part, PointPool& pool) {
    NormalDealing dealing;
    gather_normals(part, pool, dealing);
    pool.has_normals = !dealing.normals.empty();
    give_points_normals(dealing, pool);
    for (size_t i = 0; i < part.faces.size(); ++i) {
        PoolFace& face = pool.faces[i];
        for (size_t c = 0; c < static_cast<size_t>(face.count); ++c) {
            const SoupVertex& vertex = part.vertices[part.faces[i].corners[c]];
            face.normals[c] = face.points[c];
            if (is_none(vertex.normal) || pool.points[face.points[c]].normal == vertex.normal || face.count < 3) {
                continue;
            }
            uint32_t& holder = dealing.holders[dealing.numbers.at(normal_key(vertex))];
            if (holder == NONE) {
                holder = static_cast<uint32_t>(pool.points.size());
                PoolPoint only_a_normal = pool.points[face.points[c]];
                only_a_normal.normal = vertex.normal;
                pool.points.push_back(only_a_normal);
            }
            face.normals[c] = holder;
        }
    }
}

}  // namespace

PointPool make_pool(const SoupPart& part, const std::vector<bool>& has_uvees) {
    PointPool pool;
    PointDealing dealing{part, pool};
    deal_points(dealing, has_uvees);
    if (pool.points.size() <= POOL_POINT_LIMIT) { deal_normals(part, pool); }
    return pool;
}

}  // namespace pelt
