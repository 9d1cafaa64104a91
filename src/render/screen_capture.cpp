// The picture in the window as a TGA file. The surprise: the viewport may be larger than the window, and what lies
// outside holds whatever the driver likes, so that only the part inside is read and the rest stays black.
#include "render/screen_capture.h"

#include <GL/gl.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "foundation/file_access.h"
#include "render/frame.h"
#include "render/marks.h"

namespace pelt {

namespace {

constexpr char IMAGE_ID[] = "OpenGL screen image written by pelt";
constexpr size_t TGA_HEADER_SIZE = 18;
constexpr size_t TGA_ID_SIZE = 255;
constexpr size_t PIXELS_OFFSET = TGA_HEADER_SIZE + TGA_ID_SIZE;
constexpr size_t PIXEL_SIZE = 3;
constexpr size_t PACK_ALIGNMENT = 4;  // OpenGL begins each row at a multiple of this
static_assert(sizeof IMAGE_ID <= TGA_ID_SIZE);

using Bytes = std::unique_ptr<unsigned char, decltype(&std::free)>;

// Zero-filled; null when there is not so much memory.
Bytes make_bytes(size_t size) { return {static_cast<unsigned char*>(std::calloc(size, 1)), &std::free}; }

int32_t capture_size(int32_t wanted, int32_t viewport) {
    const int32_t size = wanted < viewport ? wanted : viewport;
    return size > 0 ? size & CAPTURE_MASK : 0;
}

// How much of a stretch that begins at start lies inside a drawing area of this size.
int32_t inside_size(int32_t start, int32_t size, int32_t drawable) {
    const int64_t end = static_cast<int64_t>(start) + size;
    const int64_t limit = end < drawable ? end : drawable;
    return start >= 0 && limit > start ? static_cast<int32_t>(limit - start) : 0;
}

void fill_header(unsigned char* file, int32_t width, int32_t height) {
    file[0] = TGA_ID_SIZE;
    file[2] = 2;  // true colour, not compressed
    file[12] = static_cast<unsigned char>(width & 0xFF);
    file[13] = static_cast<unsigned char>(width >> 8 & 0xFF);
    file[14] = static_cast<unsigned char>(height & 0xFF);
    file[15] = static_cast<unsigned char>(height >> 8 & 0xFF);
    file[16] = 24;
    std::memcpy(file + TGA_HEADER_SIZE, IMAGE_ID, sizeof IMAGE_ID);
}

// Reads the part of the picture that lies in the window into rows of the given width, as blue, green, red. False when
// there is no memory for it.
bool read_pixels(const GLint* viewport, int32_t width, int32_t height, unsigned char* pixels) {
    int32_t x = 0, y = 0, drawable_width = 0, drawable_height = 0;
    gl_window_geometry(frame_view()->window, &x, &y, &drawable_width, &drawable_height);
    const int32_t columns = inside_size(viewport[0], width, drawable_width);
    const int32_t rows = inside_size(viewport[1], height, drawable_height);
    if (columns == 0 || rows == 0) { return true; }
    const size_t row_size = static_cast<size_t>(columns) * PIXEL_SIZE;
    const size_t read_size = (row_size + PACK_ALIGNMENT - 1) / PACK_ALIGNMENT * PACK_ALIGNMENT;
    const Bytes read = make_bytes(read_size * static_cast<size_t>(rows));
    if (read == nullptr) { return false; }
    glReadPixels(viewport[0], viewport[1], columns, rows, GL_RGB, GL_UNSIGNED_BYTE, read.get());
    for (size_t row = 0; row < static_cast<size_t>(rows); ++row) {
        const unsigned char* from = read.get() + row * read_size;
        unsigned char* to = pixels + row * static_cast<size_t>(width) * PIXEL_SIZE;
        for (size_t i = 0; i < row_size; i += PIXEL_SIZE) {
            to[i] = from[i + 2];
            to[i + 1] = from[i + 1];
            to[i + 2] = from[i];
        }
    }
    return true;
}

}  // namespace

void screen_capture(const char* path, int32_t width, int32_t height) {
    const ViewState* view = frame_view();
    if (path == nullptr || view == nullptr || !gl_context_current(view->window)) { return; }
    if (!gl_swap_keeps_back_buffer(view->window) || marks_stay_out_of_pictures()) { frame_draw_unswapped(); }
    GLint viewport[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, viewport);
    width = capture_size(width, viewport[2]);
    height = capture_size(height, viewport[3]);
    const size_t size = PIXELS_OFFSET + static_cast<size_t>(width) * static_cast<size_t>(height) * PIXEL_SIZE;
    const Bytes file = make_bytes(size);
    if (file == nullptr || !read_pixels(viewport, width, height, file.get() + PIXELS_OFFSET)) { return; }
    fill_header(file.get(), width, height);
    file_write_all(path, file.get(), size);
}

}  // namespace pelt
