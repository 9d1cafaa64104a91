// Samples animations and writes them as clips.
//
// What surprises: of a joint's placement the turn alone counts, relative to that of its parent, and the turn in which
// it was bound is none; all movement of a row is that of its first joint.
#include "interchange/clip_making.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include <assimp/anim.h>

#include "formats/line_reader.h"
#include "foundation/text.h"

namespace pelt {

namespace {

constexpr double FINE_RATE = 120.0;         // samples a second that a clip is held against
constexpr int FINE_LIMIT = 24000;           // samples
constexpr int RATES[] = {24, 12, 6, 4, 2};  // samples from one frame to the next: 5 to 60 frames a second
constexpr int WHOLE_STEPS = 24;             // which all of these divide
constexpr double TURN_BOUND = 0.5;          // degrees
constexpr double MOVE_BOUND = 0.0005;       // of the model's size
constexpr double STILL_TURN = 0.005;        // degrees
constexpr double STILL_MOVE = 0.25;         // units of the model
constexpr int ANGLE_DECIMALS = 3;
constexpr size_t MOST_TRACKS = 40;
constexpr size_t LONGEST_LINE = READER_LINE_SIZE - 1;
constexpr double STILL_SECONDS = 1.0;  // that a clip of a single pose lasts

// What moves a row, sample by sample.
struct RowSamples {
    std::vector<std::vector<Turn>> turns;  // by joint
    std::vector<Place> moves;              // in units of the model
};

struct JointPose {
    Turn turn;       // of places at rest
    Place movement;  // of the joint's own place
};

std::vector<JointPose> poses_of(const PlannedRow& row, const std::vector<Placement>& placed) {
    std::vector<JointPose> poses;
    for (const PlannedJoint& joint : row.joints) {
        const Placement moved = placed[static_cast<size_t>(joint.node)] * joint.to_node;
        const Place movement = transformed(moved, joint.place) - joint.place;
        poses.push_back({turn_of(moved), is_finite(movement) ? movement : Place{0.0, 0.0, 0.0}});
    }
    return poses;
}

Turn local_turn(const PlannedRow& row, const std::vector<JointPose>& poses, size_t joint) {
    const int32_t parent = row.joints[joint].parent;
    if (parent < 0) { return poses[joint].turn; }
    return turn_product(turn_inverse(poses[static_cast<size_t>(parent)].turn), poses[joint].turn);
}

std::vector<RowSamples> sample_rows(const MotionPlan& plan, const aiAnimation& animation, double scale, int steps) {
    std::vector<RowSamples> rows(plan.rows.size());
    for (size_t r = 0; r < rows.size(); ++r) { rows[r].turns.resize(plan.rows[r].joints.size()); }
    const NodeChannels channels = channels_of(plan.table, animation);
    const double duration = duration_of(animation);
    for (int step = 0; step <= steps; ++step) {
        const auto placed = placements_at(plan.table, channels, animation, duration * step / steps);
        for (size_t r = 0; r < rows.size(); ++r) {
            const PlannedRow& row = plan.rows[r];
            const std::vector<JointPose> poses = poses_of(row, placed);
            for (size_t j = 0; j < poses.size(); ++j) { rows[r].turns[j].push_back(local_turn(row, poses, j)); }
            rows[r].moves.push_back(poses.empty() ? Place{0.0, 0.0, 0.0} : scale * poses[0].movement);
        }
    }
    return rows;
}

// ---- rate ----

struct RateError {
    double degrees = 0.0;
    double units = 0.0;
};

RateError error_at(const std::vector<RowSamples>& rows, size_t steps, size_t stride) {
    RateError error;
    for (size_t step = 0; step < steps; ++step) {
        const size_t before = step / stride * stride;
        const double share = static_cast<double>(step - before) / static_cast<double>(stride);
        for (const RowSamples& row : rows) {
            for (const std::vector<Turn>& turns : row.turns) {
                const Turn played = turn_between(turns[before], turns[before + stride], share);
                error.degrees = std::max(error.degrees, degrees_between(played, turns[step]));
            }
            const Place played = row.moves[before] + share * (row.moves[before + stride] - row.moves[before]);
            error.units = std::max(error.units, length_of(played - row.moves[step]));
        }
    }
    return error;
}

// ---- texts ----

std::string number_text(double value, int decimals) {
    std::string text = float_to_text(value, decimals);
    if (text.find('.') != std::string::npos) {
        while (text.back() == '0') { text.pop_back(); }
        if (text.back() == '.') { text.pop_back(); }
    }
    return text == "-0" ? "0" : text;
}

std::string three_numbers(const std::array<double, 3>& values, int decimals) {
    return "  " + number_text(values[0], decimals) + " " + number_text(values[1], decimals) + " " +
           number_text(values[2], decimals);
}

struct Track {
    std::string name;
    std::vector<std::string> keys;  // by frame
};

bool is_still(const std::vector<Turn>& turns) {
    return std::all_of(turns.begin(), turns.end(),
                       [](const Turn& turn) { return degrees_between({}, turn) <= STILL_TURN; });
}

std::vector<Track> tracks_of(const PlannedRow& row, const RowSamples& samples, size_t stride) {
    std::vector<Track> tracks;
    const bool moves = std::any_of(samples.moves.begin(), samples.moves.end(),
                                   [](const Place& move) { return length_of(move) > STILL_MOVE; });
    if (moves) {
        tracks.push_back({"translate", {}});
        for (size_t i = 0; i < samples.moves.size(); i += stride) {
            tracks.back().keys.push_back(three_numbers(samples.moves[i], 2));
        }
    }
    for (size_t joint = 0; joint < row.joints.size(); ++joint) {
        const std::vector<Turn>& turns = samples.turns[joint];
        if (is_still(turns)) { continue; }
        tracks.push_back({row.skeleton.joints[joint].name, {}});
        for (size_t i = 0; i < turns.size(); i += stride) {
            tracks.back().keys.push_back(three_numbers(angles_of(turns[i]), ANGLE_DECIMALS));
        }
    }
    return tracks;
}

// Cuts the tracks into groups that a file holds.
std::vector<std::vector<Track>> files_of(const std::vector<Track>& tracks) {
    constexpr size_t TIME_AND_NAMES = 24;  // what a line begins with, at most
    std::vector<std::vector<Track>> files;
    std::vector<size_t> lengths;  // by frame, and behind them that of the line of names
    for (const Track& track : tracks) {
        std::vector<size_t> longer = lengths;
        longer.resize(track.keys.size() + 1, TIME_AND_NAMES);
        for (size_t i = 0; i < track.keys.size(); ++i) { longer[i] += track.keys[i].size(); }
        longer.back() += track.name.size() + 1;
        const bool fits = !files.empty() && files.back().size() < MOST_TRACKS &&
                          *std::max_element(longer.begin(), longer.end()) <= LONGEST_LINE;
        if (!fits) {
            files.emplace_back();
            lengths.clear();
            longer.assign(track.keys.size() + 1, TIME_AND_NAMES);
            for (size_t i = 0; i < track.keys.size(); ++i) { longer[i] += track.keys[i].size(); }
            longer.back() += track.name.size() + 1;
        }
        lengths = longer;
        files.back().push_back(track);
    }
    return files;
}

std::string clip_text(const std::vector<Track>& tracks, double seconds) {
    std::string text = "names";
    for (const Track& track : tracks) { text += " " + track.name; }
    text += "\n";
    const size_t frames = tracks[0].keys.size();
    for (size_t frame = 0; frame < frames; ++frame) {
        const double time = seconds * static_cast<double>(frame) / static_cast<double>(frames - 1);
        text += number_text(time, 5);
        for (const Track& track : tracks) { text += track.keys[frame]; }
        text += "\n";
    }
    return text;
}

MadeClip clip_of(const std::vector<Track>& tracks, double seconds, const std::string& name) {
    MadeClip clip;
    if (tracks.empty()) { return clip; }
    clip.name = name + ".clip";
    const std::vector<std::vector<Track>> files = files_of(tracks);
    std::string text = clip_text(files[0], seconds);
    for (size_t i = 1; i < files.size(); ++i) {
        const std::string further = name + "_" + std::to_string(i + 1) + "of" + std::to_string(files.size()) + ".clip";
        clip.files.push_back({further, clip_text(files[i], seconds)});
        text += "0.0 " + further + "\n";
    }
    clip.files.push_back({clip.name, text});
    return clip;
}

}  // namespace

MadeAnimation make_clips(const MotionPlan& plan, const aiAnimation& animation, double scale, const std::string& stem) {
    MadeAnimation made;
    made.name = animation.mName.C_Str();
    const double duration = duration_of(animation);
    const double seconds = duration > 0.0 ? duration : STILL_SECONDS;
    const double wanted = std::ceil(std::min(seconds * FINE_RATE, double{FINE_LIMIT}) / WHOLE_STEPS) * WHOLE_STEPS;
    const auto steps = static_cast<size_t>(std::max(wanted, double{WHOLE_STEPS}));
    const std::vector<RowSamples> rows = sample_rows(plan, animation, scale, static_cast<int>(steps));
    const double move_bound = plan.size * scale * MOVE_BOUND;
    size_t stride = 0;
    RateError error;
    for (const int rate : RATES) {
        stride = static_cast<size_t>(rate);
        error = error_at(rows, steps, stride);
        if (error.degrees <= TURN_BOUND && error.units <= move_bound) { break; }
    }
    for (size_t r = 0; r < rows.size(); ++r) {
        const std::string name =
            rows.size() > 1 ? stem + "_" + plain_name(plan.rows[r].name, 20) + std::to_string(r + 1) : stem;
        made.clips.push_back(clip_of(tracks_of(plan.rows[r], rows[r], stride), seconds, name));
    }
    const double rate = static_cast<double>(steps / stride) / seconds;
    const std::string bound = "turns within " + number_text(error.degrees, 3) + " degrees, movement within " +
                              number_text(error.units, 3) + " units";
    made.note = number_text(seconds, 3) + " seconds, " + number_text(rate, 1) + " frames a second: " + bound;
    if (error.degrees > TURN_BOUND || error.units > move_bound) { made.loss = "faster than its frames: " + bound; }
    return made;
}

// ---- cost ----

namespace {

constexpr int COST_LOOKS = 24;
constexpr size_t COST_VERTICES = 2000;  // of a mesh

struct RowPose {
    std::vector<Turn> turns;
    std::vector<Place> places;  // of the joints
    std::vector<Placement> exact;
};

// As the clip moves the row: joints turn where their parents carry them, and all of it goes with the first.
RowPose played_pose(const PlannedRow& row, const std::vector<Placement>& placed) {
    RowPose pose;
    const std::vector<JointPose> exact = poses_of(row, placed);
    for (size_t j = 0; j < row.joints.size(); ++j) {
        const PlannedJoint& joint = row.joints[j];
        const auto parent = static_cast<size_t>(std::max(joint.parent, 0));
        const bool has_parent = joint.parent >= 0;
        pose.turns.push_back(exact[j].turn);
        pose.places.push_back(has_parent ? pose.places[parent] +
                                               turned(pose.turns[parent], joint.place - row.joints[parent].place)
                                         : joint.place + exact[0].movement);
        pose.exact.push_back(placed[static_cast<size_t>(joint.node)] * joint.to_node);
    }
    return pose;
}

template <typename Moved>
Place weighted(const SkinShare& share, const Moved& moved) {
    const Place a = moved(static_cast<size_t>(share.joint_a));
    if (share.joint_b < 0) { return a; }
    return double{share.weight} * a + (1.0 - double{share.weight}) * moved(static_cast<size_t>(share.joint_b));
}

struct CostSum {
    double largest = 0.0;
    double sum = 0.0;
    int64_t count = 0;
    void add(double distance) {
        if (!std::isfinite(distance)) { return; }
        largest = std::max(largest, distance);
        sum += distance;
        ++count;
    }
    double mean() const { return count > 0 ? sum / static_cast<double>(count) : 0.0; }
};

struct CostLook {
    const MotionPlan& plan;
    const MeshPlace& place;
    const std::vector<int32_t>& skins;
    const std::vector<std::vector<VertexShare>>& shares;
    const std::vector<Placement>& placed;
};

// Where the source has a vertex: by all bones, or with its node.
Place source_place(const CostLook& look, const PlannedRow& row, const RowPose& pose, size_t vertex) {
    const Place rest = transformed(look.place.placement, look.place.mesh->mVertices[vertex]);
    Place sum{0.0, 0.0, 0.0};
    double weights = 0.0;
    for (const VertexShare& share : look.shares[vertex]) {
        const auto found = look.plan.table.by_name.find(share.bone->mName.C_Str());
        if (found == look.plan.table.by_name.end()) { continue; }
        const aiMatrix4x4& m = share.bone->mOffsetMatrix;
        const Placement offset(m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4, m.c1, m.c2, m.c3, m.c4, m.d1, m.d2, m.d3,
                               m.d4);
        const Placement bound = look.placed[static_cast<size_t>(found->second)] * offset;
        sum = sum + double{share.weight} * transformed(bound, look.place.mesh->mVertices[vertex]);
        weights += double{share.weight};
    }
    if (weights > 0.0) { return (1.0 / weights) * sum; }
    const SkinShare& share = row.skeleton.skins[static_cast<size_t>(look.skins[vertex])];
    return transformed(pose.exact[static_cast<size_t>(share.joint_a)], rest);
}

void add_costs(const CostLook& look, CostSum& by_weights, CostSum& all) {
    const PlannedRow& row = look.plan.rows[static_cast<size_t>(look.place.unit)];
    const RowPose pose = played_pose(row, look.placed);
    const size_t stride = look.skins.size() / COST_VERTICES + 1;
    for (size_t vertex = 0; vertex < look.skins.size(); vertex += stride) {
        if (look.skins[vertex] == NO_SKIN) { continue; }
        const SkinShare& share = row.skeleton.skins[static_cast<size_t>(look.skins[vertex])];
        const Place rest = transformed(look.place.placement, look.place.mesh->mVertices[vertex]);
        const Place source = source_place(look, row, pose, vertex);
        const Place exact = weighted(share, [&](size_t joint) { return transformed(pose.exact[joint], rest); });
        const Place played = weighted(share, [&](size_t joint) {
            return pose.places[joint] + turned(pose.turns[joint], rest - row.joints[joint].place);
        });
        by_weights.add(length_of(exact - source));
        all.add(length_of(played - source));
    }
}

}  // namespace

MotionCost measure_motion(const MotionPlan& plan, const SourceScene& source) {
    CostSum by_weights;
    CostSum all;
    std::vector<std::vector<std::vector<VertexShare>>> shares;
    for (const MeshPlace& place : source.places) { shares.push_back(shares_of(*place.mesh)); }
    for (unsigned a = 0; source.scene->mAnimations != nullptr && a < source.scene->mNumAnimations; ++a) {
        const aiAnimation* animation = source.scene->mAnimations[a];
        if (animation == nullptr) { continue; }
        const NodeChannels channels = channels_of(plan.table, *animation);
        for (int i = 0; i <= COST_LOOKS; ++i) {
            const auto placed =
                placements_at(plan.table, channels, *animation, duration_of(*animation) * i / COST_LOOKS);
            for (size_t p = 0; p < source.places.size(); ++p) {
                if (plan.skins[p].empty()) { continue; }
                add_costs({plan, source.places[p], plan.skins[p], shares[p], placed}, by_weights, all);
            }
        }
    }
    return {by_weights.largest, by_weights.mean(), all.largest, all.mean()};
}

}  // namespace pelt
