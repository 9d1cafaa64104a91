// What the halves of model_save share: the model, the text it came from, and the changes so far.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "formats/save_edits.h"
#include "formats/save_source.h"
#include "formats/whole_lines.h"

namespace pelt {

inline constexpr int32_t HIGHEST_ID = INT16_MAX;

struct SaveWork {
    const Model& model;
    const SaveSource& source;
    whole::WholeWriter writer;  // words the lines, and keeps what no file can hold
    TextEdits edits;
    std::string layout_refusal;
    std::unordered_map<int32_t, size_t, KeyHash> available;  // from where in the text on a point can be named
    std::map<LineMode, size_t> sections;                     // where data of each mode was put
    std::map<size_t, LineMode> opened;                       // in what mode the lines end that were put at a place

    SaveWork(const Model& changed, const SaveSource& loaded) : model(changed), source(loaded), writer(changed) {}

    const SourceLine& line(int index) const { return source.lines[static_cast<size_t>(index)]; }
};

// The order of the text forbids something.
void save_refuse_layout(SaveWork& work, const std::string& reason);

// The lines that a function of the whole writer puts, without their ends.
std::vector<std::string> save_lines(SaveWork& work, const std::function<void(whole::WholeWriter&)>& put);

// Statements, behind which a section has to begin anew.
void save_insert(SaveWork& work, size_t at, const std::vector<std::string>& lines);

// Data, behind a keyword where the lines above are none of its section.
void save_insert_in_mode(SaveWork& work, size_t at, LineMode mode, const char* section, bool begins,
                         const std::vector<std::string>& lines);

// Behind the data of the section that this place lies in.
size_t save_section_end(const SaveWork& work, size_t at);

// Puts data behind the last line of its mode that lies at or behind a place, else into a section of its own, there.
void save_insert_data(SaveWork& work, LineMode mode, const char* section, size_t needed,
                      const std::vector<std::string>& lines);

// Tokens of a line.
size_t save_token_count(const SaveWork& work, int line);
CutLine save_cut(const SaveWork& work, int line);

// Changes the tokens of a line, which is refused where the reader took it in pieces.
void save_change(SaveWork& work, int line, const LineWish& wish, const std::string& of);
void save_delete(SaveWork& work, int line, const std::string& of);

// Elements of a list in their order.
template <typename Element>
std::vector<const Element*> save_elements(const KeyedList& list) {
    std::vector<const Element*> elements;
    for (const Element& element : list_elements<Element>(list)) { elements.push_back(&element); }
    return elements;
}

void save_skeleton_and_points(SaveWork& work);
void save_layers(SaveWork& work);
void save_children(SaveWork& work);

}  // namespace pelt
