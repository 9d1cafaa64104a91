// Pictures of cursors as libXcursor has them. It needs no display.
#pragma once

#include <X11/Xcursor/Xcursor.h>

#include <cstddef>
#include <cstdint>

namespace pelt {

// The pictures in the bytes of a cursor file, a .cur file or one of X, for XcursorImagesDestroy; of an animated one all
// pictures. Null when the file is none.
XcursorImages* x11_cursor_pictures(const uint8_t* bytes, size_t size);

}  // namespace pelt
