// The bytes of a cursor file on their way into libXcursor, as the window layer of X11 sends them there. Every pixel of
// what comes out is read; and a file must not ask for more pictures than it has bytes for.
#include <cstdint>

#include "fuzz/stage.h"
#include "window/x11/cursor_file.h"
#include "window/x11/pictures.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace pelt;
    // A .cur file may hold its one picture in a bit a pixel.
    constexpr size_t LARGEST_CUR = size_t{CURSOR_SIZE_MAX} * CURSOR_SIZE_MAX * sizeof(XcursorPixel);
    XcursorImages* images = x11_cursor_pictures(data, size);
    if (images == nullptr) { return 0; }
    size_t held = 0;
    volatile uint32_t all = 0;
    for (int i = 0; i < images->nimage; ++i) {
        const XcursorImage* image = images->images[i];
        const size_t pixels = size_t{image->width} * image->height;
        held += pixels * sizeof(XcursorPixel);
        for (size_t at = 0; at < pixels; ++at) { all = all ^ image->pixels[at]; }
    }
    if (images->nimage < 1) { fuzz::finding("pictures without a picture"); }
    if (held > size && (images->nimage > 1 || held > LARGEST_CUR)) {
        fuzz::finding("more pixels than the file has bytes");
    }
    XcursorImagesDestroy(images);
    return 0;
}
