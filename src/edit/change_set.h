// What was there before a number of changes: for each place that they touch, its content of before. Exchanged with what
// is there now, it takes the changes back and becomes what would do them again.
//
// What surprises: nothing here depends on the order of the changes. A place is named by the serials of its model and
// layer, which may be out of the scene (Parked), and by the number of a slot, so that each place is put back by itself.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "edit/parked.h"
#include "scene/change.h"

namespace pelt {

// The kinds of places beyond the lists of scene/change.h.
enum PlaceKind : int32_t {
    PLACE_FIELDS = CONTENT_LIST_COUNT,  // of a model
    PLACE_SCENE_FIELDS,
    PLACE_ROOT,
    PLACE_MODEL_STATE,
    PLACE_ANIMATION,
};

struct ChangePlace {
    uint64_t model;  // serial; 0 for a place of the session
    uint64_t layer;  // serial; 0 for a place outside a layer
    int32_t kind;    // ContentList or PlaceKind
    int32_t slot;
    bool operator==(const ChangePlace&) const = default;
};

struct ChangePlaceHash {
    size_t operator()(const ChangePlace& place) const {
        uint64_t hash = place.model * 0x9E3779B97F4A7C15ULL ^ place.layer * 0xC2B2AE3D27D4EB4FULL;
        hash ^= static_cast<uint64_t>(static_cast<uint32_t>(place.slot)) << 8 | static_cast<uint32_t>(place.kind);
        return static_cast<size_t>((hash ^ hash >> 29) * 0xBF58476D1CE4E5B9ULL);
    }
};

// The layers behind serials, in the scene and out of it, for as long as none comes or goes.
class LayerFinder {
public:
    explicit LayerFinder(Parked* parked) : parked_(parked) {}
    Layer* find(Model* model, uint64_t serial);

private:
    Parked* parked_;
    std::unordered_map<const Model*, std::unordered_map<uint64_t, Layer*>> layers_;
};

// Content of one place, as bytes that mean something for its kind (change_set.cpp).
struct ChangeEntry {
    ChangePlace place;
    size_t at;  // in the bytes of the set
    uint32_t size;
    int16_t occupied;  // the slot had an element; 1 for a place that is no slot
    int16_t gone;      // neither the scene nor anything that is parked has the place
};

class ChangeSet {
public:
    ChangeSet(Session* session, Parked* parked) : session_(session), parked_(parked) {}
    ChangeSet(ChangeSet&& from) noexcept;
    ChangeSet& operator=(ChangeSet&& from) noexcept;
    ~ChangeSet() { clear(); }

    bool empty() const { return entries_.empty(); }
    bool holds(const ChangePlace& place) const { return index_.count(place) != 0; }
    void clear();

    // Notes what a place holds now, unless the set has it already.
    void note(const ChangePlace& place, Model* model, Layer* layer);

    // Takes over what the other set has of places that this one does not have.
    void merge(ChangeSet* from);

    // Drops what did not change, and keeps no more memory than it needs; note is not to be called any more.
    void settle();

    // Puts everything back. The set then holds what stood there.
    void exchange();

    int64_t bytes() const;

    // Whether the set has the slot of a model's points, and where the point that was in it was: false when that was
    // another point, or none.
    bool knows_point(uint64_t model, int32_t slot) const { return holds({model, 0, CONTENT_POINTS, slot}); }
    bool point_before(uint64_t model, int32_t slot, int32_t id, Vec3* place) const;

private:
    friend class ChangeExchange;

    bool capture(const ChangePlace& place, Model* model, Layer* layer);
    void name(const ChangeEntry& entry, int change);
    void drop_unchanged();

    Session* session_;
    Parked* parked_;
    float time_ = 0.0f;        // of the clock when the set was begun
    int64_t evaluations_ = 0;  // of the session when it was settled or exchanged
    std::vector<ChangeEntry> entries_;
    std::vector<unsigned char> bytes_;
    std::unordered_map<ChangePlace, size_t, ChangePlaceHash> index_;
};

}  // namespace pelt
