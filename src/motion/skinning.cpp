// The places and normals of points that joints move.
#include "motion/transform_state.h"

namespace pelt {

namespace {

void pose_by_one(const Point& point, const JointState* joint, PointState* state) {
    mat_transform_point(&joint->skin, &point.position, &state->position);
    mat_transform_point(&joint->normal_matrix, &point.normal, &state->normal);
}

// The share of a second joint that is absent goes to the place at rest.
void pose_by_two(const Point& point, const JointState* joint_a, const JointState* joint_b, PointState* state) {
    Vec3 position_a, normal_a;
    Vec3 position_b = point.position;
    Vec3 normal_b = point.normal;
    mat_transform_point(&joint_a->skin, &point.position, &position_a);
    mat_transform_point(&joint_a->normal_matrix, &point.normal, &normal_a);
    if (joint_b != nullptr) {
        mat_transform_point(&joint_b->skin, &point.position, &position_b);
        mat_transform_point(&joint_b->normal_matrix, &point.normal, &normal_b);
    }
    const float rest = 1.0f - point.weight;
    state->position = vec_weighted(position_a, point.weight, position_b, rest);
    state->normal = vec_weighted(normal_a, point.weight, normal_b, rest);  // not made unit length again; intended
}

// The record of the joint that was asked for last: points of one joint mostly follow each other.
struct JointLookup {
    Session* session;
    Model* model;
    Joint* joint = nullptr;
    const JointState* state = nullptr;

    const JointState* operator()(Joint* wanted) {
        if (wanted != joint) {
            joint = wanted;
            state = joint_state(session, model, wanted);
        }
        return state;
    }
};

// Intended: a point that no joint moves keeps the normal that its record was made with.
void pose_point(const Point& point, JointLookup* lookup_a, JointLookup* lookup_b, PointState* state) {
    if (point.joint_a == nullptr) {
        state->position = point.position;
        return;
    }
    const JointState* joint_a = (*lookup_a)(point.joint_a);
    if (joint_a == nullptr) { return; }
    if (point.weight >= 1.0f) {
        pose_by_one(point, joint_a, state);
    } else if (point.weight > 0.0f) {
        pose_by_two(point, joint_a, (*lookup_b)(point.joint_b), state);
    } else if (const JointState* joint_b = (*lookup_b)(point.joint_b)) {
        pose_by_one(point, joint_b, state);
    }
}

}  // namespace

void points_evaluate(Session* session, float, Model* model) {
    if (session == nullptr || model == nullptr) { return; }
    JointLookup lookup_a{session, model};
    JointLookup lookup_b{session, model};
    for (Point& point : list_elements<Point>(model->points)) {
        if (PointState* state = point_state(session, &point)) { pose_point(point, &lookup_a, &lookup_b, state); }
    }
}

void point_pose_anew(Session* session, Model* model, Point* point) {
    if (model == nullptr) { return; }
    PointState* state = point_state(session, point);
    if (state == nullptr) { return; }
    state->position = point->position;
    state->normal = point->normal;
    JointLookup lookup_a{session, model};
    JointLookup lookup_b{session, model};
    pose_point(*point, &lookup_a, &lookup_b, state);
}

}  // namespace pelt
