// Whether two models say the same, as a file would.
#pragma once

#include <string>

namespace pelt {

struct Model;
struct Vec3;

// Empty when both models hold the same: both has-flags, joints and blend groups in order, points by id, layers in order
// with all settings, primitives and lines in order, texture coordinates by point, child links in order. Normals may be
// one last place apart; of images and children the names count. Otherwise one line with the first difference, the
// values in the order of the arguments: "layer roof: transparency 0.5 and 0.25". Boxes, computed texture coordinates,
// slots and running ids are not looked at. Two nulls are the same. Without counts those of joints and blend groups are
// not compared, and the second model may lack groups: what they give their points is in these.
std::string model_difference(const Model* a, const Model* b, bool counts = true);

// Whether each component is the same or the next number to it.
bool normals_match(const Vec3& a, const Vec3& b);

}  // namespace pelt
