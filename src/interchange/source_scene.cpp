// Walks the nodes of a scene and collects the meshes that they show.
//
// What surprises: nothing of the scene is trusted. Its reader is a stranger's, and the tests make scenes that no reader
// makes: numbers of meshes that do not exist, nodes that lie below themselves.
#include "interchange/source_scene.h"

#include <cmath>
#include <set>
#include <utility>

namespace pelt {

namespace {

constexpr size_t NODE_LIMIT = 1000000;
constexpr size_t PLACE_LIMIT = 1000000;

struct WaitingNode {
    const aiNode* node;
    Placement placement;
};

Placement placement_from(const aiMatrix4x4& m) {
    return Placement(m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4, m.c1, m.c2, m.c3, m.c4, m.d1, m.d2, m.d3, m.d4);
}

void take_meshes(SourceScene& found, const WaitingNode& waiting, const Placement& axes) {
    const aiNode& node = *waiting.node;
    bool has_mesh = false;
    for (unsigned i = 0; node.mMeshes != nullptr && i < node.mNumMeshes; ++i) {
        if (node.mMeshes[i] >= found.scene->mNumMeshes) { continue; }
        const aiMesh* mesh = found.scene->mMeshes[node.mMeshes[i]];
        const bool is_mesh = mesh != nullptr && mesh->mVertices != nullptr && mesh->mNumVertices > 0;
        if (!is_mesh || (mesh->mNumFaces > 0 && mesh->mFaces == nullptr)) { continue; }
        if (!has_mesh) { found.unit_names.emplace_back(node.mName.C_Str()); }
        has_mesh = true;
        found.places.push_back(
            {mesh, &node, axes * waiting.placement, static_cast<int32_t>(found.unit_names.size()) - 1});
    }
}

}  // namespace

Placement axes_placement(ImportUp up) {
    if (up == UP_Z) { return Placement(); }
    return Placement(1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1);
}

ImportUp up_of(const std::string& format, ImportUp wanted) {
    if (wanted != UP_OF_FORMAT) { return wanted; }
    return format == "stl" || format == "ply" ? UP_Z : UP_Y;
}

SourceScene find_meshes(const aiScene& scene, ImportUp up) {
    SourceScene found{&scene, {}, {}, {}};
    if (scene.mMeshes == nullptr || scene.mRootNode == nullptr) {
        found.error = "there is nothing to be seen in it";
        return found;
    }
    const Placement axes = axes_placement(up);
    std::vector<WaitingNode> waiting{{scene.mRootNode, placement_from(scene.mRootNode->mTransformation)}};
    std::set<const aiNode*> met{scene.mRootNode};
    while (!waiting.empty()) {
        const WaitingNode next = waiting.back();
        waiting.pop_back();
        take_meshes(found, next, axes);
        for (unsigned i = next.node->mNumChildren; next.node->mChildren != nullptr && i > 0; --i) {
            const aiNode* child = next.node->mChildren[i - 1];
            if (child == nullptr || !met.insert(child).second) { continue; }
            waiting.push_back({child, next.placement * placement_from(child->mTransformation)});
        }
        if (met.size() > NODE_LIMIT || found.places.size() > PLACE_LIMIT) {
            found.error = "it has more than " + std::to_string(NODE_LIMIT) + " nodes";
            return found;
        }
    }
    if (found.places.empty()) { found.error = "there is nothing to be seen in it"; }
    return found;
}

Placement placement_of(const aiNode* node) {
    Placement result;
    size_t depth = 0;
    for (; node != nullptr && depth < NODE_LIMIT; node = node->mParent, ++depth) {
        result = placement_from(node->mTransformation) * result;
    }
    return result;
}

Place transformed(const Placement& m, const aiVector3D& v) {
    const double x = v.x;
    const double y = v.y;
    const double z = v.z;
    return {m.a1 * x + m.a2 * y + m.a3 * z + m.a4, m.b1 * x + m.b2 * y + m.b3 * z + m.b4,
            m.c1 * x + m.c2 * y + m.c3 * z + m.c4};
}

double placement_determinant(const Placement& m) {
    return m.a1 * (m.b2 * m.c3 - m.b3 * m.c2) - m.a2 * (m.b1 * m.c3 - m.b3 * m.c1) + m.a3 * (m.b1 * m.c2 - m.b2 * m.c1);
}

Place transformed_normal(const Placement& m, const aiVector3D& n) {
    // The cofactors are the inverse transpose times the determinant, and exist for every placement.
    const double sign = placement_determinant(m) < 0.0 ? -1.0 : 1.0;
    const double x = n.x;
    const double y = n.y;
    const double z = n.z;
    Place out = {(m.b2 * m.c3 - m.b3 * m.c2) * x + (m.b3 * m.c1 - m.b1 * m.c3) * y + (m.b1 * m.c2 - m.b2 * m.c1) * z,
                 (m.a3 * m.c2 - m.a2 * m.c3) * x + (m.a1 * m.c3 - m.a3 * m.c1) * y + (m.a2 * m.c1 - m.a1 * m.c2) * z,
                 (m.a2 * m.b3 - m.a3 * m.b2) * x + (m.a3 * m.b1 - m.a1 * m.b3) * y + (m.a1 * m.b2 - m.a2 * m.b1) * z};
    const double length = std::sqrt(out[0] * out[0] + out[1] * out[1] + out[2] * out[2]);
    if (!std::isfinite(length) || length <= 0.0) { return {0.0, 0.0, 0.0}; }
    for (double& component : out) { component *= sign / length; }
    return out;
}

bool is_finite(const Place& place) {
    return std::isfinite(place[0]) && std::isfinite(place[1]) && std::isfinite(place[2]);
}

bool face_is_sound(const aiMesh& mesh, const aiFace& face) {
    if (face.mIndices == nullptr) { return false; }
    for (unsigned i = 0; i < face.mNumIndices; ++i) {
        if (face.mIndices[i] >= mesh.mNumVertices) { return false; }
    }
    return true;
}

}  // namespace pelt
