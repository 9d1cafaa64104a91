// Meshes made into soup: placed, turned, scaled, rounded.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "interchange/soup.h"
#include "interchange/source_scene.h"
#include "interchange/surface_look.h"

namespace pelt {

// Faces that a whole import may have: what a scene of this system can hold with its children.
inline constexpr int64_t IMPORT_FACE_LIMIT = 4000000;

// The number of what moves a vertex of the mesh, or NO_SKIN.
using SkinOf = std::function<int32_t(const MeshPlace& at, unsigned vertex)>;

// One part for each node with meshes, in the order of the nodes. Empty, with the reason in *error, for more than an
// import may have.
std::vector<SoupPart> make_parts(const SourceScene& source, double scale, LookBook& book, const SkinOf& skin_of,
                                 std::string* error);

}  // namespace pelt
