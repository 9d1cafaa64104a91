// The bytes of a cursor file. Every pixel of what comes out is read, so that a picture smaller than its size is found.
#include <cstdint>
#include <cstdlib>

#include "fuzz/stage.h"
#include "window/x11/cursor_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace pelt;
    CursorImage image{};
    if (cursor_file_parse(data, size, &image)) {
        if (image.width < 1 || image.width > CURSOR_SIZE_MAX || image.height < 1 || image.height > CURSOR_SIZE_MAX) {
            fuzz::finding("a size out of bounds");
        }
        if (image.hot_x < 0 || image.hot_x >= image.width || image.hot_y < 0 || image.hot_y >= image.height) {
            fuzz::finding("a hot spot outside the picture");
        }
        volatile uint32_t all = 0;
        for (int32_t i = 0; i < image.width * image.height; ++i) { all = all ^ image.pixels[i]; }
        cursor_image_free(&image);
    }
    if (image.pixels != nullptr) { fuzz::finding("pixels are left"); }
    return 0;
}
