// Evaluates the animations of a scene.
//
// What surprises: before its first key and behind its last a node stays where these put it, whatever the source asks
// for there: the clips that are made end with the animation.
#include "interchange/node_motion.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <assimp/anim.h>

namespace pelt {

namespace {

constexpr size_t NODE_LIMIT = 1000000;
constexpr double USUAL_TICKS = 25.0;  // a second, where the animation does not say
constexpr double LONGEST_SECONDS = 1e6;

Placement placement_from(const aiMatrix4x4& m) {
    return Placement(m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4, m.c1, m.c2, m.c3, m.c4, m.d1, m.d2, m.d3, m.d4);
}

double ticks_of(const aiAnimation& animation) {
    return animation.mTicksPerSecond > 0.0 ? animation.mTicksPerSecond : USUAL_TICKS;
}

// The keys around a time, and how far it lies between them.
template <typename Key>
struct KeyPair {
    const Key* before;
    const Key* behind;
    double share;
};

template <typename Key>
KeyPair<Key> keys_at(const Key* keys, unsigned count, double ticks) {
    const Key* behind =
        std::upper_bound(keys, keys + count, ticks, [](double time, const Key& key) { return time < key.mTime; });
    if (behind == keys) { return {keys, keys, 0.0}; }
    const Key* before = behind - 1;
    if (behind == keys + count || !(behind->mTime > before->mTime)) { return {before, before, 0.0}; }
    return {before, behind, (ticks - before->mTime) / (behind->mTime - before->mTime)};
}

Place place_at(const aiVectorKey* keys, unsigned count, double ticks, const Place& otherwise) {
    if (keys == nullptr || count == 0) { return otherwise; }
    const auto pair = keys_at(keys, count, ticks);
    const auto place = [](const aiVector3D& v) { return Place{v.x, v.y, v.z}; };
    const Place at = place(pair.before->mValue);
    return at + pair.share * (place(pair.behind->mValue) - at);
}

Turn turn_at(const aiQuatKey* keys, unsigned count, double ticks, const Turn& otherwise) {
    if (keys == nullptr || count == 0) { return otherwise; }
    const auto pair = keys_at(keys, count, ticks);
    const auto turn = [](const aiQuaternion& q) { return Turn{q.x, q.y, q.z, q.w}; };
    return turn_between(turn(pair.before->mValue), turn(pair.behind->mValue), pair.share);
}

Placement composed(const Place& place, const Turn& turn, const Place& scale) {
    const Place x = scale[0] * turned(turn, {1, 0, 0});
    const Place y = scale[1] * turned(turn, {0, 1, 0});
    const Place z = scale[2] * turned(turn, {0, 0, 1});
    return Placement(x[0], y[0], z[0], place[0], x[1], y[1], z[1], place[1], x[2], y[2], z[2], place[2], 0, 0, 0, 1);
}

Placement local_at(const aiNode& node, const aiNodeAnim& channel, double ticks) {
    const Placement rest = placement_from(node.mTransformation);
    const Place rest_scale = {length_of({rest.a1, rest.b1, rest.c1}), length_of({rest.a2, rest.b2, rest.c2}),
                              length_of({rest.a3, rest.b3, rest.c3})};
    return composed(place_at(channel.mPositionKeys, channel.mNumPositionKeys, ticks, origin_of(rest)),
                    turn_at(channel.mRotationKeys, channel.mNumRotationKeys, ticks, turn_of(rest)),
                    place_at(channel.mScalingKeys, channel.mNumScalingKeys, ticks, rest_scale));
}

bool are_close(const Placement& a, const Placement& b) {
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            const double close = 1e-4 * std::max({1.0, std::fabs(a[row][column]), std::fabs(b[row][column])});
            if (!(std::fabs(a[row][column] - b[row][column]) <= close)) { return false; }
        }
    }
    return true;
}

// Whether the node leaves its place at one of the channel's keys.
bool channel_moves(const aiNode& node, const aiNodeAnim& channel) {
    const Placement rest = placement_from(node.mTransformation);
    const auto leaves = [&](const auto* keys, unsigned count) {
        return keys != nullptr && std::any_of(keys, keys + count, [&](const auto& key) {
                   return !are_close(local_at(node, channel, key.mTime), rest);
               });
    };
    return leaves(channel.mPositionKeys, channel.mNumPositionKeys) ||
           leaves(channel.mRotationKeys, channel.mNumRotationKeys) ||
           leaves(channel.mScalingKeys, channel.mNumScalingKeys);
}

}  // namespace

NodeTable make_node_table(const aiScene& scene, const Placement& axes) {
    NodeTable table;
    table.axes = axes;
    const auto add = [&](const aiNode* node, int32_t parent) {
        if (node == nullptr || table.nodes.size() >= NODE_LIMIT || table.by_node.count(node) != 0) { return; }
        const auto number = static_cast<int32_t>(table.nodes.size());
        const Placement& above = parent < 0 ? axes : table.rest[static_cast<size_t>(parent)];
        table.rest.push_back(above * placement_from(node->mTransformation));
        table.nodes.push_back(node);
        table.parents.push_back(parent);
        table.by_node.insert({node, number});
        table.by_name.insert({node->mName.C_Str(), number});
    };
    // Depth first, as the library looks for a name: a scene may have one twice.
    std::vector<std::pair<const aiNode*, int32_t>> waiting{{scene.mRootNode, -1}};
    while (!waiting.empty()) {
        const auto [node, parent] = waiting.back();
        waiting.pop_back();
        const size_t number = table.nodes.size();
        add(node, parent);
        if (table.nodes.size() == number) { continue; }
        for (unsigned c = node->mNumChildren; node->mChildren != nullptr && c > 0; --c) {
            waiting.push_back({node->mChildren[c - 1], static_cast<int32_t>(number)});
        }
    }
    return table;
}

NodeChannels channels_of(const NodeTable& table, const aiAnimation& animation) {
    NodeChannels channels(table.nodes.size(), nullptr);
    for (unsigned i = 0; animation.mChannels != nullptr && i < animation.mNumChannels; ++i) {
        const aiNodeAnim* channel = animation.mChannels[i];
        const auto found = channel == nullptr ? table.by_name.end() : table.by_name.find(channel->mNodeName.C_Str());
        if (found != table.by_name.end()) { channels[static_cast<size_t>(found->second)] = channel; }
    }
    return channels;
}

double duration_of(const aiAnimation& animation) {
    double last = std::isfinite(animation.mDuration) ? std::max(animation.mDuration, 0.0) : 0.0;
    return std::min(last / ticks_of(animation), LONGEST_SECONDS);
}

std::vector<Placement> placements_at(const NodeTable& table, const NodeChannels& channels, const aiAnimation& animation,
                                     double seconds) {
    std::vector<Placement> placements;
    placements.reserve(table.nodes.size());
    for (size_t i = 0; i < table.nodes.size(); ++i) {
        const Placement& above = table.parents[i] < 0 ? table.axes : placements[static_cast<size_t>(table.parents[i])];
        const aiNode& node = *table.nodes[i];
        placements.push_back(above * (channels[i] != nullptr
                                          ? local_at(node, *channels[i], seconds * ticks_of(animation))
                                          : placement_from(node.mTransformation)));
    }
    return placements;
}

std::vector<bool> moving_nodes(const NodeTable& table, const aiScene& scene) {
    std::vector<bool> moves(table.nodes.size(), false);
    for (unsigned a = 0; scene.mAnimations != nullptr && a < scene.mNumAnimations; ++a) {
        if (scene.mAnimations[a] == nullptr) { continue; }
        const NodeChannels channels = channels_of(table, *scene.mAnimations[a]);
        for (size_t i = 0; i < channels.size(); ++i) {
            moves[i] = moves[i] || (channels[i] != nullptr && channel_moves(*table.nodes[i], *channels[i]));
        }
    }
    return moves;
}

// ---- turns ----

double length_of(const Place& v) { return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]); }

namespace {

Place cross(const Place& a, const Place& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double dot(const Place& a, const Place& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Turn normalised(const Turn& turn) {
    const double length = std::sqrt(turn.x * turn.x + turn.y * turn.y + turn.z * turn.z + turn.w * turn.w);
    if (!std::isfinite(length) || length <= 0.0) { return {}; }
    return {turn.x / length, turn.y / length, turn.z / length, turn.w / length};
}

// Of columns that stand at right angles and have length 1.
Turn turn_of_columns(const Place& x, const Place& y, const Place& z) {
    const double trace = x[0] + y[1] + z[2];
    if (trace > 0.0) { return normalised({y[2] - z[1], z[0] - x[2], x[1] - y[0], 1.0 + trace}); }
    if (x[0] >= y[1] && x[0] >= z[2]) {
        return normalised({1.0 + x[0] - y[1] - z[2], y[0] + x[1], z[0] + x[2], y[2] - z[1]});
    }
    if (y[1] >= z[2]) { return normalised({y[0] + x[1], 1.0 - x[0] + y[1] - z[2], z[1] + y[2], z[0] - x[2]}); }
    return normalised({z[0] + x[2], z[1] + y[2], 1.0 - x[0] - y[1] + z[2], x[1] - y[0]});
}

}  // namespace

Turn turn_of(const Placement& m) {
    Place x = {m.a1, m.b1, m.c1};
    Place y = {m.a2, m.b2, m.c2};
    Place z = {m.a3, m.b3, m.c3};
    // The mean with the inverse transpose goes to the nearest rotation.
    constexpr int STEPS = 60;
    for (int step = 0; step < STEPS; ++step) {
        const double determinant = dot(x, cross(y, z));
        if (!std::isfinite(determinant) || std::fabs(determinant) < 1e-30) { return {}; }
        const Place inverse_x = (1.0 / determinant) * cross(y, z);
        const Place inverse_y = (1.0 / determinant) * cross(z, x);
        const Place inverse_z = (1.0 / determinant) * cross(x, y);
        const Place next_x = 0.5 * (x + inverse_x);
        const double change = length_of(next_x - x);
        x = next_x;
        y = 0.5 * (y + inverse_y);
        z = 0.5 * (z + inverse_z);
        if (change < 1e-14) { break; }
    }
    if (dot(x, cross(y, z)) < 0.0) {  // what mirrors has no rotation: that of its opposite
        x = -1.0 * x;
        y = -1.0 * y;
        z = -1.0 * z;
    }
    return turn_of_columns(x, y, z);
}

Turn turn_product(const Turn& a, const Turn& b) {
    return {a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y, a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
            a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w, a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z};
}

Turn turn_inverse(const Turn& turn) { return {-turn.x, -turn.y, -turn.z, turn.w}; }

Place turned(const Turn& turn, const Place& v) {
    const Place axis = {turn.x, turn.y, turn.z};
    const Place twice = 2.0 * cross(axis, v);
    return v + turn.w * twice + cross(axis, twice);
}

Turn turn_between(const Turn& a, const Turn& b, double share) {
    const Turn from = normalised(a);
    Turn to = normalised(b);
    double cosine = from.x * to.x + from.y * to.y + from.z * to.z + from.w * to.w;
    if (cosine < 0.0) {
        to = {-to.x, -to.y, -to.z, -to.w};
        cosine = -cosine;
    }
    double first = 1.0 - share;
    double second = share;
    if (cosine < 0.9995) {
        const double angle = std::acos(cosine);
        first = std::sin(first * angle) / std::sin(angle);
        second = std::sin(second * angle) / std::sin(angle);
    }
    return normalised({first * from.x + second * to.x, first * from.y + second * to.y, first * from.z + second * to.z,
                       first * from.w + second * to.w});
}

double degrees_between(const Turn& a, const Turn& b) {
    const Turn difference = turn_product(turn_inverse(a), b);
    const double half = std::atan2(length_of({difference.x, difference.y, difference.z}), std::fabs(difference.w));
    return 2.0 * half * 180.0 / std::numbers::pi;
}

std::array<double, 3> angles_of(const Turn& turn) {
    const Place x = turned(turn, {1, 0, 0});
    const Place y = turned(turn, {0, 1, 0});
    const Place z = turned(turn, {0, 0, 1});
    constexpr double DEGREES = 180.0 / std::numbers::pi;
    const double about_y = std::asin(std::clamp(z[0], -1.0, 1.0)) * DEGREES;
    if (std::fabs(z[0]) > 1.0 - 1e-12) {  // x and z turn about the same line: all of it is given to x
        return {std::atan2(y[2], y[1]) * DEGREES, about_y, 0.0};
    }
    return {std::atan2(-z[1], z[2]) * DEGREES, about_y, std::atan2(-y[0], x[0]) * DEGREES};
}

Place transformed(const Placement& m, const Place& p) {
    return {m.a1 * p[0] + m.a2 * p[1] + m.a3 * p[2] + m.a4, m.b1 * p[0] + m.b2 * p[1] + m.b3 * p[2] + m.b4,
            m.c1 * p[0] + m.c2 * p[1] + m.c3 * p[2] + m.c4};
}

Place origin_of(const Placement& m) { return {m.a4, m.b4, m.c4}; }

}  // namespace pelt
