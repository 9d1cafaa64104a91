// Lists among the arguments of the verb "scene": points, places, numbers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/math3d.h"

namespace pelt {

struct Model;
struct PrimitiveName;
struct SceneWords;

// The words of a list, in Tcl's form. False after a refusal that says what it should be a list of.
bool scene_read_list(const char* what, const char* word, const char* allowed, std::vector<std::string>* words);

// The ids of points of the model itself, in the order in which they are named first: one or more of them, each once; or
// none too; or one or more, as often as they are named.
enum ScenePoints { SCENE_POINTS_SOME, SCENE_POINTS_OR_NONE, SCENE_POINTS_ALL };
bool scene_read_points(const Model* model, const char* word, std::vector<int32_t>* ids,
                       ScenePoints which = SCENE_POINTS_SOME);

// A list of exactly three finite numbers.
bool scene_read_vec(const char* what, const char* word, Vec3* value);

// Any finite number that a float holds.
bool scene_read_finite(const char* what, const char* word, float* value);

// One or more faces, or lines, by their names.
bool scene_read_primitives(const char* what, const char* word, bool lines, std::vector<PrimitiveName>* names);

}  // namespace pelt
