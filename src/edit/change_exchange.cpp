// The exchange of what a change set holds with what is there.
//
// What surprises: it goes in rounds over all entries, because things move between the scene and Parked as a whole:
// first everything goes out that does not stay, then comes in what belongs there, then the plain records are put right
// wherever their lists are by then, and last what is only known when all stands: states, placements, poses.
#include <cstring>
#include <unordered_set>

#include "edit/change_set.h"
#include "edit/place_image.h"
#include "foundation/text.h"
#include "images/image_registry.h"
#include "motion/transform_state.h"
#include "scene/states.h"

namespace pelt {

namespace {

char* text_or_null(const unsigned char** at, bool is_there) {
    if (!is_there) { return nullptr; }
    const auto* text = reinterpret_cast<const char*>(*at);
    *at += std::strlen(text) + 1;
    return str_dup(text);
}

// Frees a slot for what stood there: a record of this run that came since moves on, and its owner learns where to.
template <typename State, typename Owner>
void make_room(KeyedList* states, int32_t slot, Owner owner) {
    const auto* found = list_at<const State>(states, slot, 0);
    if (found == nullptr) { return; }
    const State state = *found;
    list_remove_slot(states, slot);
    // The slot that is wanted is held while the other one is looked for.
    list_add_at(states, slot, -1);
    const int32_t other = list_slot_for(states, state.id);
    list_remove_slot(states, slot);
    if (auto* moved = static_cast<State*>(list_add_at(states, other, state.id))) {
        *moved = state;
        owner(state, other);
    }
}

void write_vertices(unsigned char* element, const unsigned char* image, const unsigned char* end, size_t element_size,
                    size_t vertices, int32_t vertex_size) {
    std::memcpy(element, image, element_size);
    auto* list = reinterpret_cast<KeyedList*>(element + vertices);
    list_init(list, vertex_size, KEY_NONE);
    int32_t key = 0;
    for (const unsigned char* at = image + element_size; at < end; at += vertex_size) {
        std::memcpy(list_add(list, key++), at, static_cast<size_t>(vertex_size));
    }
}

}  // namespace

class ChangeExchange {
public:
    ChangeExchange(ChangeSet* before, ChangeSet* now)
        : session_(before->session_), parked_(before->parked_), before_(before), now_(now) {}

    void run();

private:
    // What one entry stands for, in both states.
    struct Both {
        const ChangeEntry* entry;
        const unsigned char* image;  // behind the key
        const unsigned char* key;
        const ChangeEntry* now;
        const unsigned char* now_image;
        Model* model;

        bool was() const { return entry->occupied != 0; }
        bool is() const { return now->occupied != 0; }
        bool stays(size_t key_size) const {
            return was() && is() && std::memcmp(key, now_image - key_size, key_size) == 0;
        }
        int32_t slot() const { return entry->place.slot; }
        const unsigned char* end() const { return key + entry->size; }

        // Zero in every byte where the entry has none.
        template <typename Record>
        Record record() const {
            if (static_cast<size_t>(end() - image) >= sizeof(Record)) { return image_read<Record>(image); }
            Record blank;
            std::memset(static_cast<void*>(&blank), 0, sizeof blank);
            return blank;
        }
    };

    template <typename Work>
    void for_each(Work work);
    void keep_links(Model* model);
    Both both(size_t i) const;
    void* add_back(const Both& each, KeyedList* list);

    void layer_out(const Both& each);
    void link_out(const Both& each);
    void root_out(const Both& each);
    void model_out(Model* model, ModelAnimation* animation);
    void root_in(const Both& each);
    void link_in(const Both& each);
    void layer_in(const Both& each);
    void model_in(Model* model, bool live);
    void record_out(const Both& each, Layer* layer);
    void record_in(const Both& each, Layer* layer);
    void rest(const Point& point);
    void images_in(const Both& each, Layer* layer, LayerImage* image);
    void state_in(const Both& each);
    void hang(const Both& each);
    void fields_in(const Both& each);
    void scene_fields_in(const Both& each);
    void link_state_in(const Both& each);
    void forget_caches(Model* model);
    void pose(const std::unordered_set<const Model*>& touched, bool links);

    Session* session_;
    Parked* parked_;
    ChangeSet* before_;
    ChangeSet* now_;
};

ChangeExchange::Both ChangeExchange::both(size_t i) const {
    const ChangeEntry& entry = before_->entries_[i];
    const ChangeEntry& now = now_->entries_[i];
    const size_t key_size = place_form(entry.place.kind).key_size;
    const unsigned char* key = before_->bytes_.data() + entry.at;
    return Both{&entry,
                key + key_size,
                key,
                &now,
                now_->bytes_.data() + now.at + key_size,
                entry.place.model != 0 ? change_watched_model(entry.place.model) : nullptr};
}

// Calls work for each entry whose place was there when the exchange began.
template <typename Work>
void ChangeExchange::for_each(Work work) {
    const size_t count = before_->entries_.size();
    for (size_t i = 0; i < count; ++i) {
        const Both each = both(i);
        const bool lost = each.entry->place.model != 0 && each.model == nullptr;
        if (each.entry->gone == 0 && each.now->gone == 0 && !lost) { work(each); }
    }
}

void* ChangeExchange::add_back(const Both& each, KeyedList* list) {
    if (list->kind == KEY_STRING) { return list_add_at(list, each.slot(), reinterpret_cast<const char*>(each.key)); }
    return list_add_at(list, each.slot(), image_read<int32_t>(each.key));
}

// ---- out ----

void ChangeExchange::layer_out(const Both& each) {
    auto* layer = list_at<Layer>(&each.model->layers, each.slot(), 0);
    if (layer == nullptr) { return; }
    const uint64_t wanted = each.record<LayerImageOfSlot>().serial;
    if (each.stays(place_form(CONTENT_LAYERS).key_size) && wanted == layer->serial) { return; }
    session_forget_layer(session_, layer);
    parked_->put_layer(*layer);
    list_remove_slot(&each.model->layers, each.slot());
}

// What scripts know the links of a model by goes with the model, and comes back with it.
void ChangeExchange::keep_links(Model* model) {
    if (model == nullptr) { return; }
    const auto links = list_elements<ChildLink>(model->children);
    for (auto link = links.begin(); link != links.end(); ++link) {
        if (link->state_index >= 0) {
            now_->note(ChangePlace{model->serial, 0, CONTENT_CHILDREN, link.slot()}, model, nullptr);
        }
        if (!link->borrowed) { keep_links(link->model); }
    }
}

void ChangeExchange::model_out(Model* model, ModelAnimation* animation) {
    if (model == nullptr) { return; }
    keep_links(model);
    session_forget_model(session_, model);
    parked_->put_model(model, animation);
}

void ChangeExchange::link_out(const Both& each) {
    auto* link = list_at<ChildLink>(&each.model->children, each.slot(), 0);
    if (link == nullptr) { return; }
    const auto wanted = each.record<LinkImage>();
    const bool stays = each.stays(place_form(CONTENT_CHILDREN).key_size);
    const bool same_model = stays && link->model != nullptr && wanted.model == link->model->serial;
    if (!link->borrowed && !same_model) {
        model_out(link->model, nullptr);
        link->model = nullptr;
    }
    if (stays) { return; }
    session_forget_child(session_, link);
    list_remove_slot(&each.model->children, each.slot());
}

void ChangeExchange::root_out(const Both& each) {
    const auto* found = list_at<const RootModel>(&session_->root_models, each.slot(), 0);
    if (found == nullptr) { return; }
    const RootModel root = *found;
    const bool same_model = root.model != nullptr && each.record<RootImage>().model == root.model->serial;
    if (each.stays(place_form(PLACE_ROOT).key_size) && same_model) { return; }
    list_remove_slot(&session_->root_models, each.slot());
    model_out(root.model, root.animation);
}

// ---- in ----

void ChangeExchange::root_in(const Both& each) {
    if (!each.was()) { return; }
    const auto image = each.record<RootImage>();
    if (list_at(&session_->root_models, each.slot(), 0) != nullptr) { return; }
    Model* model = parked_->take_model(image.model);
    if (model == nullptr) { return; }
    auto* root = static_cast<RootModel*>(add_back(each, &session_->root_models));
    *root = image.root;
    root->model = model;
    model_in(model, true);
}

void ChangeExchange::model_in(Model* model, bool live) {
    if (!live) { return; }
    change_watch(model, WATCH_IN_SCENE);
    model_hold_images(model, false);
}

void ChangeExchange::link_in(const Both& each) {
    if (!each.was()) { return; }
    const auto image = each.record<LinkImage>();
    auto* link = list_at<ChildLink>(&each.model->children, each.slot(), 0);
    Model* model = link != nullptr ? link->model : nullptr;
    const int32_t state_index = link != nullptr ? link->state_index : -1;
    if (link == nullptr) { link = static_cast<ChildLink*>(add_back(each, &each.model->children)); }
    if (link == nullptr) { return; }
    if (image.link.borrowed) {
        model = image.model != 0 ? change_watched_model(image.model) : nullptr;
    } else if (Model* taken = parked_->take_model(image.model)) {
        model = taken;
        model_in(model, each.model->watched == WATCH_IN_SCENE);
    }
    *link = image.link;
    link->model = model;
    link->state_index = state_index;
}

void ChangeExchange::layer_in(const Both& each) {
    KeyedList* layers = &each.model->layers;
    const auto image = each.record<LayerImageOfSlot>();
    auto* layer = list_at<Layer>(layers, each.slot(), 0);
    if (each.was() && layer == nullptr) {
        Layer taken{};
        if (!parked_->take_layer(image.serial, &taken)) { return; }
        layer = static_cast<Layer*>(add_back(each, layers));
        *layer = taken;
        if (each.model->watched == WATCH_IN_SCENE) { layer_hold_images(layer, false); }
    }
    if (auto* bytes = static_cast<unsigned char*>(list_slot_bytes(layers, each.slot()))) {
        const size_t first = each.was() ? 0 : LAYER_LEFT_OVER;
        const size_t end = each.was() ? LAYER_SETTINGS_SIZE : LAYER_LEFT_OVER_END;
        std::memcpy(bytes + first, image.settings + first, end - first);
    }
}

// ---- plain records ----

void ChangeExchange::record_out(const Both& each, Layer* layer) {
    const ChangePlace& place = each.entry->place;
    const PlaceForm& form = place_form(place.kind);
    KeyedList* list = place_list(session_, place, each.model, layer);
    auto* element = static_cast<unsigned char*>(list_at(list, each.slot(), 0));
    if (element == nullptr || (form.is_plain && each.stays(form.key_size))) { return; }
    if (place.kind == CONTENT_POINTS) {
        auto* point = reinterpret_cast<Point*>(element);
        if (point->state_index >= 0) { list_remove_slot(&session_->point_states, point->state_index); }
    } else if (place.kind == CONTENT_JOINTS) {
        session_forget_joint(session_, reinterpret_cast<Joint*>(element));
    } else if (place.kind == CONTENT_TRIANGLES) {
        auto* triangle = reinterpret_cast<Triangle*>(element);
        if (triangle->state_index >= 0) { list_remove_slot(&session_->triangle_caches, triangle->state_index); }
    } else if (form.vertices != 0) {
        list_free(reinterpret_cast<KeyedList*>(element + form.vertices));
    } else if (place.kind == CONTENT_IMAGES) {
        for (const int32_t id : reinterpret_cast<LayerImage*>(element)->image_id) {
            if (id > 0 && layer->holds_images) {
                image_unhold(id);
            } else if (id > 0) {
                image_release_id(id);
            }
        }
    }
    list_remove_slot(list, each.slot());
}

void ChangeExchange::record_in(const Both& each, Layer* layer) {
    const ChangePlace& place = each.entry->place;
    const PlaceForm& form = place_form(place.kind);
    KeyedList* list = place_list(session_, place, each.model, layer);
    const auto size = static_cast<size_t>(list->element_size);
    auto* element = static_cast<unsigned char*>(list_at(list, each.slot(), 0));
    int32_t state_index = -1;
    if (element != nullptr && form.state_index != 0) {
        std::memcpy(&state_index, element + form.state_index, sizeof state_index);
    }
    if (each.was() && element == nullptr) { element = static_cast<unsigned char*>(add_back(each, list)); }
    if (form.is_plain) {
        if (!each.was() && place.kind == CONTENT_POINTS) {
            element = static_cast<unsigned char*>(list_slot_bytes(list, each.slot()));
        }
        if (element == nullptr) { return; }
        std::memcpy(element, each.image, size);
        if (form.state_index != 0) { std::memcpy(element + form.state_index, &state_index, sizeof state_index); }
        if (place.kind == CONTENT_POINTS) { rest(*reinterpret_cast<const Point*>(element)); }
    } else if (element == nullptr || !each.was()) {
        return;
    } else if (form.vertices != 0) {
        const int32_t vertex_size = place.kind == CONTENT_POLYGONS ? sizeof(PolygonVertex) : sizeof(int32_t);
        write_vertices(element, each.image, each.end(), size, form.vertices, vertex_size);
    } else if (place.kind == CONTENT_IMAGES) {
        images_in(each, layer, reinterpret_cast<LayerImage*>(element));
    }
}

// What joints have moved goes back to where it rests: a point that none of them moves any more is posed no more.
void ChangeExchange::rest(const Point& point) {
    auto* state = list_at<PointState>(&session_->point_states, point.state_index, 0);
    if (state == nullptr) { return; }
    state->position = point.position;
    state->normal = point.normal;
}

void ChangeExchange::images_in(const Both& each, Layer* layer, LayerImage* image) {
    *image = each.record<LayerImage>();
    for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
        const int32_t id = image->image_id[slot];
        if (id <= 0) { continue; }
        if (layer->holds_images ? image_hold(id) : image_restore(id)) { continue; }
        image->image_id[slot] = 0;
        image->pixels[slot] = nullptr;
    }
}

// ---- what is known when all stands ----

// A state went with its model. What stands in its slot since is another one, made because it was asked for.
void ChangeExchange::state_in(const Both& each) {
    KeyedList* states = &session_->model_states;
    const auto image = each.record<StateImage>();
    Model* model = each.was() ? change_watched_model(image.model) : nullptr;
    if (model == nullptr) { return; }
    auto* state = list_at<ModelState>(states, model->state_index, 0);
    if (state == nullptr) {
        make_room<ModelState>(states, each.slot(),
                              [](const ModelState& moved, int32_t slot) { moved.model->state_index = slot; });
        state = static_cast<ModelState*>(add_back(each, states));
        model->state_index = each.slot();
    }
    if (state == nullptr || list_int_key(states, model->state_index) != image.state.id) { return; }
    *state = image.state;
    state->model = model;
}

void ChangeExchange::hang(const Both& each) {
    const auto* root = list_at<const RootModel>(&session_->root_models, each.slot(), 0);
    const auto image = each.record<HangingImage>();
    if (root == nullptr || root->animation == nullptr || root->animation != image.animation) { return; }
    root->animation->parent_model = image.parent_model;
    root->animation->parent_animation = image.parent_animation;
    root->animation->parent_joint = image.parent_joint;
}

void ChangeExchange::fields_in(const Both& each) {
    Model* model = each.model;
    const auto image = each.record<FieldsImage>();
    const unsigned char* texts = each.image + sizeof image;
    model->tag = image.tag;
    model->has_gouraud = image.has_gouraud;
    model->has_normals = image.has_normals;
    model->bounds_min = image.bounds_min;
    model->bounds_max = image.bounds_max;
    model->changes = image.changes;
    model->version = image.version;
    if (image.leaves_names != 0) { return; }
    std::memcpy(model->path, image.path, sizeof model->path);
    std::memcpy(model->name, image.name, sizeof model->name);
    model->long_paths = image.long_paths;
    str_free(model->opened_path);
    str_free(model->long_directory);
    model->opened_path = text_or_null(&texts, image.has_opened_path != 0);
    model->long_directory = text_or_null(&texts, image.has_long_directory != 0);
}

void ChangeExchange::scene_fields_in(const Both& each) {
    const auto image = each.record<SceneFieldsImage>();
    const unsigned char* texts = each.image + sizeof image;
    session_->anim_end = image.anim_end;
    session_->radius = image.radius;
    str_free(session_->animation_path);
    str_free(session_->animation_base);
    session_->animation_path = text_or_null(&texts, image.has_path != 0);
    session_->animation_base = text_or_null(&texts, image.has_base != 0);
    if (!(session_->anim_time <= session_->anim_end)) { session_->anim_time = session_->anim_end; }
}

void ChangeExchange::link_state_in(const Both& each) {
    auto* link = list_at<ChildLink>(&each.model->children, each.slot(), 0);
    if (!each.was() || link == nullptr || each.model->watched != WATCH_IN_SCENE) { return; }
    const auto image = each.record<LinkImage>();
    KeyedList* states = &session_->child_states;
    const auto* known = list_at<const ChildState>(states, link->state_index, 0);
    if (image.state_id != 0 && (known == nullptr || known->id != image.state_id)) {
        session_forget_child(session_, link);
        make_room<ChildState>(states, image.state_slot,
                              [](const ChildState& moved, int32_t slot) { moved.link->state_index = slot; });
        auto* state = static_cast<ChildState*>(list_add_at(states, image.state_slot, image.state_id));
        if (state == nullptr) { return; }
        *state = ChildState{};
        state->id = image.state_id;
        state->time = TIME_NEVER;
        state->link = link;
        link->state_index = image.state_slot;
    }
    child_state_rebuild(list_at<ChildState>(states, link->state_index, 0));
}

// What was worked out from the content that changed is worked out anew when it is asked for.
void ChangeExchange::forget_caches(Model* model) {
    for (Layer& layer : list_elements<Layer>(model->layers)) { session_forget_layer(session_, &layer); }
    for (Joint& joint : list_elements<Joint>(model->joints)) { session_forget_joint(session_, &joint); }
}

void ChangeExchange::pose(const std::unordered_set<const Model*>& touched, bool links) {
    for (const RootModel& root : list_elements<RootModel>(session_->root_models)) {
        if (links || touched.count(root.model) != 0) {
            model_pose(session_, session_->anim_time, root.model, root.animation);
        }
    }
    // What was evaluated since is not what stood there.
    const bool moved = session_->anim_time != before_->time_ || session_->evaluations != before_->evaluations_;
    if (moved) { scene_evaluate(session_); }
}

void ChangeExchange::run() {
    const auto of_kind = [this](int32_t kind, void (ChangeExchange::*work)(const Both&)) {
        for_each([this, kind, work](const Both& each) {
            if (each.entry->place.kind == kind) { (this->*work)(each); }
        });
    };
    of_kind(CONTENT_LAYERS, &ChangeExchange::layer_out);
    of_kind(CONTENT_CHILDREN, &ChangeExchange::link_out);
    of_kind(PLACE_ROOT, &ChangeExchange::root_out);
    of_kind(PLACE_ROOT, &ChangeExchange::root_in);
    of_kind(CONTENT_CHILDREN, &ChangeExchange::link_in);
    of_kind(CONTENT_LAYERS, &ChangeExchange::layer_in);

    LayerFinder layers(parked_);
    const auto records = [&](void (ChangeExchange::*work)(const Both&, Layer*)) {
        for_each([&](const Both& each) {
            const int32_t kind = each.entry->place.kind;
            if (kind >= CONTENT_LIST_COUNT || kind == CONTENT_LAYERS || kind == CONTENT_CHILDREN) { return; }
            Layer* layer = layers.find(each.model, each.entry->place.layer);
            if (layer != nullptr || each.entry->place.layer == 0) { (this->*work)(each, layer); }
        });
    };
    records(&ChangeExchange::record_out);
    records(&ChangeExchange::record_in);

    of_kind(PLACE_MODEL_STATE, &ChangeExchange::state_in);
    of_kind(PLACE_ANIMATION, &ChangeExchange::hang);
    of_kind(PLACE_FIELDS, &ChangeExchange::fields_in);
    of_kind(PLACE_SCENE_FIELDS, &ChangeExchange::scene_fields_in);

    std::unordered_set<const Model*> touched;
    bool links = false;
    for_each([&](const Both& each) {
        const int32_t kind = each.entry->place.kind;
        links = links || kind == CONTENT_CHILDREN;
        const bool shapes = kind < CONTENT_LIST_COUNT && kind != CONTENT_CHILDREN && kind != CONTENT_BLENDS &&
                            kind != CONTENT_UVEES && kind != CONTENT_IMAGES;
        if (shapes && each.model->watched == WATCH_IN_SCENE && touched.insert(each.model).second) {
            forget_caches(each.model);
        }
    });
    of_kind(CONTENT_CHILDREN, &ChangeExchange::link_state_in);
    pose(touched, links);
}

void ChangeSet::exchange() {
    if (entries_.empty()) { return; }
    ChangeSet now(session_, parked_);
    {
        LayerFinder layers(parked_);
        for (const ChangeEntry& entry : entries_) {
            const ChangePlace& place = entry.place;
            Model* model = place.model != 0 ? change_watched_model(place.model) : nullptr;
            const bool lost = entry.gone != 0 || (place.model != 0 && model == nullptr);
            now.index_.try_emplace(place, now.entries_.size());
            if (lost || !now.capture(place, model, layers.find(model, place.layer))) {
                now.entries_.push_back(ChangeEntry{place, 0, 0, 0, 1});
            } else if (place.kind == PLACE_FIELDS) {
                constexpr size_t FLAG = offsetof(FieldsImage, leaves_names);
                std::memcpy(now.bytes_.data() + now.entries_.back().at + FLAG, bytes_.data() + entry.at + FLAG,
                            sizeof FieldsImage::leaves_names);
            }
        }
    }
    ChangeExchange(this, &now).run();
    now.time_ = session_->anim_time;
    now.evaluations_ = session_->evaluations;
    *this = std::move(now);
    index_ = {};
    entries_.shrink_to_fit();
    bytes_.shrink_to_fit();
}

}  // namespace pelt
