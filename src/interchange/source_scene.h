// What of a scene is drawn, and where: its meshes at the places of their nodes, in the axes of this system.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <assimp/matrix4x4.h>
#include <assimp/mesh.h>
#include <assimp/scene.h>

#include "interchange/import.h"

namespace pelt {

using Placement = aiMatrix4x4t<double>;
using Place = std::array<double, 3>;

// A mesh at the place of a node that names it. Nothing is owned.
struct MeshPlace {
    const aiMesh* mesh;
    const aiNode* node;
    Placement placement;  // from the mesh's own space into this system's axes, not scaled
    int32_t unit;         // number of the node among those that have meshes
};

struct SourceScene {
    const aiScene* scene;
    std::vector<MeshPlace> places;
    std::vector<std::string> unit_names;  // by unit: the names of the nodes
    std::string error;                    // why nothing can be made of it; else empty
};

// The turn from the source's axes into those of this system: right-handed, z up.
Placement axes_placement(ImportUp up);

// Which axis points up, as asked for or as files of this format mostly have it.
ImportUp up_of(const std::string& format, ImportUp wanted);

SourceScene find_meshes(const aiScene& scene, ImportUp up);

// The product of all placements from the root to the node, in double precision.
Placement placement_of(const aiNode* node);

Place transformed(const Placement& placement, const aiVector3D& v);

// Below zero for a placement that mirrors.
double placement_determinant(const Placement& placement);

// Direction of a normal under the placement, of length 1; zeros for none.
Place transformed_normal(const Placement& placement, const aiVector3D& normal);

bool is_finite(const Place& place);

// Whether the face has corners that exist, as many as a mesh of sense has.
bool face_is_sound(const aiMesh& mesh, const aiFace& face);

}  // namespace pelt
