// Editing a text byte by byte. What surprises: the columns of a line are those of its old tokens, which each token
// takes up again as soon as there is room; a number in a table keeps its right edge.
#include "formats/save_edits.h"

#include <algorithm>

#include "foundation/text.h"

namespace pelt {

namespace {

constexpr size_t NAME_ROOM = 128;
constexpr size_t ROTATION_ROOM = 8;
constexpr float SHARE_BYTES = 255.0f;

std::string cut_to(const std::string& text, size_t room) {
    std::string cut(room, '\0');
    str_copy(text.c_str(), cut.data(), room);
    return cut.c_str();
}

// ---- what tokens mean ----

bool means_same(const LineToken& old, const LineToken& wanted, char sense, const Model* model) {
    switch (sense) {
        case 'I': return old.number == wanted.number;
        case 'L': return (old.number & 0xFFFF) == (wanted.number & 0xFFFF);
        case 'B': return (old.number & 0xFF) == (wanted.number & 0xFF);
        case 'R': return old.real == wanted.real;
        case 'H': return float_to_int(old.real * SHARE_BYTES) == float_to_int(wanted.real * SHARE_BYTES);
        case 'W': return (old.text == "singlesided") == (wanted.text == "singlesided");
        case 'J':
            return model_find_joint(model, old.text.c_str()) == model_find_joint(model, wanted.text.c_str()) &&
                   (model_find_joint(model, old.text.c_str()) != nullptr || wanted.text == "world");
        case 'N': return cut_to(old.text, NAME_ROOM) == cut_to(wanted.text, NAME_ROOM);
        case 'C': return cut_to(old.text, ROTATION_ROOM) == cut_to(wanted.text, ROTATION_ROOM);
        default: return old.text == wanted.text;
    }
}

// ---- columns ----

// A token on its way into the new line: one of the old line, with its text as it is to be, or a new one without a
// place.
struct LaidToken {
    std::string text;
    bool has_place;
    TextPlace place;  // in the old line
    size_t gap;       // where the blanks before it begin there
    bool to_the_right;
};

// Where a token of the old line would best begin, for others to keep their columns.
size_t wanted_column(const LaidToken& token) {
    return token.to_the_right && token.text.size() < token.place.end ? token.place.end - token.text.size()
                                                                     : token.place.begin;
}

// Tabs stay as they are; blanks make up for what grew or shrank before them.
std::string lay_line(std::string_view old, const std::vector<LaidToken>& tokens, size_t old_end) {
    std::string line;
    ptrdiff_t shift = 0;  // of the columns behind a tab
    for (const LaidToken& token : tokens) {
        if (!token.has_place) {
            line += " " + token.text;
            continue;
        }
        const std::string_view gap = old.substr(token.gap, token.place.begin - token.gap);
        const bool is_plain = token.gap > 0 && !gap.empty() && gap.find_first_not_of(' ') == std::string_view::npos;
        if (is_plain) {
            const auto column = static_cast<ptrdiff_t>(wanted_column(token)) + shift;
            line.append(static_cast<size_t>(std::max<ptrdiff_t>(column - static_cast<ptrdiff_t>(line.size()), 1)), ' ');
        } else {
            // Behind a closing quote no blank is needed, behind anything else it is.
            line += gap.empty() && !line.empty() && line.back() != '"' ? std::string(" ") : std::string(gap);
            shift = static_cast<ptrdiff_t>(line.size()) - static_cast<ptrdiff_t>(token.place.begin);
        }
        line += token.text;
    }
    return line.append(old.substr(old_end));
}

// As the wanted line has it, in quotes where the old token stood in some.
std::string token_text(const LineToken& wanted, bool was_quoted) {
    const bool quoted = wanted.quoted || (was_quoted && wanted.text.find('"') == std::string::npos);
    return quoted ? "\"" + wanted.text + "\"" : wanted.text;
}

std::string line_end_above(std::string_view text, size_t at) {
    size_t newline = at > 0 ? at - 1 : std::string_view::npos;
    if (newline == std::string_view::npos || text[newline] != '\n') { newline = text.find('\n'); }
    const bool has_return = newline != std::string_view::npos && newline > 0 && text[newline - 1] == '\r';
    return has_return ? "\r\n" : "\n";
}

}  // namespace

void edits_insert_line(TextEdits& edits, size_t at, std::string_view line) {
    edits.edits.push_back({at, at, std::string(line), true});
}

void edits_delete_line(TextEdits& edits, const SourceLine& line) {
    edits.edits.push_back({line.place.begin, line.next, {}, false});
}

std::string edits_apply(const TextEdits& edits, std::string_view text) {
    std::vector<const TextEdits::Edit*> order;
    for (const TextEdits::Edit& edit : edits.edits) { order.push_back(&edit); }
    // Among those of one place the order stays, and what is put in comes before what goes.
    std::stable_sort(order.begin(), order.end(), [](const TextEdits::Edit* a, const TextEdits::Edit* b) {
        return a->begin != b->begin ? a->begin < b->begin : (a->end == a->begin) && (b->end != b->begin);
    });
    std::string out;
    size_t done = 0;
    for (const TextEdits::Edit* edit : order) {
        if (edit->begin > done) { out.append(text.substr(done, edit->begin - done)); }
        done = std::max(done, edit->end);
        if (!edit->is_line) {
            out += edit->text;
            continue;
        }
        const std::string line_end = line_end_above(text, edit->begin);
        const bool unended = edit->begin == text.size() && !text.empty() && text.back() != '\n';
        if (unended && !out.empty() && out.back() != '\n') { out += line_end; }
        out += edit->text;
        if (!unended) { out += line_end; }
    }
    return out.append(text.substr(done));
}

void edits_change_line(TextEdits& edits, const SaveSource& source, int line, const LineWish& wish) {
    const SourceLine& old = source.lines[static_cast<size_t>(line)];
    const std::string_view bytes = source.text.substr(old.place.begin, old.place.end - old.place.begin);
    const CutLine cut = cut_line(bytes);
    const std::vector<LineToken> wanted = cut_line(wish.line).tokens;
    const size_t meaning = std::min(wish.meaning, cut.tokens.size());
    const std::string_view senses = wish.senses;
    std::vector<LaidToken> laid;
    const auto keep = [&](size_t token) {
        const TextPlace place = cut.tokens[token].place;
        const size_t gap = token > 0 ? cut.tokens[token - 1].place.end : 0;
        laid.push_back({std::string(bytes.substr(place.begin, place.end - place.begin)), true, place, gap, false});
    };
    bool changed = false;
    size_t i = 0;
    for (; i < std::min(wanted.size(), meaning); ++i) {
        const char sense = senses[std::min(i, senses.size() - 1)];
        keep(i);
        if (means_same(cut.tokens[i], wanted[i], sense, wish.model)) { continue; }
        // A remark where a number could stand is read as one: it makes way.
        if (sense == 'R' && cut.tokens[i].kind == WORD_TEXT) {
            laid.pop_back();
            break;
        }
        constexpr std::string_view NUMBERS = "IBRHL";
        const bool is_table = i > 0 && cut.tokens[i].place.begin - cut.tokens[i - 1].place.end > 1;
        laid.back().text = token_text(wanted[i], cut.tokens[i].quoted);
        laid.back().to_the_right = is_table && NUMBERS.find(sense) != std::string_view::npos;
        changed = true;
    }
    for (size_t token = i; token < wanted.size(); ++token) {
        laid.push_back({token_text(wanted[token], false), false, {}, 0, false});
        changed = true;
    }
    size_t rest = i;
    if (wish.may_shrink && meaning > wanted.size()) {
        rest = meaning;
        changed = true;
    }
    for (size_t token = rest; token < cut.tokens.size(); ++token) { keep(token); }
    if (!changed) { return; }
    const size_t end = cut.tokens.empty() ? 0 : cut.tokens.back().place.end;
    edits.edits.push_back({old.place.begin, old.place.end, lay_line(bytes, laid, end), false});
}

}  // namespace pelt
