// Finding primitives. What surprises: a number says nothing about a second model of the same file, whose primitives
// have numbers of their own, so what was found is handed on by its rank in its list.
#include "edit/faces.h"

#include <algorithm>
#include <map>
#include <set>

namespace pelt {

namespace {

const KeyedList& list_of(const Layer& layer, PrimitiveKind kind) {
    switch (kind) {
        case PrimitiveKind::TRIANGLE: return layer.triangles;
        case PrimitiveKind::POLYGON: return layer.polygons;
        default: return layer.lines;
    }
}

std::vector<int32_t>& slots_of(LayerPrimitives& primitives, PrimitiveKind kind) {
    switch (kind) {
        case PrimitiveKind::TRIANGLE: return primitives.triangles;
        case PrimitiveKind::POLYGON: return primitives.polygons;
        default: return primitives.lines;
    }
}

// The slots of a list by rank.
std::vector<int32_t> occupied_slots(const KeyedList& list) {
    std::vector<int32_t> slots;
    for (int32_t slot = list_next_slot(&list, 0); slot < list.capacity; slot = list_next_slot(&list, slot + 1)) {
        slots.push_back(slot);
    }
    return slots;
}

// The reverse of occupied_slots.
class Ranks {
public:
    int32_t rank(const KeyedList& list, int32_t slot) {
        std::vector<int32_t>& slots = slots_[&list];
        if (slots.empty()) { slots = occupied_slots(list); }
        return static_cast<int32_t>(std::lower_bound(slots.begin(), slots.end(), slot) - slots.begin());
    }

private:
    std::map<const KeyedList*, std::vector<int32_t>> slots_;
};

bool find_primitive(const Model* model, const PrimitiveName& name, Ranks* ranks, PrimitivePlace* place) {
    int32_t layer_rank = 0;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        const KeyedList& list = list_of(layer, name.kind);
        const int32_t slot = list_index_of(&list, name.id, 0);
        if (slot >= 0) {
            *place = {name.kind, layer_rank, ranks->rank(list, slot)};
            return true;
        }
        ++layer_rank;
    }
    return false;
}

void add_edge(int16_t from, int16_t to, std::vector<FaceEdge>* edges) {
    if (from == to) { return; }
    const auto back = std::find_if(edges->begin(), edges->end(),
                                   [&](const FaceEdge& edge) { return edge.from == to && edge.to == from; });
    if (back != edges->end()) {
        edges->erase(back);
    } else {
        edges->push_back({from, to});
    }
}

}  // namespace

bool find_primitives(const Model* model, const std::vector<PrimitiveName>& names, std::vector<PrimitivePlace>* places,
                     EditRefusal* refused) {
    Ranks ranks;
    for (const PrimitiveName& name : names) {
        PrimitivePlace place{};
        if (!find_primitive(model, name, &ranks, &place)) {
            return edit_refuse(refused, EDIT_ARGUMENT, "the model has no face or line " + primitive_text(name));
        }
        places->push_back(place);
    }
    return true;
}

std::vector<LayerPrimitives> primitives_at(Model* model, const std::vector<PrimitivePlace>& places) {
    std::map<int32_t, std::map<PrimitiveKind, std::vector<int32_t>>> ranks;
    for (const PrimitivePlace& place : places) { ranks[place.layer][place.kind].push_back(place.rank); }
    std::vector<LayerPrimitives> all;
    int32_t rank = 0;
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        const auto found = ranks.find(rank++);
        if (found == ranks.end()) { continue; }
        LayerPrimitives primitives{&layer, {}, {}, {}};
        for (const auto& [kind, of_kind] : found->second) {
            const std::vector<int32_t> slots = occupied_slots(list_of(layer, kind));
            std::set<int32_t> once;
            for (const int32_t each : of_kind) { once.insert(slots[static_cast<size_t>(each)]); }
            slots_of(primitives, kind).assign(once.begin(), once.end());
        }
        all.push_back(primitives);
    }
    return all;
}

std::string primitive_text(const PrimitiveName& name) {
    const char* letter = name.kind == PrimitiveKind::POLYGON ? "p" : name.kind == PrimitiveKind::LINE ? "l" : "";
    return letter + std::to_string(name.id);
}

std::vector<int16_t> triangle_outline(const Triangle& triangle) {
    const int16_t* p = triangle.points;
    if (triangle.quad) { return {p[0], p[1], p[3], p[2]}; }
    return {p[0], p[1], p[2]};
}

void add_triangle_edges(const Triangle& triangle, std::vector<FaceEdge>* edges) {
    const std::vector<int16_t> outline = triangle_outline(triangle);
    for (size_t i = 0; i < outline.size(); ++i) { edges->push_back({outline[i], outline[(i + 1) % outline.size()]}); }
}

void add_polygon_edges(const Polygon& polygon, std::vector<FaceEdge>* edges) {
    const std::vector<PolygonVertex> strip = polygon_strip(polygon);
    std::vector<FaceEdge> own;
    for (size_t i = 0; i + 2 < strip.size(); ++i) {
        const size_t turned = i % 2;
        const int16_t corners[3] = {strip[i + turned].point, strip[i + 1 - turned].point, strip[i + 2].point};
        for (int corner = 0; corner < 3; ++corner) { add_edge(corners[corner], corners[(corner + 1) % 3], &own); }
    }
    edges->insert(edges->end(), own.begin(), own.end());
}

}  // namespace pelt
