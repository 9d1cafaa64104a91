// Meshes made into soup: placed, turned, scaled, rounded.
#pragma once

#include <string>
#include <vector>

#include "interchange/soup.h"
#include "interchange/source_scene.h"
#include "interchange/surface_look.h"

namespace pelt {

// Faces that a whole import may have: what a scene of this system can hold with its children.
inline constexpr int64_t IMPORT_FACE_LIMIT = 4000000;

// One part for each unit of the source, in their order. The skins tell by place of the source and by vertex what moves
// it; a place without has none. Empty, with the reason in *error, for more than an import may have.
std::vector<SoupPart> make_parts(const SourceScene& source, double scale, LookBook& book,
                                 const std::vector<std::vector<int32_t>>& skins, std::string* error);

}  // namespace pelt
