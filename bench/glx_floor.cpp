// The shortest program that opens a window with OpenGL, clears it and swaps once: part of the floor of the start.
#include "bench/glx_window.h"

int main() {
    const bench::GlxWindow window = bench::open_glx_window(400, 300);
    if (window.display == nullptr) { return 2; }
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glXSwapBuffers(window.display, window.window);
    XSync(window.display, False);
    return 0;
}
