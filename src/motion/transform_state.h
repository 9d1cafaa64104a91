// Evaluated placements of models, joints, children and points.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

// The record of its owner, created on first use; null for a null argument.
ModelState* model_state(Session* session, Model* model);
JointState* joint_state(Session* session, Model* model, Joint* joint);
ChildState* child_state(Session* session, ChildLink* link);
PointState* point_state(Session* session, Point* point);

void scene_evaluate(Session* session);  // every root model at anim_time
void model_evaluate(Session* session, float time, Model* model, ModelAnimation* animation);

// The poses of its joints and points and the places of its links alone, made anew: for a model whose content was
// changed while it is posed. Nothing for a model that no clip moves.
void model_pose(Session* session, float time, Model* model, ModelAnimation* animation);
void joints_evaluate(Session* session, float time, Model* model, ModelAnimation* animation);
void joint_evaluate(Session* session, float time, Model* model, ModelAnimation* animation, Joint* joint);
void points_evaluate(Session* session, float time, Model* model);

// The record of a point that was edited, as the joints stand now; the point belongs to the model.
void point_pose_anew(Session* session, Model* model, Point* point);

// One link and all below it; number counts the links depth first. Returns the next free number.
int32_t child_evaluate(Session* session, float time, ChildLink* link, ModelAnimation* animation, int32_t number);

// matrix and gl_matrix from translate, scale and rotation.
void model_state_rebuild(ModelState* state);

// The same from what the line of the link says.
void child_state_rebuild(ChildState* state);

}  // namespace pelt
