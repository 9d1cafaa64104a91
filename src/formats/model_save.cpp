// Saving by changed lines. The text is read by the reader's own rules, with a note of what each line made; that model
// is held against the one in memory, record by record, and each difference becomes a change of the text.
//
// What surprises: nothing here is trusted. The new text is read again and compared with the model before anyone sees
// it, so that a text whose order or wording was not foreseen costs a refusal and never a file.
#include "formats/model_save.h"

#include <algorithm>
#include <cstring>

#include "formats/model_compare.h"
#include "formats/model_reader.h"
#include "formats/save_work.h"
#include "formats/sequence_match.h"
#include "formats/whole_writer.h"
#include "foundation/load_error.h"

namespace pelt {

namespace {

constexpr size_t LONGEST_LINE = READER_LINE_SIZE - 1;

// Why the text does not read back as the model; empty when it does.
std::string proof_failure(const Model* model, const std::string& text) {
    SaveSource again;
    std::string refused;
    if (!save_source_read(text, &again, &refused)) { return refused; }
    if (!model_test_normals(again.model.get())) {
        return load_error_get() != nullptr ? load_error_get() : "a normal is refused";
    }
    return model_difference(model, again.model.get(), false);
}

std::string child_key(const ChildLink& link) {
    std::string key(reinterpret_cast<const char*>(&link.position), sizeof link.position);
    key.append(reinterpret_cast<const char*>(&link.scale), sizeof link.scale);
    key += link.name;
    for (const char* turn : link.rotate) { key += std::string("\n") + turn; }
    return key;
}

}  // namespace

// ---- what the halves share ----

void save_refuse_layout(SaveWork& work, const std::string& reason) {
    if (work.layout_refusal.empty()) { work.layout_refusal = reason; }
}

std::vector<std::string> save_lines(SaveWork& work, const std::function<void(whole::WholeWriter&)>& put) {
    work.writer.text.clear();
    put(work.writer);
    std::vector<std::string> lines;
    for (size_t at = 0; at < work.writer.text.size();) {
        const size_t end = work.writer.text.find('\n', at);
        lines.push_back(work.writer.text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

void save_insert(SaveWork& work, size_t at, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) { edits_insert_line(work.edits, at, line); }
    work.opened[at] = LINE_MODE_NONE;
}

void save_insert_in_mode(SaveWork& work, size_t at, LineMode mode, const char* section, bool begins,
                         const std::vector<std::string>& lines) {
    const auto opened = work.opened.find(at);
    if (opened != work.opened.end() ? opened->second != mode : begins) { edits_insert_line(work.edits, at, section); }
    save_insert(work, at, lines);
    work.opened[at] = mode;
}

size_t save_section_end(const SaveWork& work, size_t at) {
    const std::vector<SourceLine>& lines = work.source.lines;
    auto line = std::lower_bound(lines.begin(), lines.end(), at,
                                 [](const SourceLine& each, size_t place) { return each.place.begin < place; });
    for (; line != lines.end() && (line->what.kind == LINE_IS_DATA || line->what.kind == LINE_IS_NOTHING); ++line) {
        if (line->what.kind == LINE_IS_DATA) { at = line->next; }
    }
    return at;
}

void save_insert_data(SaveWork& work, LineMode mode, const char* section, size_t needed,
                      const std::vector<std::string>& lines) {
    const auto known = work.sections.find(mode);
    if (known != work.sections.end() && known->second >= needed) {
        save_insert_in_mode(work, known->second, mode, section, false, lines);
        return;
    }
    size_t at = 0;
    for (auto line = work.source.lines.rbegin(); line != work.source.lines.rend() && at == 0; ++line) {
        const bool is_of_mode =
            line->what.mode == mode && (line->what.kind == LINE_IS_DATA || line->what.kind == LINE_IS_SECTION);
        if (is_of_mode) { at = line->next; }
    }
    const bool begins = at == 0 || at < needed;
    if (begins) { at = save_section_end(work, needed); }
    work.sections[mode] = at;
    save_insert_in_mode(work, at, mode, section, begins, lines);
}

CutLine save_cut(const SaveWork& work, int line) {
    const TextPlace place = work.line(line).place;
    return cut_line(work.source.text.substr(place.begin, place.end - place.begin));
}

size_t save_token_count(const SaveWork& work, int line) { return save_cut(work, line).tokens.size(); }

void save_change(SaveWork& work, int line, const LineWish& wish, const std::string& of) {
    if (work.line(line).in_pieces) {
        save_refuse_layout(work, of + "its line is longer than the reader's own");
        return;
    }
    const size_t before = work.edits.edits.size();
    edits_change_line(work.edits, work.source, line, wish);
    if (work.edits.edits.size() == before) { return; }
    const std::string& changed = work.edits.edits.back().text;
    if (changed.size() > LONGEST_LINE) {
        whole::refuse(work.writer, of + "a line of the file holds " + std::to_string(LONGEST_LINE) +
                                       " bytes, and its own would have " + std::to_string(changed.size()));
    }
}

void save_delete(SaveWork& work, int line, const std::string& of) {
    if (work.line(line).in_pieces) {
        save_refuse_layout(work, of + "its line is longer than the reader's own");
    } else {
        edits_delete_line(work.edits, work.line(line));
    }
}

// ---- child links ----

void save_children(SaveWork& work) {
    const auto before = save_elements<ChildLink>(work.source.model->children);
    const auto after = save_elements<ChildLink>(work.model.children);
    std::vector<std::string> keys_before, keys_after;
    for (const ChildLink* link : before) { keys_before.push_back(child_key(*link)); }
    for (const ChildLink* link : after) { keys_after.push_back(child_key(*link)); }
    const std::vector<int> matches = match_sequences(keys_before, keys_after);
    std::vector<bool> kept(before.size(), false);
    size_t at = before.empty() ? work.source.text.size() : work.line(work.source.children[0]).place.begin;
    for (size_t i = 0; i < after.size(); ++i) {
        const std::string of = std::string("child ") + after[i]->name + ": ";
        const bool is_new = matches[i] == NO_MATCH;
        const auto old = static_cast<size_t>(is_new ? 0 : matches[i]);
        if (!is_new) {
            kept[old] = true;
            at = work.line(work.source.children[old]).next;
        }
        if (!is_new && keys_before[old] == keys_after[i]) { continue; }
        const auto lines = save_lines(work, [&](whole::WholeWriter& writer) { put_child(writer, *after[i]); });
        if (is_new) {
            save_insert(work, at, lines);
        } else {
            save_change(work, work.source.children[old], {lines[0], "TNRRRRRRC", 11, false, nullptr}, of);
        }
    }
    for (size_t i = 0; i < before.size(); ++i) {
        if (!kept[i]) { save_delete(work, work.source.children[i], std::string("child ") + before[i]->name + ": "); }
    }
}

// ---- the whole ----

ModelSave model_save(const Model* model, std::string_view loaded) {
    if (model == nullptr) { return {{}, "no model", false}; }
    SaveSource source;
    std::string refused;
    if (!save_source_read(loaded, &source, &refused)) { return {{}, refused, true}; }
    SaveWork work(*model, source);
    save_skeleton_and_points(work);
    save_layers(work);
    save_children(work);
    if (!work.writer.refusal.empty()) { return {{}, work.writer.refusal, false}; }
    if (!work.layout_refusal.empty()) { return {{}, work.layout_refusal, true}; }
    std::string text = edits_apply(work.edits, loaded);
    refused = proof_failure(model, text);
    return refused.empty() ? ModelSave{std::move(text), {}, false} : ModelSave{{}, refused, true};
}

ModelSave model_save_whole(const Model* model, const char* file_name) {
    std::string refused;
    std::string text = model_write_whole(model, file_name, &refused);
    if (refused.empty()) { refused = proof_failure(model, text); }
    return refused.empty() ? ModelSave{std::move(text), {}, false} : ModelSave{{}, refused, false};
}

}  // namespace pelt
