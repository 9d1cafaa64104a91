// The shortest program that draws a model without a display: EGL, immediate mode, one light, one PNG. The floor of a
// picture. Without a model it makes the context, clears and reads back: the floor of any.
//   egl_floor WIDTH HEIGHT ?TRIANGLES PNG?     TRIANGLES: for each corner a normal and a place, as six 32-bit floats
#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

bool open_context(int width, int height) {
    EGLDisplay display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (eglInitialize(display, nullptr, nullptr) != EGL_TRUE) { return false; }
    const EGLint wanted[] = {EGL_RENDERABLE_TYPE,
                             EGL_OPENGL_BIT,
                             EGL_SURFACE_TYPE,
                             EGL_PBUFFER_BIT,
                             EGL_RED_SIZE,
                             8,
                             EGL_DEPTH_SIZE,
                             24,
                             EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (eglChooseConfig(display, wanted, &config, 1, &count) != EGL_TRUE || count == 0) { return false; }
    const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    eglBindAPI(EGL_OPENGL_API);
    EGLSurface surface = eglCreatePbufferSurface(display, config, size);
    EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, nullptr);
    return eglMakeCurrent(display, surface, surface, context) == EGL_TRUE;
}

std::vector<float> read_triangles(const char* path) {
    std::vector<float> values;
    std::FILE* file = std::fopen(path, "rb");
    if (file == nullptr) { return values; }
    std::fseek(file, 0, SEEK_END);
    values.resize(static_cast<size_t>(std::ftell(file)) / sizeof(float));
    std::rewind(file);
    if (std::fread(values.data(), sizeof(float), values.size(), file) != values.size()) { values.clear(); }
    std::fclose(file);
    return values;
}

void draw(const std::vector<float>& values, int width, int height) {
    const float across = static_cast<float>(width) / static_cast<float>(height);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glScalef(1.0f / (1.05f * across), 1.0f / 1.05f, -0.5f);
    glBegin(GL_TRIANGLES);
    for (size_t i = 0; i + 5 < values.size(); i += 6) {
        glNormal3fv(&values[i]);
        glVertex3fv(&values[i + 3]);
    }
    glEnd();
}

bool write_png(const char* path, const std::vector<unsigned char>& pixels, int width, int height) {
    std::FILE* file = std::fopen(path, "wb");
    if (file == nullptr) { return false; }
    png_structp writer = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(writer);
    png_init_io(writer, file);
    png_set_IHDR(writer, info, static_cast<unsigned>(width), static_cast<unsigned>(height), 8, PNG_COLOR_TYPE_RGB, 0, 0,
                 0);
    png_set_filter(writer, 0, PNG_FILTER_UP);
    png_set_compression_level(writer, 2);
    png_write_info(writer, info);
    for (int y = height - 1; y >= 0; --y) { png_write_row(writer, &pixels[static_cast<size_t>(y * width) * 3]); }
    png_write_end(writer, info);
    png_destroy_write_struct(&writer, &info);
    return std::fclose(file) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) { return 2; }
    const int width = std::atoi(argv[1]), height = std::atoi(argv[2]);
    if (width <= 0 || height <= 0 || !open_context(width, height)) { return 2; }
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    if (argc == 5) { draw(read_triangles(argv[3]), width, height); }
    std::vector<unsigned char> pixels(static_cast<size_t>(width * height) * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
    return argc == 5 && !write_png(argv[4], pixels, width, height) ? 2 : 0;
}
