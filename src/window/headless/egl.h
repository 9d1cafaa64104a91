// The driver without a window system: EGL, opened when it is first needed and kept until the process ends.
#pragma once

// Without it the header brings that of the window system along.
#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <cstdint>
#include <string>

namespace pelt {

// Opens the driver and makes its one context, once, for drawing areas of so many samples where a context is bound to
// that. False with a line that says what is missing; a later call tries again.
bool egl_open(int32_t samples, std::string* failure);

EGLContext egl_context();  // null before

// The largest picture that the driver can draw.
void egl_drawing_limit(int32_t* width, int32_t* height);

// A drawing area, with as many samples as the driver has up to these; null when there is no memory for it.
EGLSurface egl_surface_create(int32_t width, int32_t height, int32_t samples);
void egl_surface_destroy(EGLSurface surface);

bool egl_make_current(EGLSurface surface);  // null releases the context
void egl_context_destroy();                 // a later egl_open makes it anew

}  // namespace pelt
