// Formatted text on its way to a file, for the writers of this folder.
//
// What surprises: the formats look like those of the C library and are read here, because the library takes the
// decimal point from the locale and writes a non-number with a sign, and a fixed buffer would cut long names.
#include "formats/text_output.h"

#include "foundation/file_access.h"
#include "foundation/text.h"

namespace pelt {

namespace {

constexpr size_t HAND_ON_SIZE = 65536;
constexpr size_t NUMBER_SIZE = 512;
constexpr int DECIMALS_DEFAULT = 6;

bool take_to_slot(void* context, const char* bytes, size_t size) {
    return file_write(*static_cast<const int*>(context), bytes, 1, size) == size;
}

bool take_to_stream(void* context, const char* bytes, size_t size) {
    return std::fwrite(bytes, 1, size, static_cast<std::FILE*>(context)) == size;
}

bool take_to_string(void* context, const char* bytes, size_t size) {
    static_cast<std::string*>(context)->append(bytes, size);
    return true;
}

void hand_on(TextOutput& out) {
    if (!out.failed && !out.waiting.empty()) {
        out.failed = !out.take(out.context, out.waiting.data(), out.waiting.size());
    }
    out.waiting.clear();
}

// What stands between '%' and the letter of the value.
struct Field {
    bool left;
    size_t width;
    int decimals;
};

Field read_field(const char*& format) {
    Field field{false, 0, DECIMALS_DEFAULT};
    if (*format == '-') {
        field.left = true;
        ++format;
    }
    for (; *format >= '0' && *format <= '9'; ++format) {
        field.width = field.width * 10 + static_cast<size_t>(*format - '0');
    }
    if (*format == '.') {
        field.decimals = 0;
        for (++format; *format >= '0' && *format <= '9'; ++format) {
            field.decimals = field.decimals * 10 + (*format - '0');
        }
    }
    return field;
}

void put_padded(std::string& to, const Field& field, const char* text, size_t length) {
    const size_t padding = field.width > length ? field.width - length : 0;
    if (!field.left) { to.append(padding, ' '); }
    to.append(text, length);
    if (field.left) { to.append(padding, ' '); }
}

void put_value(std::string& to, const Field& field, char letter, const TextValue& value) {
    char number[NUMBER_SIZE];
    switch (letter) {
        case 'd':
            int_to_text(value.integer, number);
            put_padded(to, field, number, std::char_traits<char>::length(number));
            break;
        case 'f':
            put_padded(to, field, number, float_to_text(value.number, field.decimals, number, sizeof number));
            break;
        default: put_padded(to, field, value.text, std::char_traits<char>::length(value.text)); break;
    }
}

}  // namespace

TextOutput text_output_to_slot(const int* slot) { return TextOutput{take_to_slot, const_cast<int*>(slot), {}, false}; }

TextOutput text_output_to_stream(std::FILE* stream) { return TextOutput{take_to_stream, stream, {}, false}; }

TextOutput text_output_to_string(std::string* text) { return TextOutput{take_to_string, text, {}, false}; }

void text_put(TextOutput& out, const char* format, std::initializer_list<TextValue> values) {
    const TextValue* value = values.begin();
    while (*format != '\0') {
        if (*format != '%' || value == values.end()) {
            out.waiting += *format++;
            continue;
        }
        ++format;
        const Field field = read_field(format);
        put_value(out.waiting, field, *format++, *value++);
    }
    if (out.waiting.size() >= HAND_ON_SIZE) { hand_on(out); }
}

bool text_finish(TextOutput& out) {
    hand_on(out);
    return !out.failed;
}

std::string text_for_comment(const char* name) {
    constexpr unsigned char BLANK = ' ';
    constexpr unsigned char DELETE = 0x7F;
    std::string text = name != nullptr ? name : "";
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        c = byte < BLANK || byte == DELETE ? '?' : c;
    }
    return text;
}

}  // namespace pelt
