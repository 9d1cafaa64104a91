// What was there before a number of changes.
#include "edit/change_set.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "edit/place_image.h"
#include "images/image_registry.h"

namespace pelt {

namespace {

constexpr size_t TEXT_KEY_SIZE = KEY_TEXT_SIZE + 1;
constexpr size_t INT_KEY_SIZE = sizeof(int32_t);

constexpr PlaceForm FORMS[] = {
    {INT_KEY_SIZE, true, offsetof(Point, state_index), 0},     // CONTENT_POINTS
    {TEXT_KEY_SIZE, true, offsetof(Joint, state_index), 0},    // CONTENT_JOINTS
    {INT_KEY_SIZE, true, 0, 0},                                // CONTENT_BLENDS
    {TEXT_KEY_SIZE, false, 0, 0},                              // CONTENT_LAYERS
    {INT_KEY_SIZE, false, 0, 0},                               // CONTENT_CHILDREN
    {INT_KEY_SIZE, true, offsetof(Triangle, state_index), 0},  // CONTENT_TRIANGLES
    {INT_KEY_SIZE, false, 0, offsetof(Polygon, vertices)},     // CONTENT_POLYGONS
    {INT_KEY_SIZE, false, 0, offsetof(Line, vertices)},        // CONTENT_LINES
    {INT_KEY_SIZE, true, 0, 0},                                // CONTENT_UVEES
    {INT_KEY_SIZE, false, 0, 0},                               // CONTENT_IMAGES
    {0, false, 0, 0},                                          // PLACE_FIELDS
    {0, false, 0, 0},                                          // PLACE_SCENE_FIELDS
    {INT_KEY_SIZE, false, 0, 0},                               // PLACE_ROOT
    {INT_KEY_SIZE, false, 0, 0},                               // PLACE_MODEL_STATE
    {0, false, 0, 0},                                          // PLACE_ANIMATION
};

// Writes the bytes of one entry behind those that are there.
class ImageWriter {
public:
    explicit ImageWriter(std::vector<unsigned char>* bytes) : bytes_(bytes) {}

    void add(const void* from, size_t size) {
        const auto* first = static_cast<const unsigned char*>(from);
        bytes_->insert(bytes_->end(), first, first + size);
    }
    template <typename Record>
    void add_record(const Record& record) {
        add(&record, sizeof record);
    }
    void add_text(const char* text) {
        if (text != nullptr) { add(text, std::strlen(text) + 1); }
    }
    void add_zeros(size_t size) { bytes_->insert(bytes_->end(), size, 0); }
    void set_int(size_t at, int32_t value) { std::memcpy(bytes_->data() + at, &value, sizeof value); }
    size_t size() const { return bytes_->size(); }

private:
    std::vector<unsigned char>* bytes_;
};

// Zero in every byte, so that what was noted twice can be compared.
template <typename Record>
Record blank() {
    Record record;
    std::memset(static_cast<void*>(&record), 0, sizeof record);
    return record;
}

void write_key(ImageWriter* out, const KeyedList* list, int32_t slot, bool occupied, size_t size) {
    const char* text = list->kind == KEY_STRING && occupied ? list_text_key(list, slot) : nullptr;
    const int32_t number = list->kind == KEY_INT ? list_int_key(list, slot) : 0;
    if (size == INT_KEY_SIZE) {
        out->add(&number, sizeof number);
    } else {
        const size_t length = text != nullptr ? std::strlen(text) : 0;
        out->add(text != nullptr ? text : "", length);
        out->add_zeros(size - length);
    }
}

void write_plain(ImageWriter* out, const KeyedList* list, int32_t slot, const PlaceForm& form) {
    const size_t at = out->size();
    out->add(list_at(list, slot, 0), static_cast<size_t>(list->element_size));
    if (form.state_index != 0) { out->set_int(at + form.state_index, -1); }
}

// What the next point in a free slot finds there (find_or_create_point).
void write_left_over_point(ImageWriter* out, const KeyedList* list, int32_t slot) {
    auto image = blank<Point>();
    if (const auto* left = static_cast<const Point*>(list_slot_bytes(list, slot))) {
        image.weight = left->weight;
        image.joint_b = left->joint_b;
    }
    image.state_index = -1;
    out->add_record(image);
}

void write_vertices(ImageWriter* out, const unsigned char* element, size_t size, size_t vertices) {
    const auto* list = reinterpret_cast<const KeyedList*>(element + vertices);
    out->add(element, vertices);
    out->add_zeros(sizeof(KeyedList));
    out->add(element + vertices + sizeof(KeyedList), size - vertices - sizeof(KeyedList));
    for (int32_t slot = list_next_slot(list, 0); slot < list->capacity; slot = list_next_slot(list, slot + 1)) {
        out->add(list_at(list, slot, 0), static_cast<size_t>(list->element_size));
    }
}

void write_layer(ImageWriter* out, const KeyedList* list, int32_t slot, bool occupied) {
    auto image = blank<LayerImageOfSlot>();
    if (const auto* layer = static_cast<const Layer*>(list_slot_bytes(list, slot))) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(layer);
        const size_t first = occupied ? 0 : LAYER_LEFT_OVER;
        const size_t end = occupied ? LAYER_SETTINGS_SIZE : LAYER_LEFT_OVER_END;
        std::memcpy(image.settings + first, bytes + first, end - first);
        image.serial = occupied ? layer->serial : 0;
    }
    out->add_record(image);
}

void write_link(ImageWriter* out, const Session* session, const ChildLink& link) {
    auto image = blank<LinkImage>();
    std::memcpy(static_cast<void*>(&image.link), static_cast<const void*>(&link), sizeof link);
    image.link.state_index = -1;
    image.model = link.model != nullptr ? link.model->serial : 0;
    if (const auto* state = list_at<const ChildState>(&session->child_states, link.state_index, 0)) {
        image.state_id = state->id;
        image.state_slot = link.state_index;
    }
    out->add_record(image);
}

void write_root(ImageWriter* out, const RootModel& root) {
    auto image = blank<RootImage>();
    image.root.model = root.model;
    image.root.animation = root.animation;
    image.root.row = root.row;
    image.model = root.model != nullptr ? root.model->serial : 0;
    out->add_record(image);
}

void write_state(ImageWriter* out, const ModelState& state) {
    auto image = blank<StateImage>();
    std::memcpy(static_cast<void*>(&image.state), static_cast<const void*>(&state), sizeof state);
    if (state.model != nullptr) { image.model = state.model->serial; }
    out->add_record(image);
}

void write_hanging(ImageWriter* out, const RootModel* root) {
    auto image = blank<HangingImage>();
    if (root != nullptr && root->animation != nullptr) {
        const ModelAnimation& animation = *root->animation;
        image =
            HangingImage{root->animation, animation.parent_model, animation.parent_animation, animation.parent_joint};
    }
    out->add_record(image);
}

void write_fields(ImageWriter* out, const Model& model) {
    auto image = blank<FieldsImage>();
    std::memcpy(image.path, model.path, sizeof image.path);
    std::memcpy(image.name, model.name, sizeof image.name);
    image.tag = model.tag;
    image.has_gouraud = model.has_gouraud;
    image.has_normals = model.has_normals;
    image.long_paths = model.long_paths;
    image.bounds_min = model.bounds_min;
    image.bounds_max = model.bounds_max;
    image.has_opened_path = model.opened_path != nullptr ? 1 : 0;
    image.has_long_directory = model.long_directory != nullptr ? 1 : 0;
    image.changes = model.changes;
    image.version = model.version;
    out->add_record(image);
    out->add_text(model.opened_path);
    out->add_text(model.long_directory);
}

void write_scene_fields(ImageWriter* out, const Session& session) {
    out->add_record(SceneFieldsImage{session.anim_end, session.radius, session.animation_path != nullptr ? 1 : 0,
                                     session.animation_base != nullptr ? 1 : 0});
    out->add_text(session.animation_path);
    out->add_text(session.animation_base);
}

// What stands in the slot of a list, behind its key.
void write_slot(ImageWriter* out, const Session* session, const ChangePlace& place, const KeyedList* list,
                bool occupied) {
    const PlaceForm& form = place_form(place.kind);
    const auto* element = static_cast<const unsigned char*>(list_at(list, place.slot, 0));
    write_key(out, list, place.slot, occupied, form.key_size);
    if (place.kind == CONTENT_LAYERS) {
        write_layer(out, list, place.slot, occupied);
    } else if (!occupied) {
        if (place.kind == CONTENT_POINTS) { write_left_over_point(out, list, place.slot); }
    } else if (form.is_plain) {
        write_plain(out, list, place.slot, form);
    } else if (place.kind == PLACE_MODEL_STATE) {
        write_state(out, *reinterpret_cast<const ModelState*>(element));
    } else if (form.vertices != 0) {
        write_vertices(out, element, static_cast<size_t>(list->element_size), form.vertices);
    } else if (place.kind == CONTENT_CHILDREN) {
        write_link(out, session, *reinterpret_cast<const ChildLink*>(element));
    } else if (place.kind == PLACE_ROOT) {
        write_root(out, *reinterpret_cast<const RootModel*>(element));
    } else {
        out->add(element, sizeof(LayerImage));
    }
}

}  // namespace

const PlaceForm& place_form(int32_t kind) { return FORMS[kind]; }

KeyedList* place_list(Session* session, const ChangePlace& place, Model* model, Layer* layer) {
    if (place.kind == PLACE_ROOT || place.kind == PLACE_ANIMATION) { return &session->root_models; }
    if (place.kind == PLACE_MODEL_STATE) { return &session->model_states; }
    if (place.kind >= CONTENT_LIST_COUNT || model == nullptr) { return nullptr; }
    return content_list(model, layer, static_cast<ContentList>(place.kind));
}

Layer* LayerFinder::find(Model* model, uint64_t serial) {
    if (serial == 0 || model == nullptr) { return nullptr; }
    const auto [entry, is_new] = layers_.try_emplace(model);
    if (is_new) {
        for (Layer& layer : list_elements<Layer>(model->layers)) { entry->second.emplace(layer.serial, &layer); }
    }
    const auto found = entry->second.find(serial);
    return found != entry->second.end() ? found->second : parked_->find_layer(serial);
}

ChangeSet::ChangeSet(ChangeSet&& from) noexcept
    : session_(from.session_),
      parked_(from.parked_),
      time_(from.time_),
      evaluations_(from.evaluations_),
      entries_(std::move(from.entries_)),
      bytes_(std::move(from.bytes_)),
      index_(std::move(from.index_)) {
    from.entries_.clear();
    from.bytes_.clear();
    from.index_.clear();
}

ChangeSet& ChangeSet::operator=(ChangeSet&& from) noexcept {
    clear();
    time_ = from.time_;
    evaluations_ = from.evaluations_;
    entries_ = std::move(from.entries_);
    bytes_ = std::move(from.bytes_);
    index_ = std::move(from.index_);
    from.entries_.clear();
    from.bytes_.clear();
    from.index_.clear();
    return *this;
}

void ChangeSet::clear() {
    // One by one, because what an entry names may go with it.
    for (const ChangeEntry& entry : entries_) { name(entry, -1); }
    entries_.clear();
    bytes_.clear();
    index_.clear();
}

// What an entry names is kept for as long as the entry is.
void ChangeSet::name(const ChangeEntry& entry, int change) {
    if (entry.occupied == 0 || entry.gone != 0) { return; }
    const unsigned char* image = bytes_.data() + entry.at + place_form(entry.place.kind).key_size;
    const auto name_model = [&](uint64_t serial) {
        if (serial == 0) { return; }
        change > 0 ? parked_->name_model(serial) : parked_->unname_model(serial);
    };
    if (entry.place.kind == CONTENT_LAYERS) {
        const uint64_t serial = image_read<LayerImageOfSlot>(image).serial;
        change > 0 ? parked_->name_layer(serial) : parked_->unname_layer(serial);
    } else if (entry.place.kind == CONTENT_CHILDREN) {
        const auto link = image_read<LinkImage>(image);
        if (link.link.borrowed == 0) { name_model(link.model); }
    } else if (entry.place.kind == PLACE_ROOT) {
        name_model(image_read<RootImage>(image).model);
    } else if (entry.place.kind == CONTENT_IMAGES) {
        for (const int32_t id : image_read<LayerImage>(image).image_id) {
            if (id <= 0) { continue; }
            if (change > 0) {
                image_hold(id);
            } else {
                image_unhold(id);
            }
        }
    }
}

// Appends what the place holds. False, with nothing appended, when its list is not there.
bool ChangeSet::capture(const ChangePlace& place, Model* model, Layer* layer) {
    ImageWriter out(&bytes_);
    ChangeEntry entry{place, bytes_.size(), 0, 1, 0};
    if (place.kind == PLACE_FIELDS) {
        write_fields(&out, *model);
    } else if (place.kind == PLACE_SCENE_FIELDS) {
        write_scene_fields(&out, *session_);
    } else if (place.kind == PLACE_ANIMATION) {
        write_hanging(&out, list_at<const RootModel>(&session_->root_models, place.slot, 0));
    } else {
        const KeyedList* list = place_list(session_, place, model, layer);
        if (list == nullptr) { return false; }
        entry.occupied = list_at(list, place.slot, 0) != nullptr ? 1 : 0;
        write_slot(&out, session_, place, list, entry.occupied != 0);
    }
    entry.size = static_cast<uint32_t>(bytes_.size() - entry.at);
    entries_.push_back(entry);
    name(entry, 1);
    return true;
}

void ChangeSet::note(const ChangePlace& place, Model* model, Layer* layer) {
    if (place.slot < 0) { return; }
    if (entries_.empty()) { time_ = session_->anim_time; }
    if (index_.try_emplace(place, entries_.size()).second) { capture(place, model, layer); }
}

void ChangeSet::merge(ChangeSet* from) {
    if (entries_.empty()) { time_ = from->time_; }
    for (const ChangeEntry& entry : from->entries_) {
        if (!index_.try_emplace(entry.place, entries_.size()).second) { continue; }
        ChangeEntry taken = entry;
        taken.at = bytes_.size();
        const auto first = from->bytes_.begin() + static_cast<ptrdiff_t>(entry.at);
        bytes_.insert(bytes_.end(), first, first + entry.size);
        entries_.push_back(taken);
        name(taken, 1);
    }
    from->clear();
}

void ChangeSet::settle() {
    drop_unchanged();
    evaluations_ = session_->evaluations;
    index_ = {};
    entries_.shrink_to_fit();
    bytes_.shrink_to_fit();
}

int64_t ChangeSet::bytes() const {
    return static_cast<int64_t>(sizeof *this + entries_.capacity() * sizeof(ChangeEntry) + bytes_.capacity());
}

bool ChangeSet::point_before(uint64_t model, int32_t slot, int32_t id, Vec3* place) const {
    const auto found = index_.find(ChangePlace{model, 0, CONTENT_POINTS, slot});
    if (found == index_.end()) { return false; }
    const ChangeEntry& entry = entries_[found->second];
    const unsigned char* bytes = bytes_.data() + entry.at;
    if (entry.occupied == 0 || image_read<int32_t>(bytes) != id) { return false; }
    *place = image_read<Point>(bytes + INT_KEY_SIZE).position;
    return true;
}

namespace {

// Whether what is there now is what was noted. A state that a link got since by being asked for is no change.
bool same_image(const ChangeEntry& entry, const unsigned char* before, const ChangeEntry& now_entry,
                unsigned char* now) {
    if (entry.size != now_entry.size || entry.occupied != now_entry.occupied) { return false; }
    if (entry.place.kind == CONTENT_CHILDREN && entry.occupied != 0) {
        const LinkImage noted = image_read<LinkImage>(before + INT_KEY_SIZE);
        if (noted.state_id == 0) {
            std::memcpy(now + INT_KEY_SIZE + offsetof(LinkImage, state_id), &noted.state_id, sizeof noted.state_id);
            std::memcpy(now + INT_KEY_SIZE + offsetof(LinkImage, state_slot), &noted.state_slot,
                        sizeof noted.state_slot);
        }
    }
    return std::memcmp(before, now, entry.size) == 0;
}

// Whether the fields of the model differ in nothing but the count of changes.
bool same_fields(const unsigned char* before, const unsigned char* now, size_t size) {
    constexpr size_t COUNTED = offsetof(FieldsImage, changes);
    constexpr size_t BEHIND = sizeof(FieldsImage);
    return std::memcmp(before, now, COUNTED) == 0 && std::memcmp(before + BEHIND, now + BEHIND, size - BEHIND) == 0;
}

// Notes in the image whether the names are the same in both.
void leave_same_names(unsigned char* before, const unsigned char* now, const ChangeEntry& entry,
                      const ChangeEntry& now_entry) {
    constexpr size_t NAMES = offsetof(FieldsImage, leaves_names);
    constexpr size_t BEHIND = sizeof(FieldsImage);
    const auto noted = image_read<FieldsImage>(before);
    const auto there = image_read<FieldsImage>(now);
    const int32_t same = entry.size == now_entry.size && std::memcmp(before, now, NAMES) == 0 &&
                         noted.long_paths == there.long_paths && noted.has_opened_path == there.has_opened_path &&
                         noted.has_long_directory == there.has_long_directory &&
                         std::memcmp(before + BEHIND, now + BEHIND, entry.size - BEHIND) == 0;
    std::memcpy(before + NAMES, &same, sizeof same);
}

}  // namespace

void ChangeSet::drop_unchanged() {
    LayerFinder layers(parked_);
    ChangeSet now(session_, parked_);
    std::vector<bool> keep(entries_.size(), false);
    std::vector<size_t> counted;  // fields of models where the count of changes alone differs
    std::unordered_map<uint64_t, bool> changed;
    for (size_t i = 0; i < entries_.size(); ++i) {
        const ChangeEntry& entry = entries_[i];
        Model* model = entry.place.model != 0 ? change_watched_model(entry.place.model) : nullptr;
        const unsigned char* before = bytes_.data() + entry.at;
        now.clear();
        if (entry.place.model != 0 && model == nullptr) { continue; }
        if (!now.capture(entry.place, model, layers.find(model, entry.place.layer))) { continue; }
        if (same_image(entry, before, now.entries_[0], now.bytes_.data())) { continue; }
        if (entry.place.kind == PLACE_FIELDS && entry.size == now.entries_[0].size &&
            same_fields(before, now.bytes_.data(), entry.size)) {
            counted.push_back(i);
            continue;
        }
        keep[i] = true;
        changed[entry.place.model] = true;
        if (entry.place.kind == PLACE_FIELDS) {
            leave_same_names(bytes_.data() + entry.at, now.bytes_.data(), entry, now.entries_[0]);
        }
    }
    for (const size_t i : counted) {
        keep[i] = changed.count(entries_[i].place.model) != 0;
        if (keep[i]) {
            const int32_t same = 1;
            std::memcpy(bytes_.data() + entries_[i].at + offsetof(FieldsImage, leaves_names), &same, sizeof same);
            continue;
        }
        const auto fields = image_read<FieldsImage>(bytes_.data() + entries_[i].at);
        Model* model = change_watched_model(entries_[i].place.model);
        model->changes = fields.changes;
        model->version = fields.version;
    }
    if (std::find(keep.begin(), keep.end(), false) == keep.end()) { return; }
    ChangeSet kept(session_, parked_);
    kept.time_ = time_;
    for (size_t i = 0; i < entries_.size(); ++i) {
        if (!keep[i]) { continue; }
        ChangeEntry entry = entries_[i];
        entry.at = kept.bytes_.size();
        const auto first = bytes_.begin() + static_cast<ptrdiff_t>(entries_[i].at);
        kept.bytes_.insert(kept.bytes_.end(), first, first + entry.size);
        kept.entries_.push_back(entry);
        kept.name(entry, 1);
    }
    *this = std::move(kept);
}

}  // namespace pelt
