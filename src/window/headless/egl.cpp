// EGL. What surprises: libEGL is no part of what this library is linked with, because only those who draw without a
// desktop need it; each of its functions is looked up by name. And there are several displays to choose from: a GPU by
// its device comes first, then Mesa without any window system, then what EGL takes by itself, which may be an X server.
#include "window/headless/egl.h"

#include <GL/gl.h>
#include <dlfcn.h>

#include <vector>

#include "window/pixel_format.h"

namespace pelt {

namespace {

constexpr char LIBRARY[] = "libEGL.so.1";
constexpr char SOFTWARE_DEVICE[] = "EGL_MESA_device_software";
constexpr EGLint DEVICES_MAX = 32;
constexpr EGLint SMALLEST = 16;  // pixels each way of the area in which the driver is asked what it can

struct Functions {
    decltype(&eglGetProcAddress) get_proc_address;
    decltype(&eglGetDisplay) get_display;
    decltype(&eglInitialize) initialize;
    decltype(&eglTerminate) terminate;
    decltype(&eglBindAPI) bind_api;
    decltype(&eglQueryString) query_string;
    decltype(&eglChooseConfig) choose_config;
    decltype(&eglGetConfigAttrib) get_config_attribute;
    decltype(&eglCreateContext) create_context;
    decltype(&eglDestroyContext) destroy_context;
    decltype(&eglCreatePbufferSurface) create_pbuffer;
    decltype(&eglDestroySurface) destroy_surface;
    decltype(&eglMakeCurrent) make_current;
    // Null where the library does not have them.
    PFNEGLGETPLATFORMDISPLAYEXTPROC get_platform_display;
    PFNEGLQUERYDEVICESEXTPROC query_devices;
    PFNEGLQUERYDEVICESTRINGEXTPROC query_device_string;
};

struct Driver {
    EGLDisplay display;  // null while there is none
    EGLContext context;
    EGLConfig config;  // of the context; null for one that draws in every format
    int32_t width_max, height_max;
};

Functions egl;
void* library;
Driver driver;

template <typename Function>
bool look_up(Function* function, const char* name) {
    *function = reinterpret_cast<Function>(dlsym(library, name));
    return *function != nullptr;
}

template <typename Function>
void look_up_extension(Function* function, const char* name) {
    *function = reinterpret_cast<Function>(egl.get_proc_address(name));
}

bool open_library(std::string* failure) {
    if (library != nullptr) { return true; }
    library = dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* reason = dlerror();
        *failure = "drawing without a display needs EGL: " + std::string(reason != nullptr ? reason : LIBRARY);
        return false;
    }
    const bool whole =
        look_up(&egl.get_proc_address, "eglGetProcAddress") && look_up(&egl.get_display, "eglGetDisplay") &&
        look_up(&egl.initialize, "eglInitialize") && look_up(&egl.terminate, "eglTerminate") &&
        look_up(&egl.bind_api, "eglBindAPI") && look_up(&egl.query_string, "eglQueryString") &&
        look_up(&egl.choose_config, "eglChooseConfig") && look_up(&egl.get_config_attribute, "eglGetConfigAttrib") &&
        look_up(&egl.create_context, "eglCreateContext") && look_up(&egl.destroy_context, "eglDestroyContext") &&
        look_up(&egl.create_pbuffer, "eglCreatePbufferSurface") && look_up(&egl.destroy_surface, "eglDestroySurface") &&
        look_up(&egl.make_current, "eglMakeCurrent");
    if (!whole) {
        *failure = "drawing without a display needs EGL: " + std::string(LIBRARY) + " is not whole";
        dlclose(library);
        library = nullptr;
        return false;
    }
    look_up_extension(&egl.get_platform_display, "eglGetPlatformDisplayEXT");
    look_up_extension(&egl.query_devices, "eglQueryDevicesEXT");
    look_up_extension(&egl.query_device_string, "eglQueryDeviceStringEXT");
    return true;
}

// A whole word of a list of extensions.
bool has_word(const char* words, const std::string& word) {
    return words != nullptr && (" " + std::string(words) + " ").find(" " + word + " ") != std::string::npos;
}

EGLint value_of(EGLConfig config, EGLint attribute) {
    EGLint value = 0;
    return egl.get_config_attribute(driver.display, config, attribute, &value) == EGL_TRUE ? value : 0;
}

PixelFormat format_of(EGLConfig config) {
    return PixelFormat{.colour_bits = value_of(config, EGL_RED_SIZE),
                       .alpha_bits = value_of(config, EGL_ALPHA_SIZE),
                       .depth_bits = value_of(config, EGL_DEPTH_SIZE),
                       .stencil_bits = value_of(config, EGL_STENCIL_SIZE),
                       .accumulation_bits = 0,
                       .samples = value_of(config, EGL_SAMPLES),
                       .opaque = true,
                       .warns = value_of(config, EGL_CONFIG_CAVEAT) != EGL_NONE,
                       .swap_keeps_back_buffer = false};
}

// Null when the display has none that suits.
EGLConfig choose_config(int32_t samples) {
    // clang-format off
    static constexpr EGLint WANTED[] = {
        EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_SURFACE_TYPE, EGL_PBUFFER_BIT,
        EGL_RED_SIZE, PIXEL_COLOUR_BITS, EGL_GREEN_SIZE, PIXEL_COLOUR_BITS, EGL_BLUE_SIZE, PIXEL_COLOUR_BITS,
        EGL_DEPTH_SIZE, PIXEL_DEPTH_BITS, EGL_NONE,
    };
    // clang-format on
    EGLint count = 0;
    if (egl.choose_config(driver.display, WANTED, nullptr, 0, &count) != EGL_TRUE || count <= 0) { return nullptr; }
    std::vector<EGLConfig> configs(static_cast<size_t>(count));
    if (egl.choose_config(driver.display, WANTED, configs.data(), count, &count) != EGL_TRUE) { return nullptr; }
    configs.resize(static_cast<size_t>(count));
    EGLConfig best = nullptr;
    int32_t best_score = -1;
    for (const EGLConfig config : configs) {
        const int32_t score = pixel_format_score(format_of(config), samples);
        if (score <= best_score) { continue; }
        best_score = score;
        best = config;
    }
    return best;
}

bool draws_in_every_format() {
    const char* extensions = egl.query_string(driver.display, EGL_EXTENSIONS);
    return has_word(extensions, "EGL_KHR_no_config_context") || has_word(extensions, "EGL_MESA_configless_context");
}

// The context, and what it says that it can draw.
bool make_context(int32_t samples) {
    const EGLConfig config = choose_config(samples);
    if (config == nullptr || egl.bind_api(EGL_OPENGL_API) != EGL_TRUE) { return false; }
    driver.config = draws_in_every_format() ? nullptr : config;
    driver.context = egl.create_context(driver.display, driver.config, EGL_NO_CONTEXT, nullptr);
    if (driver.context == EGL_NO_CONTEXT) { return false; }
    const EGLSurface surface = egl_surface_create(SMALLEST, SMALLEST, 0);
    GLint limits[2] = {0, 0};
    if (egl_make_current(surface)) { glGetIntegerv(GL_MAX_VIEWPORT_DIMS, limits); }
    egl_make_current(EGL_NO_SURFACE);
    egl_surface_destroy(surface);
    driver.width_max = limits[0];
    driver.height_max = limits[1];
    if (limits[0] > 0 && limits[1] > 0) { return true; }
    egl_context_destroy();
    return false;
}

bool try_display(EGLDisplay display, int32_t samples) {
    if (display == EGL_NO_DISPLAY) { return false; }
    driver = Driver{};
    driver.display = display;
    if (egl.initialize(display, nullptr, nullptr) == EGL_TRUE) {
        if (make_context(samples)) { return true; }
        egl.terminate(display);
    }
    driver = Driver{};
    return false;
}

bool try_platform(EGLenum platform, void* native, int32_t samples) {
    return egl.get_platform_display != nullptr &&
           try_display(egl.get_platform_display(platform, native, nullptr), samples);
}

bool try_devices(int32_t samples) {
    if (egl.query_devices == nullptr || egl.query_device_string == nullptr) { return false; }
    EGLDeviceEXT devices[DEVICES_MAX];
    EGLint count = 0;
    if (egl.query_devices(DEVICES_MAX, devices, &count) != EGL_TRUE) { return false; }
    for (EGLint i = 0; i < count; ++i) {
        if (has_word(egl.query_device_string(devices[i], EGL_EXTENSIONS), SOFTWARE_DEVICE)) { continue; }
        if (try_platform(EGL_PLATFORM_DEVICE_EXT, devices[i], samples)) { return true; }
    }
    return false;
}

}  // namespace

bool egl_open(int32_t samples, std::string* failure) {
    if (driver.context != EGL_NO_CONTEXT) { return true; }
    if (!open_library(failure)) { return false; }
    if (try_devices(samples) || try_platform(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, samples) ||
        try_display(egl.get_display(EGL_DEFAULT_DISPLAY), samples)) {
        return true;
    }
    *failure = "drawing without a display needs a driver for EGL, and there is none that draws OpenGL";
    return false;
}

EGLContext egl_context() { return driver.context; }

void egl_drawing_limit(int32_t* width, int32_t* height) {
    *width = driver.width_max;
    *height = driver.height_max;
}

EGLSurface egl_surface_create(int32_t width, int32_t height, int32_t samples) {
    if (driver.display == EGL_NO_DISPLAY) { return EGL_NO_SURFACE; }
    const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    const EGLConfig config = driver.config != nullptr ? driver.config : choose_config(samples);
    return config != nullptr ? egl.create_pbuffer(driver.display, config, size) : EGL_NO_SURFACE;
}

void egl_surface_destroy(EGLSurface surface) {
    if (surface != EGL_NO_SURFACE) { egl.destroy_surface(driver.display, surface); }
}

bool egl_make_current(EGLSurface surface) {
    if (driver.display == EGL_NO_DISPLAY) { return surface == EGL_NO_SURFACE; }
    const EGLContext context = surface != EGL_NO_SURFACE ? driver.context : EGL_NO_CONTEXT;
    // Someone else of the process may have bound another one of its APIs since.
    return egl.bind_api(EGL_OPENGL_API) == EGL_TRUE &&
           egl.make_current(driver.display, surface, surface, context) == EGL_TRUE;
}

void egl_context_destroy() {
    if (driver.context == EGL_NO_CONTEXT) { return; }
    egl_make_current(EGL_NO_SURFACE);
    egl.destroy_context(driver.display, driver.context);
    driver.context = EGL_NO_CONTEXT;
}

}  // namespace pelt
