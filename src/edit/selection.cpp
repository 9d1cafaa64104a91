// The selection and what is done with it. What surprises: an entry outlives the model that it names, since closing a
// scene leaves the selection alone. So no entry is followed before the states confirm that its id still stands for
// that very model; one that does not is answered like a model without a state.
#include "edit/selection.h"

#include <cmath>

#include "edit/bounds.h"
#include "formats/model_reader.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/change.h"
#include "scene/model_tree.h"

namespace pelt {

namespace {

constexpr int UNUSED_LISTS = 6;
// Sizes of the elements that the unnamed lists would hold.
constexpr int32_t UNUSED_ELEMENT_SIZES[UNUSED_LISTS] = {12, 12, 12, 12, 12, 8};

const Vec3 ORIGIN{0.0f, 0.0f, 0.0f};

void init_set(SelectionSet* set) {
    list_init(&set->models, sizeof(SelectedModel), KEY_INT);
    for (int i = 0; i < UNUSED_LISTS; ++i) { list_init(&set->unused[i], UNUSED_ELEMENT_SIZES[i], KEY_INT); }
    list_init(&set->children, sizeof(SelectedChild), KEY_INT);
}

int clear_set(SelectionSet* set) {
    list_clear(&set->models);
    for (KeyedList& list : set->unused) { list_clear(&list); }
    list_clear(&set->children);
    set->centre = ORIGIN;
    set->axis = ORIGIN;
    return 1;
}

void replace_list(const KeyedList* source, KeyedList* destination) {
    list_free(destination);
    list_copy(source, destination);
}

// Whether a model of the scene is the one that was selected. A model that was closed may have left both its address
// and the number of its key to a new one: ids of links and of models are counted apart.
bool is_entry_model(const SelectedModel* entry, const Model* model) {
    return model != nullptr && model == entry->model && model->serial == entry->serial;
}

int store_entry(Session* session, int32_t id, Model* model) {
    SelectedModel* entry = list_add<SelectedModel>(&session->selection.models, id);
    if (entry == nullptr) { return 0; }
    *entry = SelectedModel{model, model != nullptr ? model->serial : 0};
    return 1;
}

// Calls work(model) for each selected model in the order of the list, and ends with 0 at the first that is gone or
// for which the work fails.
template <typename Work>
int for_each_selected(Session* session, Work work) {
    if (session == nullptr) { return 0; }
    const auto entries = list_elements<SelectedModel>(session->selection.models);
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        Model* model = selection_entry_model(session, entry.int_key(), &*entry);
        if (model == nullptr || !work(model)) { return 0; }
    }
    return 1;
}

bool is_zero(const Vec3& v) { return v.x == 0.0f && v.y == 0.0f && v.z == 0.0f; }

void set_row(Mat4* m, int row, const Vec3& v) {
    m->m[4 * row] = v.x;
    m->m[4 * row + 1] = v.y;
    m->m[4 * row + 2] = v.z;
}

// Rows: two directions across the axis, and the axis.
Mat4 axis_frame(const Vec3& axis) {
    const Vec3 up{0.0f, 0.0f, 1.0f};
    Vec3 u = plane_normal(&ORIGIN, &up, &axis);
    Vec3 v = plane_normal(&ORIGIN, &u, &axis);
    if (vec_is_finite(axis) && (!vec_is_finite(u) || !vec_is_finite(v))) {
        // The axis is parallel to z and leaves the directions across it open: take what a neighbouring axis has.
        u = Vec3{0.0f, -1.0f, 0.0f};
        v = Vec3{axis.z < 0.0f ? -1.0f : 1.0f, 0.0f, 0.0f};
    }
    Mat4 frame;
    mat_identity(&frame);
    set_row(&frame, 0, v);
    set_row(&frame, 1, u);
    set_row(&frame, 2, axis);
    return frame;
}

// The rotation of the texts about the centre and in the frame of the axis. Intended: with a centre of zero the axis
// has no effect, even when it is set.
Mat4 rotation_about(const Vec3& centre, const Vec3& axis, const Mat4& turn) {
    if (is_zero(centre)) { return turn; }
    Mat4 result;
    mat_identity(&result);
    mat_translate(&result, -centre.x, -centre.y, -centre.z);
    if (is_zero(axis)) {
        mat_multiply(&result, &turn, &result);
    } else {
        const Mat4 frame = axis_frame(axis);
        Mat4 frame_inverse;
        mat_inverse(&frame, &frame_inverse);
        mat_multiply(&result, &frame, &result);
        mat_multiply(&result, &turn, &result);
        mat_multiply(&result, &frame_inverse, &result);
    }
    Mat4 back;
    mat_identity(&back);
    mat_translate(&back, centre.x, centre.y, centre.z);
    mat_multiply(&result, &back, &result);
    return result;
}

// Key of the root whose model has the state with this id; 0 when there is none.
int32_t find_root_key(const Session* session, int32_t state_id) {
    const auto roots = list_elements<RootModel>(session->root_models);
    for (auto root = roots.begin(); root != roots.end(); ++root) {
        const int32_t slot = root->model != nullptr ? root->model->state_index : -1;
        const ModelState* state = list_at<const ModelState>(&session->model_states, slot, 0);
        if (state != nullptr && state->id == state_id) { return root.int_key(); }
    }
    return 0;
}

bool trees_fit(const Session* session, const Model* changed) {
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        if (model_tree_holds(root.model, changed) && !model_tree_fits(root.model)) { return false; }
    }
    return true;
}

// Lends the model of the state to the parent, unless the parent would then be its own descendant or a tree too large.
int lend_child(Session* session, Model* parent, const ModelState* state) {
    if (model_tree_holds(state->model, parent)) { return 0; }
    ChildLink* link = model_add_child(parent, state->model, state->model->name, state->translate.x, state->translate.y,
                                      state->translate.z, state->scale.x, state->scale.y, state->scale.z,
                                      state->rotate[0], state->rotate[1], state->rotate[2]);
    link->borrowed = 1;
    if (!trees_fit(session, parent)) {
        change_element(parent, nullptr, CONTENT_CHILDREN, link);
        list_remove(&parent->children, link->id);
        return 0;
    }
    return 1;
}

}  // namespace

void selection_init(Session* session) {
    if (session == nullptr) { return; }
    init_set(&session->selection);
    init_set(&session->clipboard);
    selection_clear(session);
    clipboard_clear(session);
}

int selection_clear(Session* session) { return session != nullptr ? clear_set(&session->selection) : 0; }

int clipboard_clear(Session* session) { return session != nullptr ? clear_set(&session->clipboard) : 0; }

int selection_all(Session* session) {
    if (session == nullptr) { return 0; }
    selection_clear(session);
    for (const ModelState& state : list_elements<ModelState>(session->model_states)) {
        store_entry(session, state.id, state.model);
    }
    return 1;
}

int selection_add_model(Session* session, int32_t id) {
    if (session == nullptr) { return 0; }
    if (const ModelState* state = list_find<ModelState>(&session->model_states, id)) {
        return store_entry(session, id, state->model);
    }
    if (const ChildState* child = list_find<ChildState>(&session->child_states, id)) {
        return store_entry(session, id, child->link->model);
    }
    return 0;
}

int selection_add_child(Session* session, int32_t id) {
    const ChildState* child = session != nullptr ? list_find<ChildState>(&session->child_states, id) : nullptr;
    if (child == nullptr) { return 0; }
    list_add<SelectedChild>(&session->selection.children, id)->link = child->link;
    return 1;
}

Model* selection_entry_model(const Session* session, int32_t key, const SelectedModel* entry) {
    if (session == nullptr || entry == nullptr) { return nullptr; }
    const ModelState* state = list_find<ModelState>(&session->model_states, key);
    if (state != nullptr && is_entry_model(entry, state->model)) { return state->model; }
    const ChildState* child = list_find<ChildState>(&session->child_states, key);
    const bool is_child = child != nullptr && child->link != nullptr && is_entry_model(entry, child->link->model);
    return is_child ? child->link->model : nullptr;
}

Model* selection_current_model(Session* session) {
    if (session == nullptr) { return nullptr; }
    int32_t key = 0;
    const SelectedModel* first = list_first<SelectedModel>(&session->selection.models, &key);
    return selection_entry_model(session, key, first);
}

int selection_copy(Session* session) {
    if (session == nullptr) { return 0; }
    const SelectionSet& from = session->selection;
    SelectionSet& to = session->clipboard;
    replace_list(&from.models, &to.models);
    for (int i = 0; i < UNUSED_LISTS; ++i) { replace_list(&from.unused[i], &to.unused[i]); }
    replace_list(&from.children, &to.children);
    session->clipboard_cut = 0;
    return 1;
}

// Intended: nothing leaves the selection or the scene.
int selection_cut(Session* session) {
    if (!selection_copy(session)) { return 0; }
    session->clipboard_cut = 1;
    return 1;
}

// Intended: the clipboard has no reader.
int selection_paste() { return 1; }

int selection_translate(Session* session, float x, float y, float z, int relative) {
    return for_each_selected(session, [=](Model* model) {
        ModelState* state = model_state(session, model);
        if (state == nullptr) { return false; }
        change_scene_slot(session, SCENE_MODEL_STATES, model->state_index);
        const Vec3 from = relative ? state->translate : ORIGIN;
        state->translate = Vec3{from.x + x, from.y + y, from.z + z};
        model_state_rebuild(state);
        session_grow_radius(session, model);
        return true;
    });
}

int selection_scale(Session* session, float x, float y, float z, int relative) {
    return for_each_selected(session, [=](Model* model) {
        ModelState* state = model_state(session, model);
        if (state == nullptr) { return false; }
        change_scene_slot(session, SCENE_MODEL_STATES, model->state_index);
        const Vec3 from = relative ? state->scale : Vec3{1.0f, 1.0f, 1.0f};
        state->scale = Vec3{from.x * x, from.y * y, from.z * z};
        model_state_rebuild(state);
        return true;
    });
}

int selection_rotate(Session* session, const char* a, const char* b, const char* c, int relative) {
    if (session == nullptr || a == nullptr || b == nullptr || c == nullptr) { return 0; }
    Mat4 turn;
    mat_identity(&turn);
    mat_rotate_text(&turn, a, b, c);  // a bad text leaves what was built before it
    const Mat4 rotation = rotation_about(session->selection.centre, session->selection.axis, turn);
    return for_each_selected(session, [=](Model* model) {
        ModelState* state = model_state(session, model);
        if (state == nullptr) { return false; }
        change_scene_slot(session, SCENE_MODEL_STATES, model->state_index);
        if (relative) {
            mat_multiply(&state->rotation, &rotation, &state->rotation);
        } else {
            state->rotation = rotation;
        }
        model_state_rebuild(state);
        return true;
    });
}

int selection_set_centre(Session* session, float x, float y, float z) {
    if (session == nullptr) { return 0; }
    session->selection.centre = Vec3{x, y, z};
    return 1;
}

int selection_set_axis(Session* session, float x, float y, float z) {
    if (session == nullptr) { return 0; }
    const Vec3& centre = session->selection.centre;
    session->selection.axis = Vec3{x - centre.x, y - centre.y, z - centre.z};
    vec_normalise(&session->selection.axis);
    return 1;
}

int selection_delete(Session* session) {
    if (session == nullptr) { return 0; }
    const auto entries = list_elements<SelectedModel>(session->selection.models);
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        const int32_t id = entry.int_key();
        const ModelState* state = list_find<ModelState>(&session->model_states, id);
        if (state == nullptr || !is_entry_model(&*entry, state->model)) { return 0; }
        if (!session_remove_root(session, find_root_key(session, id))) { return 0; }
    }
    return selection_clear(session);
}

int selection_add_data(Session* session, const char* text) {
    if (text == nullptr) { return 0; }
    return for_each_selected(session, [=](Model* model) {
        // A joint of this name is the one record that reading may write anew, without a thought for its state.
        session_forget_joint(session, list_find<Joint>(&model->joints, "world"));
        return model_read_data(model, text) != 0;
    });
}

int selection_add_child_model(Session* session, int32_t id) {
    if (session == nullptr || list_find(&session->selection.models, id) != nullptr) { return 0; }
    const int added = for_each_selected(session, [=](Model* model) {
        const ModelState* state = list_find<ModelState>(&session->model_states, id);
        return state != nullptr && state->model != nullptr && lend_child(session, model, state) != 0;
    });
    return added ? selection_clear(session) : 0;
}

}  // namespace pelt
