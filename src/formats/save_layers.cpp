// Layers of a save: their lines, their statements, their primitives. What surprises: a primitive can only stand behind
// its points and before the next layer, and one that is to have its image's texture before the image.
#include <algorithm>
#include <cstring>

#include "formats/save_work.h"
#include "formats/sequence_match.h"

namespace pelt {

namespace {

constexpr LayerImage NO_IMAGE{};
constexpr const char* PRIMITIVE_SENSES = "IL";
constexpr size_t NOWHERE = std::string_view::npos;

// One layer on both sides.
struct LayerPair {
    const Layer& before;
    const Layer& after;
    const LayerLines& lines;
    size_t rank;         // in the text
    std::string of;      // for refusals
    size_t surface_end;  // behind everything that an image is mapped to
    size_t end;          // behind everything
};

const LayerImage& image_of(const Layer& layer) {
    const LayerImage* image = layer_first_image(&layer);
    return image != nullptr ? *image : NO_IMAGE;
}

// Where the next layer of the text begins.
size_t end_of_layer(const SaveWork& work, const LayerPair& layer) {
    const bool is_last = layer.rank + 1 == work.source.layers.size();
    return is_last ? work.source.text.size() : work.line(work.source.layers[layer.rank + 1].head).place.begin;
}

size_t behind(const SaveWork& work, int line) { return line != NO_LINE ? work.line(line).next : 0; }

std::vector<std::string> written(SaveWork& work, const std::function<void(whole::WholeWriter&)>& put) {
    return save_lines(work, put);
}

void delete_lines(SaveWork& work, const LayerPair& layer, ModelLineKind kind) {
    for (int line = layer.lines.head; line <= layer.lines.last; ++line) {
        if (work.line(line).what.kind == kind) { save_delete(work, line, layer.of); }
    }
}

// ---- the layer line and its statements ----

bool head_differs(const Layer& a, const Layer& b) {
    const bool mirror = (a.mirror != 0) != (b.mirror != 0) || (a.mirror != 0 && a.mirror_axis != b.mirror_axis);
    return std::strcmp(a.name, b.name) != 0 || !std::equal(a.colour, a.colour + 3, b.colour) ||
           (a.singlesided != 0) != (b.singlesided != 0) || mirror;
}

void save_head(SaveWork& work, const LayerPair& layer) {
    if (!head_differs(layer.before, layer.after)) { return; }
    constexpr size_t PLAIN = 6;
    constexpr size_t MIRRORED = 8;
    const CutLine cut = save_cut(work, layer.lines.head);
    const size_t count = cut.tokens.size();
    const bool has_mirror = count == MIRRORED && cut.tokens[PLAIN].text == "mirror";
    if (layer.after.mirror != 0 && !has_mirror && count != PLAIN) {
        save_refuse_layout(work, layer.of + "a remark stands where its mirror would have to");
    }
    const auto line = written(work, [&](whole::WholeWriter& out) { put_layer_line(out, layer.of, layer.after); })[0];
    save_change(work, layer.lines.head, {line, "TNIIIWTT", has_mirror ? MIRRORED : PLAIN, has_mirror, nullptr},
                layer.of);
}

void save_transparency(SaveWork& work, const LayerPair& layer) {
    if (layer.before.transparency == layer.after.transparency) { return; }
    const auto lines = written(work, [&](whole::WholeWriter& out) { put_transparency(out, layer.of, layer.after); });
    if (layer.lines.transparency != NO_LINE) {
        save_change(work, layer.lines.transparency, {lines[0], "TR", 2, false, nullptr}, layer.of);
    } else {
        save_insert(work, behind(work, layer.lines.head), lines);
    }
}

void save_key(SaveWork& work, const LayerPair& layer) {
    const Layer& before = layer.before;
    const Layer& after = layer.after;
    const bool same = std::equal(before.invisible_colour, before.invisible_colour + 3, after.invisible_colour);
    if ((before.invisible == 0 && after.invisible == 0) || (before.invisible != 0 && after.invisible != 0 && same)) {
        return;
    }
    if (after.invisible == 0) {
        delete_lines(work, layer, LINE_IS_INVISIBLE);
        return;
    }
    const auto lines = written(work, [&](whole::WholeWriter& out) { put_key(out, layer.of, after); });
    if (layer.lines.key != NO_LINE) {
        save_change(work, layer.lines.key, {lines[0], "TH", 4, false, nullptr}, layer.of);
        return;
    }
    // Pixels that were loaded without a key are so again behind it.
    constexpr int KEYLESS_BYTES = 3;
    int line = layer.lines.head;
    for (const int slot : {IMAGE_SLOT_BASE, IMAGE_SLOT_MIRROR}) {
        const bool is_keyless = image_of(after).bytes_per_pixel[slot] == KEYLESS_BYTES;
        if (is_keyless) { line = std::max(line, layer.lines.images[slot]); }
    }
    save_insert(work, behind(work, line), lines);
}

// ---- images ----

constexpr ModelLineKind IMAGE_LINES[] = {LINE_IS_IMAGE, LINE_IS_MIRROR_IMAGE, LINE_IS_REFLECT};

bool map_differs(const Layer& a, const Layer& b) {
    const bool repeat = (a.image_repeat != 0) != (b.image_repeat != 0) ||
                        (a.image_repeat != 0 && (a.repeat_u != b.repeat_u || a.repeat_v != b.repeat_v));
    return a.image_axis_u != b.image_axis_u || a.image_axis_v != b.image_axis_v || repeat;
}

bool slot_differs(const LayerPair& layer, const LayerImage& before, const LayerImage& after, int slot) {
    const bool is_there = after.pixels[slot] != nullptr;
    return std::strcmp(before.names[slot], after.names[slot]) != 0 ||
           (slot == IMAGE_SLOT_BASE && is_there && map_differs(layer.before, layer.after)) ||
           (slot == IMAGE_SLOT_REFLECTION && is_there && before.reflection != after.reflection);
}

// A line of an image keeps its factors to itself; an earlier line may have said those that are in force.
void change_base_image(SaveWork& work, const LayerPair& layer, std::string line) {
    constexpr size_t PLAIN = 4;
    constexpr size_t REPEATED = 7;
    const bool same_factors = layer.before.image_repeat == layer.after.image_repeat &&
                              layer.before.repeat_u == layer.after.repeat_u &&
                              layer.before.repeat_v == layer.after.repeat_v;
    const int last = layer.lines.images[IMAGE_SLOT_BASE];
    const size_t count = save_token_count(work, last);
    if (same_factors && count == PLAIN) {
        line.resize(line.find(" repeat ") != std::string::npos ? line.rfind(" repeat ") : line.size());
    }
    const bool repeats = cut_line(line).tokens.size() >= REPEATED;
    for (const int each : layer.lines.base_images) {
        const size_t tokens = save_token_count(work, each);
        if (!repeats && layer.after.image_repeat == 0 && tokens > REPEATED) {
            save_refuse_layout(work, layer.of + "a remark stands behind the repeat of its image");
        }
        if (each == last) {
            save_change(work, each, {line, "TNTTTRR", std::min(tokens, REPEATED), true, nullptr}, layer.of);
        } else if (layer.after.image_repeat == 0 && tokens >= REPEATED) {
            save_refuse_layout(work, layer.of + "an earlier image line says its repeat");
        }
    }
}

void save_image(SaveWork& work, LayerPair& layer, int slot) {
    static constexpr const char* SENSES[] = {"", "TN", "TNR"};
    static constexpr size_t MEANING[] = {0, 2, 3};
    const LayerImage& before = image_of(layer.before);
    const LayerImage& after = image_of(layer.after);
    if (!slot_differs(layer, before, after, slot)) { return; }
    const int line = layer.lines.images[slot];
    if (after.names[slot][0] == '\0') {
        delete_lines(work, layer, IMAGE_LINES[slot]);
        return;
    }
    const auto lines =
        written(work, [&](whole::WholeWriter& out) { put_image(out, layer.of, layer.after, after, slot); });
    if (line == NO_LINE) {
        const int last = std::max({layer.lines.head, layer.lines.key, layer.lines.images[IMAGE_SLOT_BASE],
                                   layer.lines.images[IMAGE_SLOT_MIRROR], layer.lines.images[IMAGE_SLOT_REFLECTION]});
        save_insert(work, slot == IMAGE_SLOT_BASE ? layer.surface_end : behind(work, last), lines);
    } else if (slot == IMAGE_SLOT_BASE) {
        change_base_image(work, layer, lines[0]);
    } else {
        save_change(work, line, {lines[0], SENSES[slot], MEANING[slot], false, nullptr}, layer.of);
    }
}

// ---- primitives ----

std::vector<int32_t> ids_of(const Triangle& triangle) {
    const int corners = triangle_corners(&triangle);
    std::vector<int32_t> ids(triangle.points, triangle.points + corners);
    ids.insert(ids.end(), triangle.normals, triangle.normals + corners);
    if (triangle.curve_type != 0) { ids.insert(ids.end(), triangle.controls, triangle.controls + 2 * corners); }
    return ids;
}

std::vector<int32_t> ids_of(const Polygon& polygon) {
    std::vector<int32_t> ids;
    for (const PolygonVertex& vertex : polygon_strip(polygon)) {
        ids.push_back(vertex.point);
        ids.push_back(vertex.normal);
    }
    return ids;
}

std::vector<int32_t> ids_of(const Line& line) {
    std::vector<int32_t> ids;
    for (const int32_t& stored : list_elements<int32_t>(line.vertices)) { ids.push_back(line_point_id(stored)); }
    return ids;
}

template <typename Primitive>
std::string key_of(const Primitive& primitive) {
    std::string key;
    if constexpr (std::is_same_v<Primitive, Triangle>) {
        key += static_cast<char>('0' + primitive.quad * 8 + primitive.curve_type);
    } else {
        key += std::to_string(primitive.vertex_count) + ":";
    }
    for (const int32_t id : ids_of(primitive)) {
        key += static_cast<char>(id & 0xFF);
        key += static_cast<char>(id >> 8 & 0xFF);
    }
    return key;
}

std::vector<std::string> lines_of(SaveWork& work, const std::string& of, const Triangle& triangle) {
    return written(work,
                   [&](whole::WholeWriter& out) { put_triangle(out, of, triangle, whole::needed_parts(triangle)); });
}
std::vector<std::string> lines_of(SaveWork& work, const std::string& of, const Polygon& polygon) {
    return written(work, [&](whole::WholeWriter& out) { put_polygon(out, of, polygon); });
}
std::vector<std::string> lines_of(SaveWork& work, const std::string& of, const Line& line) {
    return written(work, [&](whole::WholeWriter& out) { put_polyline(out, of, line); });
}

void change_primitive(SaveWork& work, const LayerPair& layer, int line, const Triangle& triangle) {
    const CutLine cut = save_cut(work, line);
    whole::TriangleParts parts = whole::needed_parts(triangle);
    // What the line said already it goes on to say.
    parts.curve = triangle.curve_type != 0 && (parts.curve || cut.primitive.curve_at != 0);
    parts.normals = parts.normals || cut.primitive.normals_at != 0;
    parts.controls = triangle.curve_type != 0 && (parts.controls || cut.primitive.controls_at != 0);
    parts.curve = parts.curve || (triangle.curve_type != 0 && parts.normals);
    const auto lines = written(work, [&](whole::WholeWriter& out) { put_triangle(out, layer.of, triangle, parts); });
    const auto meaning = static_cast<size_t>(cut.primitive.count);
    save_change(work, line, {lines[0], PRIMITIVE_SENSES, meaning, true, nullptr}, layer.of);
}

template <typename Strip>
void change_primitive(SaveWork& work, const LayerPair& layer, int line, const Strip& strip) {
    const size_t meaning = save_token_count(work, line);
    save_change(work, line, {lines_of(work, layer.of, strip)[0], PRIMITIVE_SENSES, meaning, true, nullptr}, layer.of);
}

// From where in the text on all these points can be named. Refuses an id that no line takes.
size_t first_place_for(SaveWork& work, const std::string& of, const std::vector<int32_t>& ids,
                       const std::vector<int32_t>& known) {
    size_t place = 0;
    for (const int32_t id : ids) {
        const bool is_known = std::find(known.begin(), known.end(), id) != known.end();
        const auto found = work.available.find(id);
        if (id < 1 && !is_known) {
            whole::refuse(work.writer, of + "names a point above " + std::to_string(HIGHEST_ID));
        } else if (found != work.available.end()) {
            place = std::max(place, found->second);
        }
    }
    return place;
}

// The data of one kind of primitive.
template <typename Primitive>
struct PrimitiveKind {
    KeyedList Layer::*list;
    std::vector<int> LayerLines::*lines;
    LineMode mode;
    const char* section;
};

// The last line of a section that new data can join: before the image if it may, and not before a place.
size_t place_in_section(const SaveWork& work, const LayerPair& layer, LineMode mode, size_t earliest) {
    const int image = layer.lines.base_images.empty() ? NO_LINE : layer.lines.base_images.front();
    size_t last = NOWHERE;
    size_t last_before_image = NOWHERE;
    for (int line = layer.lines.head; line <= layer.lines.last; ++line) {
        const SourceLine& each = work.line(line);
        const bool is_of_mode = each.what.mode == mode && belongs_to_layer(each) &&
                                (each.what.kind == LINE_IS_DATA || each.what.kind == LINE_IS_SECTION);
        if (!is_of_mode) { continue; }
        last = each.next;
        if (image != NO_LINE && line < image) { last_before_image = each.next; }
    }
    if (mode != LINE_MODE_LINES && last_before_image != NOWHERE && last_before_image >= earliest) {
        return last_before_image;
    }
    return last != NOWHERE && last >= earliest ? last : NOWHERE;
}

// Puts data of a layer where its points are known, in a section of its own where none will do. image_counts: an image
// behind which it would come forbids it.
size_t put_data(SaveWork& work, const LayerPair& layer, LineMode mode, const char* section, size_t needed,
                size_t behind_those, const std::vector<std::string>& lines) {
    const bool image_counts = mode != LINE_MODE_LINES && !layer.lines.base_images.empty();
    const size_t image = image_counts ? work.line(layer.lines.base_images.front()).place.begin : NOWHERE;
    size_t at = place_in_section(work, layer, mode, std::max(needed, behind_those));
    const bool begins = at == NOWHERE;
    if (begins) {
        at = save_section_end(work, std::max({needed, behind_those, behind(work, layer.lines.last)}));
        if (image_counts && behind_those <= image && needed <= image && mode == LINE_MODE_UVEES) { at = image; }
    }
    if (at > end_of_layer(work, layer)) {
        save_refuse_layout(work, layer.of + "points that it would name stand behind the next layer");
    } else if (image_counts && needed > image) {
        save_refuse_layout(work, layer.of + "points that it would name stand behind its image");
    }
    save_insert_in_mode(work, at, mode, section, begins, lines);
    return at;
}

// One list of a layer on both sides.
template <typename Primitive>
struct PrimitivePair {
    std::vector<const Primitive*> before;
    std::vector<const Primitive*> after;
    std::vector<std::string> keys_before;
    std::vector<std::string> keys_after;
    std::vector<int> matches;
    const std::vector<int>& lines;

    PrimitivePair(const LayerPair& layer, const PrimitiveKind<Primitive>& kind)
        : before(save_elements<Primitive>(layer.before.*kind.list)),
          after(save_elements<Primitive>(layer.after.*kind.list)),
          lines(layer.lines.*kind.lines) {
        for (const Primitive* each : before) { keys_before.push_back(key_of(*each)); }
        for (const Primitive* each : after) { keys_after.push_back(key_of(*each)); }
        matches = match_sequences(keys_before, keys_after);
    }
};

void require_before(SaveWork& work, const LayerPair& layer, size_t needed, size_t at) {
    if (needed > at) {
        save_refuse_layout(work, layer.of + "a point that it would name stands behind the line that names it");
    }
}

// What comes behind all others goes to the end of a section.
template <typename Primitive>
void put_tail(SaveWork& work, LayerPair& layer, const PrimitiveKind<Primitive>& kind,
              const PrimitivePair<Primitive>& pair, size_t first, size_t behind_those) {
    std::vector<std::string> lines;
    size_t needed = 0;
    for (size_t i = first; i < pair.after.size(); ++i) {
        needed = std::max(needed, first_place_for(work, layer.of, ids_of(*pair.after[i]), {}));
        const auto line = lines_of(work, layer.of, *pair.after[i]);
        lines.insert(lines.end(), line.begin(), line.end());
    }
    if (lines.empty()) { return; }
    const size_t at = put_data(work, layer, kind.mode, kind.section, needed, behind_those, lines);
    if (kind.mode == LINE_MODE_TRIANGLES) { layer.surface_end = std::max(layer.surface_end, at); }
    layer.end = std::max(layer.end, at);
}

template <typename Primitive>
void save_primitives(SaveWork& work, LayerPair& layer, const PrimitiveKind<Primitive>& kind) {
    const PrimitivePair<Primitive> pair(layer, kind);
    const auto last =
        std::find_if(pair.matches.rbegin(), pair.matches.rend(), [](int each) { return each != NO_MATCH; });
    const auto tail = static_cast<size_t>(last.base() - pair.matches.begin());
    std::vector<bool> kept(pair.before.size(), false);
    size_t last_place = 0;  // behind the one before
    for (size_t i = 0; i < tail; ++i) {
        const Primitive& each = *pair.after[i];
        if (pair.matches[i] == NO_MATCH) {
            // Behind the one before it, or before the first one of the text.
            const size_t at = last_place != 0 ? last_place : work.line(pair.lines[0]).place.begin;
            require_before(work, layer, first_place_for(work, layer.of, ids_of(each), {}), at);
            save_insert_in_mode(work, at, kind.mode, kind.section, false, lines_of(work, layer.of, each));
            continue;
        }
        const auto old = static_cast<size_t>(pair.matches[i]);
        const SourceLine& line = work.line(pair.lines[old]);
        kept[old] = true;
        last_place = line.next;
        if (pair.keys_before[old] == pair.keys_after[i]) { continue; }
        const size_t needed = first_place_for(work, layer.of, ids_of(each), ids_of(*pair.before[old]));
        require_before(work, layer, needed, line.place.begin);
        change_primitive(work, layer, pair.lines[old], each);
    }
    put_tail(work, layer, kind, pair, tail, last_place);
    for (size_t i = 0; i < pair.before.size(); ++i) {
        if (!kept[i]) { save_delete(work, pair.lines[i], layer.of); }
    }
}

// ---- texture coordinates ----

void save_uvees(SaveWork& work, LayerPair& layer) {
    std::vector<std::string> added;
    size_t needed = 0;
    const auto uvees = list_elements<Uvee>(layer.after.uvees);
    for (auto uvee = uvees.begin(); uvee != uvees.end(); ++uvee) {
        const int32_t id = uvee.int_key();
        const Uvee* before = list_find<Uvee>(&layer.before.uvees, id);
        if (before != nullptr && before->u == uvee->u && before->v == uvee->v) { continue; }
        const auto lines = written(work, [&](whole::WholeWriter& out) { put_uvee(out, layer.of, id, *uvee); });
        if (before != nullptr) {
            save_change(work, layer.lines.uvees.at(id), {lines[0], "IR", 3, false, nullptr}, layer.of);
        } else {
            added.insert(added.end(), lines.begin(), lines.end());
            const auto found = work.available.find(id);
            needed = std::max(needed, found != work.available.end() ? found->second : 0);
        }
    }
    for (int line = layer.lines.head; line <= layer.lines.last; ++line) {
        const SourceLine& each = work.line(line);
        const bool is_uvee = each.what.kind == LINE_IS_DATA && each.what.mode == LINE_MODE_UVEES;
        if (is_uvee && list_find(&layer.after.uvees, each.record) == nullptr) { save_delete(work, line, layer.of); }
    }
    if (added.empty()) { return; }
    const size_t at = put_data(work, layer, LINE_MODE_UVEES, "uvees", needed, 0, added);
    layer.surface_end = std::max(layer.surface_end, at);
    layer.end = std::max(layer.end, at);
}

// ---- whole layers ----

// Returns the place behind it.
size_t save_layer(SaveWork& work, size_t old, const Layer& before, const Layer& after) {
    const LayerLines& lines = work.source.layers[old];
    LayerPair layer{before, after, lines, old, std::string("layer ") + after.name + ": ", 0, 0};
    layer.end = save_section_end(work, work.line(lines.last).next);
    for (int line = lines.head; line <= lines.last; ++line) {
        const SourceLine& each = work.line(line);
        const bool is_surface = each.what.mode == LINE_MODE_TRIANGLES || each.what.mode == LINE_MODE_UVEES;
        if (line == lines.head || is_surface) { layer.surface_end = each.next; }
    }
    save_head(work, layer);
    const size_t head_edits = work.edits.edits.size();
    save_transparency(work, layer);
    save_key(work, layer);
    save_primitives<Triangle>(work, layer,
                              {&Layer::triangles, &LayerLines::triangles, LINE_MODE_TRIANGLES, "triangles"});
    save_primitives<Polygon>(work, layer, {&Layer::polygons, &LayerLines::polygons, LINE_MODE_TRIANGLES, "triangles"});
    save_uvees(work, layer);
    for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) { save_image(work, layer, slot); }
    save_primitives<Line>(work, layer, {&Layer::lines, &LayerLines::polylines, LINE_MODE_LINES, "lines"});
    // What stands behind the line of a layer looks it up by its name.
    const bool has_more = lines.last > lines.head || work.edits.edits.size() > head_edits;
    if (has_more && std::strlen(after.name) >= KEY_TEXT_SIZE) {
        whole::refuse(work.writer, layer.of + "a name of more than " + std::to_string(KEY_TEXT_SIZE - 1) + " bytes");
    }
    return std::max(layer.end, layer.surface_end);
}

size_t place_for_all(SaveWork& work, const std::string& of, const Layer& layer) {
    size_t needed = 0;
    const auto take = [&](const std::vector<int32_t>& ids) {
        needed = std::max(needed, first_place_for(work, of, ids, {}));
    };
    for (const Triangle& each : list_elements<Triangle>(layer.triangles)) { take(ids_of(each)); }
    for (const Polygon& each : list_elements<Polygon>(layer.polygons)) { take(ids_of(each)); }
    for (const Line& each : list_elements<Line>(layer.lines)) { take(ids_of(each)); }
    const auto uvees = list_elements<Uvee>(layer.uvees);
    for (auto uvee = uvees.begin(); uvee != uvees.end(); ++uvee) { take({uvee.int_key()}); }
    return needed;
}

// Behind the layer before it and the points that it names; returns the place.
size_t insert_layer(SaveWork& work, const Layer& layer, size_t at, size_t limit) {
    const std::string of = std::string("layer ") + layer.name + ": ";
    const size_t needed = place_for_all(work, of, layer);
    if (needed > at) { at = save_section_end(work, needed); }
    if (at > limit) { save_refuse_layout(work, of + "points that it names stand behind the next layer"); }
    save_insert(work, at, written(work, [&](whole::WholeWriter& out) { put_layer(out, layer); }));
    return at;
}

size_t begin_of_layer(const SaveWork& work, size_t rank) {
    return work.line(work.source.layers[rank].head).place.begin;
}

}  // namespace

void save_layers(SaveWork& work) {
    const auto before = save_elements<Layer>(work.source.model->layers);
    const auto after = save_elements<Layer>(work.model.layers);
    std::vector<std::string> names_before, names_after;
    for (const Layer* layer : before) { names_before.emplace_back(layer->name); }
    for (const Layer* layer : after) { names_after.emplace_back(layer->name); }
    const std::vector<int> matches = match_sequences(names_before, names_after);
    std::vector<bool> kept(before.size(), false);
    size_t at = before.empty() ? work.source.text.size() : begin_of_layer(work, 0);
    for (size_t i = 0; i < after.size(); ++i) {
        if (matches[i] != NO_MATCH) {
            const auto old = static_cast<size_t>(matches[i]);
            kept[old] = true;
            at = save_layer(work, old, *before[old], *after[i]);
            continue;
        }
        const auto next = std::find_if(matches.begin() + static_cast<ptrdiff_t>(i), matches.end(),
                                       [](int match) { return match != NO_MATCH; });
        const size_t limit =
            next != matches.end() ? begin_of_layer(work, static_cast<size_t>(*next)) : work.source.text.size();
        at = insert_layer(work, *after[i], at, limit);
    }
    for (size_t i = 0; i < before.size(); ++i) {
        if (kept[i]) { continue; }
        const LayerLines& lines = work.source.layers[i];
        const std::string of = std::string("layer ") + before[i]->name + ": ";
        for (int line = lines.head; line <= lines.last; ++line) {
            if (belongs_to_layer(work.line(line))) { save_delete(work, line, of); }
        }
    }
}

}  // namespace pelt
