// Reads .cur files: a directory of pictures, each a bitmap of colours with a mask of one bit below it, rows from the
// bottom. What surprises: the height in the bitmap counts both halves. Every offset and size in the file is taken for a
// lie until it was held against the bytes that are there; of the files of X, which a library reads, nothing else is
// done here.
#include "window/x11/cursor_file.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace pelt {

namespace {

constexpr size_t DIRECTORY_SIZE = 6;
constexpr size_t ENTRY_SIZE = 16;
constexpr uint32_t BITMAP_HEADER_SIZE = 40;
constexpr uint32_t FILE_TYPE_CURSOR = 2;
constexpr uint32_t OPAQUE = 0xFF000000u;

// The files of X: a head with its own length, entries of a kind, a size and a place, and pictures with a head each.
constexpr size_t X_HEAD_SIZE = 16;
constexpr size_t X_ENTRY_SIZE = 12;
constexpr size_t X_PICTURE_HEAD_SIZE = 36;
constexpr size_t X_PIXEL_SIZE = 4;
constexpr uint32_t X_PICTURE = 0xFFFD0002u;

struct Bytes {
    const uint8_t* data;
    size_t size;
};

// Little-endian numbers; the caller has checked that they are there.
uint32_t read_16(const uint8_t* at) { return static_cast<uint32_t>(at[0]) | static_cast<uint32_t>(at[1]) << 8; }
uint32_t read_32(const uint8_t* at) { return read_16(at) | read_16(at + 2) << 16; }

// The part of the file from offset on, at most size bytes; empty when the file does not hold all of it.
Bytes part(Bytes file, size_t offset, size_t size) {
    if (offset > file.size || size > file.size - offset) { return {nullptr, 0}; }
    return {file.data + offset, size};
}

struct Entry {
    int32_t width;
    int32_t hot_x, hot_y;
    size_t size, offset;
};

Entry read_entry(const uint8_t* at) {
    return Entry{at[0] == 0 ? CURSOR_SIZE_MAX : at[0], static_cast<int32_t>(read_16(at + 4)),
                 static_cast<int32_t>(read_16(at + 6)), read_32(at + 8), read_32(at + 12)};
}

// Layout of one bitmap, all sizes in bytes.
struct Layout {
    int32_t width, height;
    uint32_t bits;
    size_t palette_count;
    Bytes palette, colours, mask;
    size_t colour_row, mask_row;
};

size_t row_bytes(int32_t width, uint32_t bits) { return (static_cast<size_t>(width) * bits + 31) / 32 * 4; }

bool read_layout(Bytes bitmap, Layout* layout) {
    if (bitmap.size < BITMAP_HEADER_SIZE) { return false; }
    const uint32_t header = read_32(bitmap.data);
    const uint32_t width = read_32(bitmap.data + 4);
    const uint32_t both_heights = read_32(bitmap.data + 8);
    const uint32_t bits = read_16(bitmap.data + 14);
    const uint32_t compression = read_32(bitmap.data + 16);
    const uint32_t colours_used = read_32(bitmap.data + 32);
    constexpr auto LIMIT = static_cast<uint32_t>(CURSOR_SIZE_MAX);
    if (header < BITMAP_HEADER_SIZE || header > bitmap.size || compression != 0) { return false; }
    if (width < 1 || width > LIMIT) { return false; }
    if (both_heights < 2 || both_heights > 2 * LIMIT || both_heights % 2 != 0) { return false; }
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24 && bits != 32) { return false; }

    layout->width = static_cast<int32_t>(width);
    layout->height = static_cast<int32_t>(both_heights / 2);
    layout->bits = bits;
    layout->palette_count = 0;
    if (bits <= 8) {
        const uint32_t full = 1u << bits;
        if (colours_used > full) { return false; }
        layout->palette_count = colours_used == 0 ? full : colours_used;
    }
    layout->colour_row = row_bytes(layout->width, bits);
    layout->mask_row = row_bytes(layout->width, 1);
    const auto rows = static_cast<size_t>(layout->height);
    const size_t colours_at = header + layout->palette_count * 4;
    const size_t mask_at = colours_at + layout->colour_row * rows;
    layout->palette = part(bitmap, header, layout->palette_count * 4);
    layout->colours = part(bitmap, colours_at, layout->colour_row * rows);
    layout->mask = part(bitmap, mask_at, layout->mask_row * rows);
    return layout->colours.data != nullptr && layout->mask.data != nullptr;
}

bool mask_bit(const uint8_t* row, int32_t x) { return ((row[x / 8] >> (7 - x % 8)) & 1) != 0; }

// Colour of a pixel; the alpha byte is 0 but for 32 bits. An index behind the end of the palette is black.
uint32_t pixel_colour(const Layout& layout, const uint8_t* row, int32_t x) {
    const auto at = static_cast<size_t>(x);
    switch (layout.bits) {
        case 24: return read_16(row + at * 3) | static_cast<uint32_t>(row[at * 3 + 2]) << 16;
        case 32: return read_32(row + at * 4);
        default: break;
    }
    const size_t bit = at * layout.bits;
    const auto shift = static_cast<unsigned>(8 - layout.bits - bit % 8);
    const size_t index = (static_cast<unsigned>(row[bit / 8]) >> shift) & ((1u << layout.bits) - 1);
    if (index >= layout.palette_count) { return 0; }
    return read_32(layout.palette.data + index * 4) & ~OPAQUE;
}

bool has_alpha(const Layout& layout) {
    if (layout.bits != 32) { return false; }
    for (size_t i = 3; i < layout.colours.size; i += 4) {
        if (layout.colours.data[i] != 0) { return true; }
    }
    return false;
}

void read_pixels(const Layout& layout, uint32_t* pixels) {
    const bool alpha = has_alpha(layout);
    for (int32_t y = 0; y < layout.height; ++y) {
        const auto from_bottom = static_cast<size_t>(layout.height - 1 - y);
        const uint8_t* colours = layout.colours.data + from_bottom * layout.colour_row;
        const uint8_t* mask = layout.mask.data + from_bottom * layout.mask_row;
        for (int32_t x = 0; x < layout.width; ++x) {
            const uint32_t colour = pixel_colour(layout, colours, x);
            uint32_t& pixel = *pixels++;
            if (alpha) {
                pixel = colour;
            } else if (!mask_bit(mask, x)) {
                pixel = colour | OPAQUE;
            } else {
                pixel = (colour & ~OPAQUE) == 0 ? 0 : OPAQUE;  // outside the mask a colour inverts the screen
            }
        }
    }
}

bool choose_entry(Bytes file, Entry* chosen) {
    if (file.data == nullptr || file.size < DIRECTORY_SIZE) { return false; }
    const uint32_t count = read_16(file.data + 4);
    if (read_16(file.data) != 0 || read_16(file.data + 2) != FILE_TYPE_CURSOR || count == 0) { return false; }
    const Bytes entries = part(file, DIRECTORY_SIZE, count * ENTRY_SIZE);
    if (entries.data == nullptr) { return false; }
    const auto distance = [](const Entry& entry) { return std::abs(entry.width - CURSOR_SIZE_WANTED); };
    *chosen = read_entry(entries.data);
    for (uint32_t i = 1; i < count; ++i) {
        const Entry entry = read_entry(entries.data + i * ENTRY_SIZE);
        if (distance(entry) < distance(*chosen)) { *chosen = entry; }
    }
    return true;
}

// Bytes of the file that the picture of an entry stands in; 0 when the file does not hold all of it.
size_t x_picture_bytes(Bytes file, const uint8_t* entry) {
    const Bytes head = part(file, read_32(entry + 8), X_PICTURE_HEAD_SIZE);
    if (head.data == nullptr) { return 0; }
    const uint64_t pixels = uint64_t{read_32(head.data + 16)} * read_32(head.data + 20);
    const size_t room = file.size - static_cast<size_t>(head.data - file.data) - X_PICTURE_HEAD_SIZE;
    if (pixels > room / X_PIXEL_SIZE) { return 0; }
    return X_PICTURE_HEAD_SIZE + static_cast<size_t>(pixels) * X_PIXEL_SIZE;
}

}  // namespace

bool cursor_file_parse(const uint8_t* bytes, size_t size, CursorImage* image) {
    *image = CursorImage{};
    const Bytes file{bytes, size};
    Entry entry{};
    Layout layout{};
    if (!choose_entry(file, &entry)) { return false; }
    if (!read_layout(part(file, entry.offset, entry.size), &layout)) { return false; }

    const size_t count = static_cast<size_t>(layout.width) * static_cast<size_t>(layout.height);
    image->pixels = static_cast<uint32_t*>(std::malloc(count * sizeof(uint32_t)));
    if (image->pixels == nullptr) { return false; }
    image->width = layout.width;
    image->height = layout.height;
    image->hot_x = std::min(entry.hot_x, layout.width - 1);
    image->hot_y = std::min(entry.hot_y, layout.height - 1);
    read_pixels(layout, image->pixels);
    return true;
}

bool cursor_file_x_is_sound(const uint8_t* bytes, size_t size) {
    const Bytes file{bytes, size};
    const Bytes head = part(file, 0, X_HEAD_SIZE);
    if (head.data == nullptr || std::memcmp(head.data, "Xcur", 4) != 0) { return false; }
    const size_t head_size = read_32(head.data + 4);
    const size_t count = read_32(head.data + 12);
    if (head_size < X_HEAD_SIZE || count > CURSOR_X_ENTRY_MAX) { return false; }
    const Bytes entries = part(file, head_size, count * X_ENTRY_SIZE);
    if (entries.data == nullptr) { return false; }
    size_t needed = head_size + entries.size;
    for (size_t at = 0; at < entries.size; at += X_ENTRY_SIZE) {
        if (read_32(entries.data + at) != X_PICTURE) { continue; }
        const size_t picture = x_picture_bytes(file, entries.data + at);
        needed += picture;
        if (picture == 0 || needed > size) { return false; }
    }
    return true;
}

void cursor_image_free(CursorImage* image) {
    std::free(image->pixels);
    *image = CursorImage{};
}

}  // namespace pelt
