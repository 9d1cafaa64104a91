// Finds joints: the bones of meshes, and the nodes that carry meshes about.
//
// What surprises: a node that carries a mesh and also glides along what is above it, where a joint could only turn,
// begins a row of its own, because a row as a whole can go anywhere.
#include "interchange/motion_plan.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>

#include <assimp/anim.h>

namespace pelt {

namespace {

constexpr int LOOKS_AT_AN_ANIMATION = 32;
constexpr double GLIDES = 0.001;  // of the distance that is told from none, as a share of the model's size
constexpr size_t JOINT_NAME_LENGTH = 31;
constexpr float WEIGHT_STEPS = 1000.0f;

Placement placement_from(const aiMatrix4x4& m) {
    return Placement(m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4, m.c1, m.c2, m.c3, m.c4, m.d1, m.d2, m.d3, m.d4);
}

bool is_usable(const Placement& placement) {
    const double determinant = placement_determinant(placement);
    return std::isfinite(determinant) && std::fabs(determinant) > 1e-30 && is_finite(origin_of(placement));
}

struct Candidate {
    bool exists = false;
    bool is_bone = false;
    Placement to_node;
};

struct Planning {
    SourceScene* source;
    NodeTable table;
    std::vector<bool> moves;            // by node, by itself
    std::vector<Candidate> candidates;  // by node
    std::vector<int32_t> groups;        // by node: one of those it moves together with
    std::vector<int32_t> movers;        // by place: a node of the group that moves it, -1 for none
    std::vector<bool> is_skinned;       // by place
};

int32_t node_named(const NodeTable& table, const aiString& name) {
    const auto found = table.by_name.find(name.C_Str());
    return found == table.by_name.end() ? -1 : found->second;
}

size_t at(int32_t number) { return static_cast<size_t>(number); }

// ---- bones ----

bool bone_is_sound(const NodeTable& table, const aiBone* bone) {
    return bone != nullptr && bone->mWeights != nullptr && node_named(table, bone->mName) >= 0 &&
           is_usable(placement_from(bone->mOffsetMatrix));
}

std::vector<const aiBone*> sound_bones(const NodeTable& table, const aiMesh& mesh) {
    std::vector<const aiBone*> bones;
    for (unsigned i = 0; mesh.mBones != nullptr && i < mesh.mNumBones; ++i) {
        const aiBone* bone = mesh.mBones[i];
        if (bone_is_sound(table, bone) && bone->mNumWeights > 0) { bones.push_back(bone); }
    }
    std::stable_sort(bones.begin(), bones.end(), [&](const aiBone* a, const aiBone* b) {
        return node_named(table, a->mName) < node_named(table, b->mName);
    });
    return bones;
}

// Where the mesh stands when all its bones are as they were bound: by a bone of which that is known from another mesh,
// otherwise with the first one at rest.
Placement bind_placement(const Planning& planning, const std::vector<const aiBone*>& bones) {
    for (const aiBone* bone : bones) {
        const Candidate& known = planning.candidates[at(node_named(planning.table, bone->mName))];
        if (known.is_bone) {
            Placement from_node = known.to_node;
            return from_node.Inverse() * placement_from(bone->mOffsetMatrix);
        }
    }
    return planning.table.rest[at(node_named(planning.table, bones[0]->mName))] *
           placement_from(bones[0]->mOffsetMatrix);
}

void join(Planning& planning, int32_t a, int32_t b);

void plan_skinned(Planning& planning, size_t number) {
    MeshPlace& place = planning.source->places[number];
    const std::vector<const aiBone*> bones = sound_bones(planning.table, *place.mesh);
    if (bones.empty()) { return; }
    const Placement placement = bind_placement(planning, bones);
    if (!is_usable(placement)) { return; }
    Placement inverse = placement;
    inverse.Inverse();
    const int32_t first = node_named(planning.table, bones[0]->mName);
    for (const aiBone* bone : bones) {
        const int32_t node = node_named(planning.table, bone->mName);
        Candidate& candidate = planning.candidates[at(node)];
        if (!candidate.is_bone) { candidate = {true, true, placement_from(bone->mOffsetMatrix) * inverse}; }
        join(planning, node, first);
    }
    place.placement = placement;
    planning.movers[number] = first;
    planning.is_skinned[number] = true;
}

// ---- nodes that carry meshes ----

int32_t nearest(const NodeTable& table, int32_t node, const std::vector<bool>& wanted) {
    while (node >= 0 && !wanted[at(node)]) { node = table.parents[at(node)]; }
    return node;
}

void plan_carried(Planning& planning, size_t number) {
    if (planning.is_skinned[number]) { return; }
    std::vector<bool> carries = planning.moves;
    for (size_t i = 0; i < carries.size(); ++i) { carries[i] = carries[i] || planning.candidates[i].is_bone; }
    const auto own = planning.table.by_node.find(planning.source->places[number].node);
    if (own == planning.table.by_node.end()) { return; }
    const int32_t node = nearest(planning.table, own->second, carries);
    if (node < 0) { return; }
    Candidate& candidate = planning.candidates[at(node)];
    Placement to_node = planning.table.rest[at(node)];
    if (!candidate.exists && !is_usable(to_node)) { return; }
    if (!candidate.exists) { candidate = {true, false, to_node.Inverse()}; }
    planning.movers[number] = node;
}

// A node between that moves is a joint too, though nothing follows it alone: it turns what is below it about its place,
// which is where the nodes have it next to the joint below.
void plan_between(Planning& planning) {
    const NodeTable& table = planning.table;
    for (size_t i = table.nodes.size(); i > 0; --i) {
        const Candidate below = planning.candidates[i - 1];
        if (!below.exists) { continue; }
        int32_t node = table.parents[i - 1];
        while (node >= 0 && !planning.candidates[at(node)].exists && !planning.moves[at(node)]) {
            node = table.parents[at(node)];
        }
        if (node < 0 || planning.candidates[at(node)].exists || !is_usable(table.rest[at(node)])) { continue; }
        Placement inverse = table.rest[at(node)];
        planning.candidates[at(node)] = {true, below.is_bone, inverse.Inverse() * table.rest[i - 1] * below.to_node};
    }
}

int32_t candidate_above(const Planning& planning, int32_t node) {
    do { node = planning.table.parents[at(node)]; } while (node >= 0 && !planning.candidates[at(node)].exists);
    return node;
}

Place joint_place(const Candidate& candidate) {
    Placement from_node = candidate.to_node;
    return origin_of(from_node.Inverse());
}

// Whether the node ever leaves the place that it has on the candidate above it.
bool glides(const Planning& planning, int32_t node, int32_t above, double size) {
    const aiScene& scene = *planning.source->scene;
    const Candidate& candidate = planning.candidates[at(node)];
    const Candidate& carrier = planning.candidates[at(above)];
    const Place place = joint_place(candidate);
    for (unsigned a = 0; a < scene.mNumAnimations; ++a) {
        if (scene.mAnimations[a] == nullptr) { continue; }
        const NodeChannels channels = channels_of(planning.table, *scene.mAnimations[a]);
        const double duration = duration_of(*scene.mAnimations[a]);
        for (int look = 0; look <= LOOKS_AT_AN_ANIMATION; ++look) {
            const auto placed =
                placements_at(planning.table, channels, *scene.mAnimations[a], duration * look / LOOKS_AT_AN_ANIMATION);
            const Place own = transformed(placed[at(node)] * candidate.to_node, place);
            const Place carried = transformed(placed[at(above)] * carrier.to_node, place);
            if (!(length_of(own - carried) <= GLIDES * size)) { return true; }
        }
    }
    return false;
}

// ---- groups ----

int32_t group_of(const Planning& planning, int32_t node) {
    while (planning.groups[at(node)] != node) { node = planning.groups[at(node)]; }
    return node;
}

void join(Planning& planning, int32_t a, int32_t b) {
    const int32_t first = group_of(planning, a);
    const int32_t second = group_of(planning, b);
    planning.groups[at(std::max(first, second))] = std::min(first, second);
}

double size_of(const SourceScene& source) {
    Place low{};
    Place high{};
    bool has_place = false;
    for (const MeshPlace& mesh : source.places) {
        for (unsigned i = 0; i < mesh.mesh->mNumVertices; ++i) {
            const Place place = transformed(mesh.placement, mesh.mesh->mVertices[i]);
            if (!is_finite(place)) { continue; }
            for (size_t axis = 0; axis < place.size(); ++axis) {
                low[axis] = has_place ? std::min(low[axis], place[axis]) : place[axis];
                high[axis] = has_place ? std::max(high[axis], place[axis]) : place[axis];
            }
            has_place = true;
        }
    }
    return length_of(high - low);
}

void join_groups(Planning& planning, double size) {
    for (size_t i = 0; i < planning.candidates.size(); ++i) {
        if (!planning.candidates[i].exists) { continue; }
        const auto node = static_cast<int32_t>(i);
        const int32_t above = candidate_above(planning, node);
        if (above >= 0 && (planning.candidates[i].is_bone || !glides(planning, node, above, size))) {
            join(planning, node, above);
        }
    }
}

// ---- rows ----

std::string joint_name(const MadeSkeleton& skeleton, const aiNode& node) {
    static const std::set<std::string> TAKEN = {"translate", "rotate", "world"};
    std::string name = plain_name(node.mName.C_Str(), JOINT_NAME_LENGTH);
    if (name.empty()) { name = "joint"; }
    return free_name(name, JOINT_NAME_LENGTH, [&](const std::string& wanted) {
        return TAKEN.count(wanted) == 0 && std::none_of(skeleton.joints.begin(), skeleton.joints.end(),
                                                        [&](const MadeJoint& joint) { return joint.name == wanted; });
    });
}

void add_joint(const Planning& planning, PlannedRow& row, int32_t node) {
    const Candidate& candidate = planning.candidates[at(node)];
    int32_t above = candidate_above(planning, node);
    if (above >= 0 && group_of(planning, above) != group_of(planning, node)) { above = -1; }
    const auto parent = std::find_if(row.joints.begin(), row.joints.end(),
                                     [&](const PlannedJoint& joint) { return joint.node == above; });
    const bool has_parent = above >= 0 && parent != row.joints.end();
    const auto parent_number = has_parent ? static_cast<int32_t>(parent - row.joints.begin()) : -1;
    const std::string parent_name = has_parent ? row.skeleton.joints[at(parent_number)].name : "world";
    row.skeleton.joints.push_back({joint_name(row.skeleton, *planning.table.nodes[at(node)]), parent_name, {}});
    row.joints.push_back({node, parent_number, candidate.to_node, joint_place(candidate)});
}

std::vector<PlannedRow> make_rows(const Planning& planning, std::vector<int32_t>* row_of_group) {
    std::vector<PlannedRow> rows;
    row_of_group->assign(planning.table.nodes.size(), -1);
    for (size_t i = 0; i < planning.candidates.size(); ++i) {
        if (!planning.candidates[i].exists) { continue; }
        const auto node = static_cast<int32_t>(i);
        int32_t& row = (*row_of_group)[at(group_of(planning, node))];
        if (row < 0) {
            row = static_cast<int32_t>(rows.size());
            rows.push_back({planning.table.nodes[i]->mName.C_Str(), {}, {}});
        }
        add_joint(planning, rows[at(row)], node);
    }
    return rows;
}

// ---- skins ----

struct SkinTable {
    std::map<std::array<int32_t, 3>, int32_t> known;  // by joints and thousandths
    MadeSkeleton* skeleton;
};

int32_t skin_number(SkinTable& table, int32_t joint_a, int32_t joint_b, float weight) {
    const auto thousandths = static_cast<int32_t>(std::lround(weight * WEIGHT_STEPS));
    const bool is_single = joint_b < 0 || thousandths >= static_cast<int32_t>(WEIGHT_STEPS);
    const std::array<int32_t, 3> key{joint_a, is_single ? -1 : joint_b,
                                     is_single ? static_cast<int32_t>(WEIGHT_STEPS) : thousandths};
    const auto [found, is_new] = table.known.insert({key, static_cast<int32_t>(table.skeleton->skins.size())});
    if (is_new) { table.skeleton->skins.push_back({key[0], key[1], static_cast<float>(key[2]) / WEIGHT_STEPS}); }
    return found->second;
}

int32_t joint_of(const PlannedRow& row, int32_t node) {
    const auto found = std::find_if(row.joints.begin(), row.joints.end(),
                                    [&](const PlannedJoint& joint) { return joint.node == node; });
    return found == row.joints.end() ? -1 : static_cast<int32_t>(found - row.joints.begin());
}

std::vector<int32_t> skins_of_mesh(MotionPlan& plan, PlannedRow& row, SkinTable& table, const aiMesh& mesh) {
    std::vector<int32_t> skins(mesh.mNumVertices, NO_SKIN);
    const auto shares = shares_of(mesh);
    for (size_t i = 0; i < shares.size(); ++i) {
        std::vector<std::pair<float, int32_t>> joints;
        for (const VertexShare& share : shares[i]) {
            const int32_t joint = joint_of(row, node_named(plan.table, share.bone->mName));
            if (joint >= 0) { joints.push_back({share.weight, joint}); }
        }
        if (joints.empty()) { continue; }
        std::sort(joints.begin(), joints.end(), [](const auto& a, const auto& b) {
            return a.first != b.first ? a.first > b.first : a.second < b.second;
        });
        plan.vertices_beyond_two += joints.size() > 2 ? 1 : 0;
        const bool is_single = joints.size() == 1;
        const float weight = is_single ? 1.0f : joints[0].first / (joints[0].first + joints[1].first);
        skins[i] = skin_number(table, joints[0].second, is_single ? -1 : joints[1].second, weight);
    }
    return skins;
}

void make_skins(Planning& planning, MotionPlan& plan, const std::vector<int32_t>& row_of_group) {
    std::vector<SkinTable> tables;
    for (PlannedRow& row : plan.rows) { tables.push_back({{}, &row.skeleton}); }
    plan.skins.resize(planning.source->places.size());
    for (size_t i = 0; i < plan.skins.size(); ++i) {
        MeshPlace& place = planning.source->places[i];
        if (planning.movers[i] < 0) {
            place.unit = -1;
            continue;
        }
        place.unit = row_of_group[at(group_of(planning, planning.movers[i]))];
        PlannedRow& row = plan.rows[at(place.unit)];
        SkinTable& table = tables[at(place.unit)];
        if (planning.is_skinned[i]) {
            plan.skins[i] = skins_of_mesh(plan, row, table, *place.mesh);
        } else {
            const int32_t skin = skin_number(table, joint_of(row, planning.movers[i]), -1, 1.0f);
            plan.skins[i].assign(place.mesh->mNumVertices, skin);
        }
    }
}

Planning begin_planning(SourceScene* source, const Placement& axes) {
    Planning planning{source, make_node_table(*source->scene, axes), {}, {}, {}, {}, {}};
    planning.moves = moving_nodes(planning.table, *source->scene);
    planning.candidates.resize(planning.table.nodes.size());
    planning.groups.resize(planning.table.nodes.size());
    std::iota(planning.groups.begin(), planning.groups.end(), 0);
    planning.movers.assign(source->places.size(), -1);
    planning.is_skinned.assign(source->places.size(), false);
    for (size_t i = 0; i < source->places.size(); ++i) { plan_skinned(planning, i); }
    for (size_t i = 0; i < source->places.size(); ++i) { plan_carried(planning, i); }
    plan_between(planning);
    return planning;
}

}  // namespace

std::vector<std::vector<VertexShare>> shares_of(const aiMesh& mesh) {
    std::vector<std::vector<VertexShare>> shares(mesh.mNumVertices);
    for (unsigned b = 0; mesh.mBones != nullptr && b < mesh.mNumBones; ++b) {
        const aiBone* bone = mesh.mBones[b];
        for (unsigned i = 0; bone != nullptr && bone->mWeights != nullptr && i < bone->mNumWeights; ++i) {
            const aiVertexWeight& weight = bone->mWeights[i];
            const bool counts = weight.mVertexId < mesh.mNumVertices && std::isfinite(weight.mWeight);
            if (counts && weight.mWeight > 0.0f) { shares[weight.mVertexId].push_back({bone, weight.mWeight}); }
        }
    }
    return shares;
}

bool scene_moves(const SourceScene& source) {
    SourceScene copy = source;
    const Planning planning = begin_planning(&copy, Placement());
    return std::any_of(planning.movers.begin(), planning.movers.end(), [](int32_t mover) { return mover >= 0; });
}

MotionPlan plan_motion(SourceScene* source, const Placement& axes) {
    Planning planning = begin_planning(source, axes);
    MotionPlan plan;
    plan.size = size_of(*source);
    join_groups(planning, plan.size);
    std::vector<int32_t> row_of_group;
    plan.rows = make_rows(planning, &row_of_group);
    plan.table = planning.table;
    make_skins(planning, plan, row_of_group);
    const bool has_still = std::any_of(source->places.begin(), source->places.end(),
                                       [](const MeshPlace& place) { return place.unit < 0; });
    if (has_still) {
        for (MeshPlace& place : source->places) {
            if (place.unit < 0) { place.unit = static_cast<int32_t>(plan.rows.size()); }
        }
        plan.rows.push_back({"still", {}, {}});
    }
    source->unit_names.clear();
    for (const PlannedRow& row : plan.rows) { source->unit_names.push_back(row.name); }
    return plan;
}

void place_joints(MotionPlan* plan, double scale) {
    constexpr double FARTHEST = 16777215.0;
    for (PlannedRow& row : plan->rows) {
        for (size_t joint = 0; joint < row.joints.size(); ++joint) {
            for (size_t i = 0; i < 3; ++i) {
                const double scaled = std::clamp(row.joints[joint].place[i] * scale, -FARTHEST, FARTHEST);
                row.skeleton.joints[joint].place[i] = static_cast<int32_t>(std::lround(scaled));
            }
        }
    }
}

}  // namespace pelt
