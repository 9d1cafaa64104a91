// The line reader: hands the lines of a file or of a text in memory to a callback, cut into classified tokens.
//
// The accessors serve whichever read is innermost. What surprises: a read that ends leaves no read in progress, also
// for the rest of the callback that started it; the enclosing read takes over again when that callback returns.
#include "formats/line_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

#include "foundation/file_access.h"
#include "foundation/load_error.h"
#include "foundation/text.h"

namespace pelt {

namespace {

constexpr const char* DATA_NAME = "(data)";
constexpr char BYTE_ORDER_MARK[] = "\xEF\xBB\xBF";
constexpr size_t BYTE_ORDER_MARK_SIZE = sizeof BYTE_ORDER_MARK - 1;

// One running read, held by the operation that runs it. Starting a read or a line costs nothing for tokens that are not
// there.
struct LineReader {
    int file;  // slot of the open file; unused for a read from memory
    const char* file_name;
    char line[READER_LINE_SIZE];
    int32_t line_number;
    char texts[READER_LINE_SIZE + 1];  // the tokens, one behind the other: never longer than the line they come from
    ReaderTokens tokens;
    bool more;  // the line holds a token beyond the limit
    bool abort;
    const char* comment_chars;
    int32_t comment_count;
    const char* data;      // read position in memory, null for a file
    const char* data_end;  // of a text that is read by the rules of a file
    const char* text;      // where such a text begins
    TextPlace place;       // of the line in it
};

constexpr ReaderTokens NO_TOKENS{};

LineReader* current_reader = nullptr;

void make_current(LineReader* reader) {
    current_reader = reader;
    reader_tokens = reader != nullptr ? &reader->tokens : &NO_TOKENS;
    if (reader == nullptr) {
        load_error_watch(nullptr, nullptr);
    } else {
        load_error_watch(reader->file_name, &reader->line_number, reader->line);
    }
}

bool is_blank(char c) { return c == ' ' || c == '\t'; }

bool is_comment(const LineReader& reader) {
    for (int32_t i = 0; i < reader.comment_count; ++i) {
        if (reader.line[0] == reader.comment_chars[i]) { return true; }
    }
    return false;
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

bool ends_word(char c) { return c == '\0' || is_blank(c); }

// What a bare word was, gathered while it is copied, so that a number of few digits needs no second look. It stays by
// hand: with std::from_chars in its place a load takes 2.25 times its floor in the benchmark, with it 2.0, which is the
// goal.
struct WordShape {
    uint64_t value;  // of the digits, meaningful while they are few
    ptrdiff_t digits;
    ptrdiff_t decimals;  // of the digits
    bool negative;
    bool point;
    bool number;  // nothing but a sign, digits and a point, in this order
};

constexpr ptrdiff_t SHORT_INT = 9;       // that many digits fit 32 bits whatever they are
constexpr ptrdiff_t SHORT_DECIMAL = 15;  // and that many 53 bits

// As exact as the double: a whole number of up to 53 bits divided by one of them is rounded once, as the library
// rounds.
constexpr double POWERS_OF_TEN[SHORT_DECIMAL + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                     1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

const char* copy_digits(const char* from, char*& to, uint64_t& value) {
    for (; is_digit(*from); ++from) {
        *to++ = *from;
        value = value * 10 + static_cast<uint64_t>(*from - '0');
    }
    return from;
}

// Copies up to the next blank, tab or end; returns where it stopped.
inline const char* copy_bare_word(const char* from, char*& end, WordShape& shape) {
    char* to = end;
    uint64_t value = 0;
    shape.negative = *from == '-';
    if (shape.negative) { *to++ = *from++; }
    const char* const digits = from;
    from = copy_digits(from, to, value);
    shape.digits = from - digits;
    shape.decimals = 0;
    shape.point = *from == '.';
    if (shape.point) {
        *to++ = *from++;
        const char* const decimals = from;
        from = copy_digits(from, to, value);
        shape.decimals = from - decimals;
        shape.digits += shape.decimals;
    }
    shape.number = ends_word(*from);
    for (; !ends_word(*from); ++from) { *to++ = *from; }
    shape.value = value;
    end = to;
    return from;
}

const char* copy_quoted_text(const char* from, char*& to) {
    for (; *from != '\0' && *from != '"'; ++from) { *to++ = *from; }
    return from;
}

void store_int(ReaderTokens& tokens, int32_t value) {
    const int32_t index = tokens.count++;
    tokens.classes[index] = WORD_INT;
    tokens.ints[index] = value;
    tokens.floats[index] = static_cast<float>(value);
}

// The integer value of a float stays out of reach of the accessors, and is not kept.
void store_float(ReaderTokens& tokens, double value) {
    const int32_t index = tokens.count++;
    tokens.classes[index] = WORD_FLOAT;
    tokens.floats[index] = to_float(value);
}

// Classifies and converts any token.
void store_token(ReaderTokens& tokens, const char* text) {
    const WordClass kind = word_class(text);
    if (kind == WORD_INT) {
        store_int(tokens, text_to_int(text));
    } else if (kind == WORD_FLOAT) {
        store_float(tokens, text_to_double(text));
    } else {
        tokens.classes[tokens.count++] = kind;
    }
}

// The same for a bare word of known shape.
inline void store_bare_word(ReaderTokens& tokens, const char* text, const WordShape& shape) {
    if (shape.number && !shape.point && shape.digits >= 1 && shape.digits <= SHORT_INT) {
        const auto value = static_cast<int32_t>(shape.value);
        store_int(tokens, shape.negative ? -value : value);
    } else if (shape.number && shape.point && shape.digits >= 1 && shape.digits <= SHORT_DECIMAL) {
        const double value = static_cast<double>(shape.value) / POWERS_OF_TEN[shape.decimals];
        store_float(tokens, shape.negative ? -value : value);
    } else {
        store_token(tokens, text);
    }
}

// Whether the text begins with a token, behind blanks.
bool holds_token(const char* text) {
    while (is_blank(*text)) { ++text; }
    return *text == '"' ? text[1] != '\0' && text[1] != '"' : *text != '\0';
}

// Cuts the line into tokens; true when there is at least one. A comment character counts in the first column only.
// An empty quoted token ends the line: what stands behind it is lost, as intended.
bool split_line(LineReader& reader) {
    ReaderTokens& tokens = reader.tokens;
    tokens.count = 0;
    reader.more = false;
    if (is_comment(reader)) { return false; }
    const char* at = reader.line;
    char* to = reader.texts;
    while (tokens.count < READER_TOKEN_LIMIT) {
        while (is_blank(*at)) { ++at; }
        const bool quoted = *at == '"';
        WordShape shape;
        char* const text = to;
        at = quoted ? copy_quoted_text(at + 1, to) : copy_bare_word(at, to, shape);
        if (to == text) { break; }
        *to++ = '\0';
        tokens.texts[tokens.count] = text;
        if (quoted || to - text > READER_TOKEN_SIZE) {
            text[std::min<ptrdiff_t>(to - text, READER_TOKEN_SIZE) - 1] = '\0';
            store_token(tokens, text);
        } else {
            store_bare_word(tokens, text, shape);
        }
        if (*at == '\0') { break; }
        ++at;  // the delimiter; behind a closing quote the next token may start at once
        reader.more = tokens.count == READER_TOKEN_LIMIT && holds_token(at);
    }
    return tokens.count > 0;
}

void count_line(LineReader& reader) {
    if (reader.line_number < std::numeric_limits<int32_t>::max()) { ++reader.line_number; }
}

// Whether there was one.
bool drop_byte_order_mark(char* line) {
    const bool marked = std::strncmp(line, BYTE_ORDER_MARK, BYTE_ORDER_MARK_SIZE) == 0;
    if (marked) { std::memmove(line, line + BYTE_ORDER_MARK_SIZE, std::strlen(line + BYTE_ORDER_MARK_SIZE) + 1); }
    return marked;
}

// Every physical line counts, also an empty one.
bool next_file_line(LineReader& reader) {
    while (file_gets(reader.line, READER_LINE_SIZE, reader.file) != nullptr) {
        if (reader.line_number == 0) { drop_byte_order_mark(reader.line); }
        count_line(reader);
        if (split_line(reader)) { return true; }
    }
    return false;
}

// The same for a text in memory.
bool next_text_line(LineReader& reader) {
    constexpr ptrdiff_t LONGEST = READER_LINE_SIZE - 1;
    while (reader.data != reader.data_end) {
        const auto searched = static_cast<size_t>(std::min(reader.data_end - reader.data, LONGEST));
        const void* newline = std::memchr(reader.data, '\n', searched);
        const auto* found = static_cast<const char*>(newline);
        size_t length = found != nullptr ? static_cast<size_t>(found - reader.data) : searched;
        std::memcpy(reader.line, reader.data, length);
        reader.place.begin = static_cast<size_t>(reader.data - reader.text);
        reader.data += length;
        // A CR that the limit parted from its LF goes with it as well.
        const bool ended = reader.data != reader.data_end && *reader.data == '\n' &&
                           (found != nullptr || reader.line[length - 1] == '\r');
        reader.data += ended ? 1 : 0;
        length -= ended && length > 0 && reader.line[length - 1] == '\r' ? 1 : 0;
        reader.line[length] = '\0';
        reader.place.end = reader.place.begin + length;
        if (reader.line_number == 0 && drop_byte_order_mark(reader.line)) {
            reader.place.begin += BYTE_ORDER_MARK_SIZE;
        }
        count_line(reader);
        if (split_line(reader)) { return true; }
    }
    return false;
}

// Lines without a byte do not count here, which differs from a file and is intended.
bool next_data_line(LineReader& reader) {
    while (*reader.data != '\0') {
        constexpr size_t LONGEST = READER_LINE_SIZE - 1;
        size_t length = 0;
        while (length < LONGEST && reader.data[length] != '\0' && reader.data[length] != '\r' &&
               reader.data[length] != '\n') {
            ++length;
        }
        std::memcpy(reader.line, reader.data, length);
        reader.line[length] = '\0';
        reader.data += length;
        reader.data += *reader.data == '\r' ? 1 : 0;
        reader.data += *reader.data == '\n' ? 1 : 0;
        if (length > 0) {
            count_line(reader);
            if (split_line(reader)) { return true; }
        }
    }
    return false;
}

bool arguments_usable(const char* source, const char* comment_chars, int32_t comment_count, LineCallback callback) {
    return source != nullptr && callback != nullptr && (comment_chars != nullptr || comment_count < 1);
}

void start(LineReader& reader, const char* file_name, const char* comment_chars, int32_t comment_count) {
    reader.file = -1;
    reader.file_name = file_name;
    reader.line[0] = '\0';
    reader.line_number = 0;
    reader.tokens.count = 0;
    reader.more = false;
    reader.abort = false;
    reader.comment_chars = comment_chars;
    reader.comment_count = comment_count;
    reader.data = nullptr;
    reader.data_end = nullptr;
    reader.text = nullptr;
    reader.place = {0, 0};
}

// A line that asks for more memory than there is ends the read with a text, as a bad one does.
void hand_over(LineReader& reader, LineCallback callback, void* context) {
    bool refused = false;
    try {
        callback(context);
    } catch (const std::bad_alloc&) { refused = true; }
    if (current_reader != &reader) {
        make_current(&reader);  // a nested read ran
    }
    if (refused) {
        load_error_set("out of memory");
        reader.abort = true;
    }
}

}  // namespace

const ReaderTokens* reader_tokens = &NO_TOKENS;

int reader_run_file(const char* path, const char* comment_chars, int32_t comment_count, LineCallback callback,
                    void* context) {
    if (!arguments_usable(path, comment_chars, comment_count, callback)) { return 0; }
    const int file = file_open(path, "r");
    if (file < 0) {
        make_current(nullptr);
        return 0;
    }
    LineReader reader;
    start(reader, path, comment_chars, comment_count);
    reader.file = file;
    make_current(&reader);
    while (!reader.abort && next_file_line(reader)) { hand_over(reader, callback, context); }
    // A stream that broke off is not a file read to its end.
    const bool broken = file_error(file) != 0;
    file_close(file);
    if (reader.abort && load_failure().text.empty()) { load_failure_set("this line cannot be used"); }
    make_current(nullptr);
    return reader.abort || broken ? 0 : 1;
}

int reader_run_data(const char* text, const char* comment_chars, int32_t comment_count, LineCallback callback,
                    void* context) {
    if (!arguments_usable(text, comment_chars, comment_count, callback)) { return 0; }
    LineReader reader;
    start(reader, DATA_NAME, comment_chars, comment_count);
    reader.data = text;
    if (std::strncmp(text, BYTE_ORDER_MARK, BYTE_ORDER_MARK_SIZE) == 0) { reader.data += BYTE_ORDER_MARK_SIZE; }
    make_current(&reader);
    while (!reader.abort && next_data_line(reader)) { hand_over(reader, callback, context); }
    make_current(nullptr);
    return reader.abort ? 0 : 1;
}

int reader_run_text(std::string_view text, const char* comment_chars, int32_t comment_count, LineCallback callback,
                    void* context, const char* file_name) {
    if (!arguments_usable("", comment_chars, comment_count, callback)) { return 0; }
    LineReader reader;
    start(reader, file_name != nullptr ? file_name : DATA_NAME, comment_chars, comment_count);
    reader.text = reader.data = text.data();
    reader.data_end = text.data() + text.size();
    make_current(&reader);
    while (!reader.abort && next_text_line(reader)) { hand_over(reader, callback, context); }
    if (file_name != nullptr && reader.abort && load_failure().text.empty()) {
        load_failure_set("this line cannot be used");
    }
    make_current(nullptr);
    return reader.abort ? 0 : 1;
}

void reader_abort() {
    if (current_reader != nullptr) { current_reader->abort = true; }
}

int reader_take_abort_back() {
    const bool aborted = current_reader != nullptr && current_reader->abort;
    if (aborted) { current_reader->abort = false; }
    return aborted ? 1 : 0;
}

int reader_has_more_tokens() { return current_reader != nullptr && current_reader->more ? 1 : 0; }

int reader_token_equals(const char* text, int32_t index) {
    return text != nullptr && reader_has_token(index) && std::strcmp(reader_tokens->texts[index], text) == 0;
}

TextPlace reader_line_place() { return current_reader != nullptr ? current_reader->place : TextPlace{0, 0}; }

std::vector<TextPlace> reader_token_places() {
    std::vector<TextPlace> places;
    const char* const line = reader_line();
    const char* at = line;
    while (static_cast<int32_t>(places.size()) < reader_tokens->count) {
        while (is_blank(*at)) { ++at; }
        const char* const begin = at;
        char copy[READER_LINE_SIZE + 1];
        char* end = copy;
        WordShape unused;
        const bool quoted = *at == '"';
        at = quoted ? copy_quoted_text(at + 1, end) : copy_bare_word(at, end, unused);
        const bool closed = quoted && *at == '"';
        places.push_back({static_cast<size_t>(begin - line), static_cast<size_t>(at - line) + (closed ? 1 : 0)});
        at += *at != '\0' ? 1 : 0;
    }
    return places;
}

const char* reader_line() { return current_reader != nullptr ? current_reader->line : nullptr; }

int32_t reader_line_number() { return current_reader != nullptr ? current_reader->line_number : 0; }

const char* reader_file_name() { return current_reader != nullptr ? current_reader->file_name : nullptr; }

}  // namespace pelt
