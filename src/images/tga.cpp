// Reader of TGA images. It decodes what the system's models use, uncompressed true colour, and trusts nothing in the
// header: sizes are held against the length of the file before memory is asked for.
//
// What surprises: the id field is passed over as a line of text would be, one byte short, so that the pixels of a
// file with an id field come one byte out of step. Models depend on it; it is intended.
#include "images/tga.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "foundation/file_find.h"

namespace pelt {

namespace {

constexpr size_t HEADER_SIZE = 18;
constexpr size_t ID_LENGTH_OFFSET = 0;
constexpr size_t TYPE_OFFSET = 2;
constexpr size_t WIDTH_OFFSET = 12;
constexpr size_t HEIGHT_OFFSET = 14;
constexpr size_t DEPTH_OFFSET = 16;
constexpr int TYPE_TRUE_COLOUR = 2;
constexpr int64_t BYTES_PER_PIXEL = 3;

constexpr const char* CANNOT_OPEN = "cannot open TGA file: %s";
constexpr const char* READ_FAILED = "TGA read failed: %s";
constexpr const char* WRONG_TYPE = "TGA file is not type 2 (true color, uncompressed): %s";
constexpr const char* WRONG_DEPTH = "TGA image is not 24 or 32 bits per pixel: %s";

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
struct BlockFreer {
    void operator()(void* block) const { std::free(block); }
};
using File = std::unique_ptr<FILE, FileCloser>;
using Block = std::unique_ptr<unsigned char, BlockFreer>;

int32_t signed_word(const unsigned char* bytes) {
    return static_cast<int16_t>(static_cast<uint16_t>(bytes[0] | bytes[1] << 8));
}

// Takes what fgets with a size of the id length would take: at most one byte less, and nothing behind a line feed.
void skip_id_field(FILE* file, int length) {
    for (int taken = 0; taken < length - 1; ++taken) {
        const int byte = std::fgetc(file);
        if (byte == EOF || byte == '\n') { return; }
    }
}

// Bytes from here to the end of the file; the position stays.
int64_t bytes_left(FILE* file) {
    const long here = std::ftell(file);
    if (here < 0 || std::fseek(file, 0, SEEK_END) != 0) { return 0; }
    const long end = std::ftell(file);
    if (std::fseek(file, here, SEEK_SET) != 0) { return 0; }
    return std::max(0L, end - here);
}

// At least one byte, so that a picture without a pixel has a block too.
Block new_block(int64_t size) {
    return Block(static_cast<unsigned char*>(std::malloc(static_cast<size_t>(std::max<int64_t>(size, 1)))));
}

// The last row of the file becomes the first row of the result; a fourth byte of a pixel is dropped.
void convert(const unsigned char* raw, int32_t width, int32_t height, int64_t raw_pixel, unsigned char* out) {
    for (int64_t row = int64_t{height} - 1; row >= 0; --row) {
        const unsigned char* from = raw + row * width * raw_pixel;
        for (int32_t column = 0; column < width; ++column, from += raw_pixel, out += BYTES_PER_PIXEL) {
            out[0] = from[2];
            out[1] = from[1];
            out[2] = from[0];
        }
    }
}

// Pixels in result form, or null when the file does not hold them. Up to a quarter of a file with four bytes a pixel
// may be missing; what is missing is black.
Block read_pixels(FILE* file, int32_t width, int32_t height, int64_t raw_pixel) {
    if (width < 0 || height < 0) { return nullptr; }
    const int64_t pixels = int64_t{width} * height;
    const int64_t wanted = pixels * raw_pixel;
    const int64_t held = std::min(wanted, bytes_left(file));
    if (held < pixels * BYTES_PER_PIXEL) { return nullptr; }
    Block raw = new_block(wanted);
    Block out = new_block(pixels * BYTES_PER_PIXEL);
    if (!raw || !out || std::fread(raw.get(), 1, static_cast<size_t>(held), file) != static_cast<size_t>(held)) {
        return nullptr;
    }
    std::memset(raw.get() + held, 0, static_cast<size_t>(wanted - held));
    convert(raw.get(), width, height, raw_pixel, out.get());
    return out;
}

const char* error_text(const char* format, const char* path) {
    static std::string text;
    text.assign(format, std::strlen(format) - 2);  // every format ends in the parameter
    text += path;
    return text.c_str();
}

}  // namespace

TgaImage* tga_read(const char* path, const char** error) {
    const File file(file_stream_read(path));
    return tga_read_stream(file.get(), path, error);
}

TgaImage* tga_read_stream(std::FILE* file, const char* path, const char** error) {
    const char* unused = nullptr;
    const char** reason = error != nullptr ? error : &unused;
    *reason = nullptr;
    const auto fail = [&](const char* format) -> TgaImage* {
        *reason = error_text(format, path != nullptr ? path : "");
        return nullptr;
    };

    if (file == nullptr) { return fail(CANNOT_OPEN); }
    unsigned char header[HEADER_SIZE];
    if (std::fread(header, HEADER_SIZE, 1, file) != 1) { return fail(READ_FAILED); }
    if (header[TYPE_OFFSET] != TYPE_TRUE_COLOUR) { return fail(WRONG_TYPE); }
    skip_id_field(file, header[ID_LENGTH_OFFSET]);
    const int depth = header[DEPTH_OFFSET];
    if (depth != 24 && depth != 32) { return fail(WRONG_DEPTH); }
    const int32_t width = signed_word(header + WIDTH_OFFSET);
    const int32_t height = signed_word(header + HEIGHT_OFFSET);
    Block pixels = read_pixels(file, width, height, depth / 8);
    if (!pixels) { return fail(READ_FAILED); }
    return new TgaImage{width, height, pixels.release()};
}

void tga_free(TgaImage* image) {
    if (image != nullptr) {
        std::free(image->pixels);
        delete image;
    }
}

}  // namespace pelt
