// Pictures as PNG files, through libpng. What surprises: where it is a library of the system it is opened by name when
// the first such file is written, so that nobody waits for it who writes none. And of the five filters one is taken for
// all rows, because choosing among them costs more than all the rest; what that leaves is made up for by one level
// more.
#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>

#include "images/picture_files.h"

#ifndef _WIN32
#include <dlfcn.h>
#endif

namespace pelt {

namespace {

constexpr int LEVEL = 2;
constexpr int BITS = 8;
constexpr size_t FIRST_SIZE = size_t{1} << 16;
constexpr size_t BUFFER_SIZE = size_t{1} << 16;
constexpr double METRES_PER_INCH = 0.0254;

struct Library {
    decltype(&png_create_write_struct) create_write_struct;
    decltype(&png_create_info_struct) create_info_struct;
    decltype(&png_destroy_write_struct) destroy_write_struct;
    decltype(&png_get_error_ptr) get_error_ptr;
    decltype(&png_get_io_ptr) get_io_ptr;
    decltype(&png_error) error;
    decltype(&png_set_write_fn) set_write_fn;
    decltype(&png_set_IHDR) set_header;
    decltype(&png_set_pHYs) set_physical;
    decltype(&png_set_filter) set_filter;
    decltype(&png_set_compression_level) set_level;
    decltype(&png_set_compression_buffer_size) set_buffer_size;
    decltype(&png_write_info) write_info;
    decltype(&png_write_row) write_row;
    decltype(&png_write_end) write_end;
};

Library png;

#ifdef _WIN32
bool open_library(std::string*) {
    png = Library{png_create_write_struct,
                  png_create_info_struct,
                  png_destroy_write_struct,
                  png_get_error_ptr,
                  png_get_io_ptr,
                  png_error,
                  png_set_write_fn,
                  png_set_IHDR,
                  png_set_pHYs,
                  png_set_filter,
                  png_set_compression_level,
                  png_set_compression_buffer_size,
                  png_write_info,
                  png_write_row,
                  png_write_end};
    return true;
}
#else
constexpr char LIBRARY[] = "libpng16.so.16";

template <typename Function>
bool look_up(void* library, Function* function, const char* name) {
    *function = reinterpret_cast<Function>(dlsym(library, name));
    return *function != nullptr;
}

bool open_library(std::string* failure) {
    static void* library = nullptr;
    if (library != nullptr) { return true; }
    void* opened = dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (opened == nullptr) {
        const char* reason = dlerror();
        *failure = "PNG files need libpng: " + std::string(reason != nullptr ? reason : LIBRARY);
        return false;
    }
    const bool whole =
        look_up(opened, &png.create_write_struct, "png_create_write_struct") &&
        look_up(opened, &png.create_info_struct, "png_create_info_struct") &&
        look_up(opened, &png.destroy_write_struct, "png_destroy_write_struct") &&
        look_up(opened, &png.get_error_ptr, "png_get_error_ptr") &&
        look_up(opened, &png.get_io_ptr, "png_get_io_ptr") && look_up(opened, &png.error, "png_error") &&
        look_up(opened, &png.set_write_fn, "png_set_write_fn") && look_up(opened, &png.set_header, "png_set_IHDR") &&
        look_up(opened, &png.set_physical, "png_set_pHYs") && look_up(opened, &png.set_filter, "png_set_filter") &&
        look_up(opened, &png.set_level, "png_set_compression_level") &&
        look_up(opened, &png.set_buffer_size, "png_set_compression_buffer_size") &&
        look_up(opened, &png.write_info, "png_write_info") && look_up(opened, &png.write_row, "png_write_row") &&
        look_up(opened, &png.write_end, "png_write_end");
    if (!whole) {
        *failure = "PNG files need libpng: " + std::string(LIBRARY) + " is not whole";
        dlclose(opened);
        return false;
    }
    library = opened;
    return true;
}
#endif

// The file as it grows. A plain block, because the library leaves by a jump when there is no memory for more.
struct Sink {
    std::jmp_buf refused;
    png_structp writer;
    png_infop info;
    uint8_t* bytes;
    size_t size, room;
    char reason[128];
};

void on_error(png_structp writer, png_const_charp text) {
    auto* sink = static_cast<Sink*>(png.get_error_ptr(writer));
    std::strncpy(sink->reason, text != nullptr ? text : "", sizeof sink->reason - 1);
    std::longjmp(sink->refused, 1);
}

void on_warning(png_structp, png_const_charp) {}

void on_bytes(png_structp writer, png_bytep bytes, size_t size) {
    auto* sink = static_cast<Sink*>(png.get_io_ptr(writer));
    if (size > sink->room - sink->size) {
        const size_t room = std::max(2 * sink->room, sink->size + size);
        void* more = std::realloc(sink->bytes, room);
        if (more == nullptr) { png.error(writer, "no memory for the file"); }
        sink->bytes = static_cast<uint8_t*>(more);
        sink->room = room;
    }
    std::memcpy(sink->bytes + sink->size, bytes, size);
    sink->size += size;
}

void on_flush(png_structp) {}

// Nothing here may need its destructor: the library's errors end in the jump.
bool write_picture(const Picture& picture, int32_t dpi, Sink* sink) {
    if (setjmp(sink->refused) != 0) { return false; }
    sink->writer = png.create_write_struct(PNG_LIBPNG_VER_STRING, sink, on_error, on_warning);
    sink->info = sink->writer != nullptr ? png.create_info_struct(sink->writer) : nullptr;
    png_structp writer = sink->writer;
    png_infop info = sink->info;
    if (info == nullptr) { return false; }
    png.set_write_fn(writer, sink, on_bytes, on_flush);
    png.set_header(writer, info, static_cast<uint32_t>(picture.width), static_cast<uint32_t>(picture.height), BITS,
                   picture.channels == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                   PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (dpi > 0) {
        const auto per_metre = static_cast<uint32_t>(dpi / METRES_PER_INCH + 0.5);
        png.set_physical(writer, info, per_metre, per_metre, PNG_RESOLUTION_METER);
    }
    png.set_filter(writer, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
    png.set_level(writer, LEVEL);
    png.set_buffer_size(writer, BUFFER_SIZE);
    png.write_info(writer, info);
    for (int32_t y = 0; y < picture.height; ++y) { png.write_row(writer, picture.row(y)); }
    png.write_end(writer, info);
    return true;
}

}  // namespace

bool picture_to_png(const Picture& picture, int32_t dpi, PictureFile* file, std::string* failure) {
    if (!open_library(failure)) { return false; }
    Sink sink{};
    sink.bytes = static_cast<uint8_t*>(std::malloc(FIRST_SIZE));
    sink.room = sink.bytes != nullptr ? FIRST_SIZE : 0;
    const bool written = write_picture(picture, dpi, &sink);
    if (sink.writer != nullptr) { png.destroy_write_struct(&sink.writer, &sink.info); }
    file->bytes = PictureMemory(sink.bytes, &std::free);
    file->size = sink.size;
    if (!written) { *failure = sink.reason[0] != '\0' ? sink.reason : "no memory for the file"; }
    return written;
}

}  // namespace pelt
