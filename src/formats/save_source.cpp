// Reads a text by the reader's own rules and notes, line by line, what came of it: the format has no second reader.
#include "formats/save_source.h"

#include <algorithm>

#include "formats/model_reader.h"
#include "foundation/load_error.h"

namespace pelt {

namespace {

constexpr const char* COMMENT_CHARS = "#";
constexpr size_t SHOWN_LINE = 60;  // bytes of a line that a refusal shows

struct SourceRead {
    ModelFileContext context;
    SaveSource* source;
};

// How many of everything there are: a line has made what there is one more of behind it.
struct Counts {
    int32_t joints, blends, layers, children;
    int32_t triangles, polygons, polylines;  // of the layer in hand
};

const Layer* layer_in_hand(const SaveSource& source) {
    const auto rank = static_cast<int32_t>(source.layers.size()) - 1;
    return list_at<const Layer>(&source.model->layers, rank, 0);
}

Counts count_all(const SaveSource& source) {
    const Model& model = *source.model;
    const Layer* layer = layer_in_hand(source);
    const auto of_layer = [&](KeyedList Layer::*list) { return layer != nullptr ? list_count(&(layer->*list)) : 0; };
    return {list_count(&model.joints),   list_count(&model.blends),   list_count(&model.layers),
            list_count(&model.children), of_layer(&Layer::triangles), of_layer(&Layer::polygons),
            of_layer(&Layer::lines)};
}

void note_place(std::vector<int>& lines, int32_t rank, int line) {
    const auto place = static_cast<size_t>(rank);
    if (rank < 0) { return; }
    if (place >= lines.size()) { lines.resize(place + 1, NO_LINE); }
    lines[place] = line;
}

void note_point(SaveSource& source, SourceLine& line, int index) {
    line.record = reader_int(0);
    PointLines& point = source.points[line.record];
    if (point.first == NO_LINE) {
        point.first = index;
        source.point_order.push_back(line.record);
    }
    switch (line.what.mode) {
        case LINE_MODE_POINTS:
            point.point = index;
            ++point.point_lines;
            break;
        case LINE_MODE_NORMALS: point.normal = index; break;
        default: point.colour = index; break;
    }
}

void note_primitive(LayerLines& layer, SourceLine& line, int index, const Counts& before, const Counts& after) {
    const auto note = [&](std::vector<int>& lines, int32_t count, int32_t count_after) {
        if (count_after > count) {
            line.record = count;
            note_place(lines, count, index);
        }
    };
    note(layer.triangles, before.triangles, after.triangles);
    note(layer.polygons, before.polygons, after.polygons);
    note(layer.polylines, before.polylines, after.polylines);
}

void note_data(SaveSource& source, SourceLine& line, int index, const Counts& before, const Counts& after) {
    switch (line.what.mode) {
        case LINE_MODE_POINTS:
        case LINE_MODE_NORMALS:
        case LINE_MODE_GOURAUD: note_point(source, line, index); break;
        case LINE_MODE_UVEES:
            line.record = reader_int(0);
            source.layers.back().uvees[line.record] = index;
            break;
        case LINE_MODE_TRIANGLES:
        case LINE_MODE_LINES:
            if (!source.layers.empty()) { note_primitive(source.layers.back(), line, index, before, after); }
            break;
        case LINE_MODE_NONE: break;
    }
}

void note_statement(SaveSource& source, SourceLine& line, int index, const Counts& before, const Counts& after) {
    const auto place = [&](std::vector<int>& lines, int32_t count, int32_t count_after, int32_t found) {
        line.record = count_after > count ? count : found;
        note_place(lines, line.record, index);
    };
    const Model* model = source.model.get();
    switch (line.what.kind) {
        case LINE_IS_JOINT: {
            const auto name = reader_text_if_any(1).value_or("");
            place(source.joints, before.joints, after.joints, model_joint_index(model, name.c_str()));
            break;
        }
        case LINE_IS_BLEND: place(source.blends, before.blends, after.blends, -1); break;
        case LINE_IS_CHILD: place(source.children, before.children, after.children, -1); break;
        case LINE_IS_LAYER:
            source.layers.emplace_back();
            source.layers.back().head = index;
            line.record = line.layer = before.layers;
            break;
        default: break;
    }
    if (source.layers.empty()) { return; }
    LayerLines& layer = source.layers.back();
    switch (line.what.kind) {
        case LINE_IS_TRANSPARENCY: layer.transparency = index; break;
        case LINE_IS_INVISIBLE: layer.key = index; break;
        case LINE_IS_IMAGE:
            layer.images[IMAGE_SLOT_BASE] = index;
            layer.base_images.push_back(index);
            break;
        case LINE_IS_MIRROR_IMAGE: layer.images[IMAGE_SLOT_MIRROR] = index; break;
        case LINE_IS_REFLECT: layer.images[IMAGE_SLOT_REFLECTION] = index; break;
        default: break;
    }
}

SourceLine line_in_hand(const SourceRead& read) {
    const std::string_view text = read.source->text;
    const TextPlace place = reader_line_place();
    const size_t newline = text.find('\n', place.end);
    const bool ends_here =
        place.end == text.size() || newline == place.end || (newline == place.end + 1 && text[place.end] == '\r');
    const bool begins_here = place.begin == 0 || text[place.begin - 1] == '\n' || reader_line_number() == 1;
    return {place,
            newline != std::string_view::npos ? newline + 1 : text.size(),
            model_line_in_hand(read.context),
            static_cast<int32_t>(read.source->layers.size()) - 1,
            -1,
            !begins_here || !ends_here};
}

void carry_out_line(void* context) {
    SourceRead& read = *static_cast<SourceRead*>(context);
    SaveSource& source = *read.source;
    SourceLine line = line_in_hand(read);
    const auto index = static_cast<int>(source.lines.size());
    const Counts before = count_all(source);
    load_error_watch(nullptr, nullptr);  // the text alone: the place in it would be that of no file
    model_parse_line(&read.context);
    const Counts after = count_all(source);
    if (line.what.kind == LINE_IS_DATA) {
        note_data(source, line, index, before, after);
    } else {
        note_statement(source, line, index, before, after);
    }
    if (belongs_to_layer(line) && !source.layers.empty()) { source.layers.back().last = index; }
    source.lines.push_back(line);
}

// As the reader deals the points.
void note_runs(SaveSource& source) {
    std::vector<int32_t> counts;
    for (const Joint& joint : list_elements<Joint>(source.model->joints)) { counts.push_back(joint.point_count); }
    for (const BlendWeight& blend : list_elements<BlendWeight>(source.model->blends)) {
        counts.push_back(blend.point_count);
    }
    size_t point = 0;
    for (size_t run = 0; run < counts.size(); ++run) {
        const auto left = static_cast<int32_t>(source.point_order.size() - point);
        const int32_t dealt = std::clamp(counts[run], 0, left);
        source.run_counts.push_back(dealt);
        for (int32_t i = 0; i < dealt; ++i) {
            source.points[source.point_order[point++]].run = static_cast<int32_t>(run);
        }
    }
}

}  // namespace

bool belongs_to_layer(const SourceLine& line) {
    if (line.layer < 0) { return false; }
    switch (line.what.kind) {
        case LINE_IS_LAYER:
        case LINE_IS_TRANSPARENCY:
        case LINE_IS_REFLECT:
        case LINE_IS_INVISIBLE:
        case LINE_IS_IMAGE:
        case LINE_IS_MIRROR_IMAGE: return true;
        case LINE_IS_SECTION:
        case LINE_IS_DATA:
            return line.what.mode == LINE_MODE_TRIANGLES || line.what.mode == LINE_MODE_LINES ||
                   line.what.mode == LINE_MODE_UVEES;
        default: return false;
    }
}

bool save_source_read(std::string_view text, SaveSource* source, std::string* refused) {
    source->text = text;
    source->model = ModelHandle(model_create("", nullptr));
    SourceRead read{};
    read.context.model = source->model.get();
    read.context.names_only = true;
    read.source = source;
    load_error_set(nullptr);
    if (!reader_run_text(text, COMMENT_CHARS, 1, carry_out_line, &read)) {
        const std::string reason = load_error_get() != nullptr ? load_error_get() : "the line is refused";
        const TextPlace place = source->lines.empty() ? TextPlace{0, 0} : source->lines.back().place;
        const bool of_layer = !source->lines.empty() && belongs_to_layer(source->lines.back());
        *refused = (of_layer ? std::string("layer ") + read.context.layer + ": " : std::string()) + "\"" +
                   std::string(text.substr(place.begin, std::min(place.end - place.begin, SHOWN_LINE))) +
                   "\": " + reason;
        return false;
    }
    model_bind_points(source->model.get());
    note_runs(*source);
    return true;
}

CutLine cut_line(std::string_view line) {
    CutLine cut{};
    reader_run_text(
        line, COMMENT_CHARS, 1,
        [](void* context) {
            CutLine& out = *static_cast<CutLine*>(context);
            const std::vector<TextPlace> places = reader_token_places();
            const char* begin = reader_line();
            for (int32_t i = 0; i < reader_token_count(); ++i) {
                const TextPlace place = places[static_cast<size_t>(i)];
                out.tokens.push_back({place, reader_text(i), reader_tokens->classes[i], reader_int(i), reader_float(i),
                                      begin[place.begin] == '"'});
            }
            out.primitive = model_primitive_tokens();
        },
        &cut);
    return cut;
}

}  // namespace pelt
