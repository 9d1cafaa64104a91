// Joints, and what hangs on them, as a script asks for it: all checks come first, and then the change is made in every
// model that was read from the same file. False, with nothing changed, for a refusal.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "edit/refusal.h"
#include "scene/session.h"

namespace pelt {

// What is not given stays; of a new joint that is the origin, and no parent. A place becomes whole numbers.
struct JointEdit {
    std::optional<std::string> name;
    std::optional<std::string> parent;  // "world" for none
    std::optional<Vec3> place;
    bool follow = false;  // the points of the joint, the joints below it and theirs go with it
};

// The joints belong to the model.
bool edit_joint(Session* session, Model* model, const Joint* joint, const JointEdit& edit, EditRefusal* refused);
bool edit_new_joint(Session* session, Model* model, const std::string& name, const JointEdit& edit,
                    EditRefusal* refused);
bool edit_remove_joint(Session* session, Model* model, const Joint* joint, EditRefusal* refused);

// The points, which are the model's, follow these joints of it: null for none. With one joint they follow it whole,
// with two the first by the share.
struct Binding {
    const Joint* joint_a;
    const Joint* joint_b;
    float share;
};
bool edit_bind(Session* session, Model* model, const std::vector<int32_t>& points, const Binding& binding,
               EditRefusal* refused);

// The share by which points follow their first joint, -1 to 2.
bool edit_weight(Session* session, Model* model, const std::vector<int32_t>& points, float weight,
                 EditRefusal* refused);

// The joint that a line of the file would find by this name; null for none and for "world".
const Joint* joint_named(const Model* model, const std::string& name);

// Whether a joint of this name would hang on itself by hanging on this parent.
bool joint_would_hang_on_itself(const Model* model, const std::string& name, const std::string& parent);

// The counts of joints and blend groups become those of the points that they would be dealt; groups without points go.
// Tells of what changes.
void settle_counts(Model* model);

}  // namespace pelt
