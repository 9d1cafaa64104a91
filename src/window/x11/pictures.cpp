// The bytes of a cursor file come from outside: they are taken apart here or, for the format of X itself, by
// libXcursor. What surprises: that library believes a file what it says of itself, so the file is held against its own
// length first.
#include "window/x11/pictures.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "window/x11/cursor_file.h"

namespace pelt {

namespace {

// Colours multiplied by their alpha, as the server wants them.
uint32_t premultiplied(uint32_t pixel) {
    const uint32_t alpha = pixel >> 24;
    const auto scaled = [&](int shift) { return ((pixel >> shift & 0xFFu) * alpha + 127) / 255 << shift; };
    return alpha << 24 | scaled(16) | scaled(8) | scaled(0);
}

XcursorImages* images_of_cur(const uint8_t* bytes, size_t size) {
    CursorImage picture{};
    if (!cursor_file_parse(bytes, size, &picture)) { return nullptr; }
    XcursorImage* image = XcursorImageCreate(picture.width, picture.height);
    XcursorImages* images = image != nullptr ? XcursorImagesCreate(1) : nullptr;
    if (images == nullptr) {
        XcursorImageDestroy(image);  // accepts null
    } else {
        image->xhot = static_cast<XcursorDim>(picture.hot_x);
        image->yhot = static_cast<XcursorDim>(picture.hot_y);
        const int count = picture.width * picture.height;
        for (int i = 0; i < count; ++i) { image->pixels[i] = premultiplied(picture.pixels[i]); }
        images->images[images->nimage++] = image;
    }
    cursor_image_free(&picture);
    return images;
}

// The bytes of a file for libXcursor, which reads them as a stream.
struct MemoryFile {
    const uint8_t* bytes;
    size_t size, at;
};

int memory_read(XcursorFile* file, unsigned char* buffer, int length) {
    auto* memory = static_cast<MemoryFile*>(file->closure);
    if (length <= 0) { return 0; }
    const size_t count = std::min(static_cast<size_t>(length), memory->size - memory->at);
    std::memcpy(buffer, memory->bytes + memory->at, count);
    memory->at += count;
    return static_cast<int>(count);
}

int memory_write(XcursorFile*, unsigned char*, int) { return -1; }

int memory_seek(XcursorFile* file, long offset, int whence) {
    auto* memory = static_cast<MemoryFile*>(file->closure);
    const long base = whence == SEEK_CUR   ? static_cast<long>(memory->at)
                      : whence == SEEK_END ? static_cast<long>(memory->size)
                                           : 0;
    const auto limit = static_cast<long>(memory->size);
    if (offset < -base || offset > limit - base) { return -1; }
    memory->at = static_cast<size_t>(base + offset);
    return 0;
}

XcursorImages* images_of_xcursor(const uint8_t* bytes, size_t size) {
    if (!cursor_file_x_is_sound(bytes, size)) { return nullptr; }
    MemoryFile memory{bytes, size, 0};
    XcursorFile file{&memory, memory_read, memory_write, memory_seek};
    return XcursorXcFileLoadImages(&file, CURSOR_SIZE_WANTED);
}

}  // namespace

XcursorImages* x11_cursor_pictures(const uint8_t* bytes, size_t size) {
    XcursorImages* images = images_of_cur(bytes, size);
    return images != nullptr ? images : images_of_xcursor(bytes, size);
}

}  // namespace pelt
