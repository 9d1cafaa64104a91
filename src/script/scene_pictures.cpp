// The forms of "scene" that make pictures: a window that nobody sees, and files.
#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>
#include <string_view>
#include <utility>

#include "application/application.h"
#include "application/picture_queue.h"
#include "render/frame.h"
#include "render/picture_draw.h"
#include "script/scene_call.h"
#include "script/scene_reply.h"
#include "script/script_events.h"
#include "script/tcl_glue.h"

#include <tcl.h>

namespace pelt {

namespace {

constexpr int32_t SIZE_MAX_PIXELS = 32767;
constexpr int32_t SAMPLES_MAX = 64;

Tcl_Obj* make_offscreen(const SceneWords& words) {
    int32_t width = 0, height = 0, samples = 0;
    if (!scene_read_int("width", words.raw(0), 1, SIZE_MAX_PIXELS, &width) ||
        !scene_read_int("height", words.raw(1), 1, SIZE_MAX_PIXELS, &height) ||
        (words.has(2) && !scene_read_int("samples", words.raw(2), 0, SAMPLES_MAX, &samples))) {
        return nullptr;
    }
    Application* app = application();
    if (app->view.window != 0) { return scene_refuse(PROBLEM_STATE, "can only support 1 window at the moment"); }
    std::string failure;
    app->view.window =
        gl_window_create_offscreen(width, height, samples, view_init, nullptr, view_resize, view_input, &failure);
    if (app->view.window == 0) { return scene_refuse(PROBLEM_SYSTEM, failure); }
    return reply_text(view_renderer(&app->view));
}

// ---- Files.

constexpr int32_t DPI_MAX = 100000;

enum PictureKind { PICTURE_PNG, PICTURE_TGA, PICTURE_UNKNOWN };

PictureKind kind_of(std::string_view path) {
    const auto ends_with = [path](std::string_view ending) {
        return path.size() > ending.size() &&
               std::equal(ending.begin(), ending.end(), path.end() - static_cast<std::ptrdiff_t>(ending.size()),
                          [](char low, char any) { return low == std::tolower(static_cast<unsigned char>(any)); });
    };
    if (ends_with(".png")) { return PICTURE_PNG; }
    return ends_with(".tga") ? PICTURE_TGA : PICTURE_UNKNOWN;
}

// "WIDTHxHEIGHT".
bool read_size(const char* word, PictureWish* wish) {
    const char* end = word + std::strlen(word);
    int32_t width = 0, height = 0;
    const auto first = std::from_chars(word, end, width);
    const bool joined = first.ec == std::errc{} && first.ptr != end && *first.ptr == 'x';
    const auto second = std::from_chars(joined ? first.ptr + 1 : end, end, height);
    const bool read = joined && second.ec == std::errc{} && second.ptr == end;
    if (!read || width < 1 || height < 1 || width > PICTURE_SIZE_MAX || height > PICTURE_SIZE_MAX ||
        int64_t{width} * height > PICTURE_PIXELS_MAX) {
        scene_refuse_argument("size", word,
                              "WIDTHxHEIGHT, each from 1 to " + std::to_string(PICTURE_SIZE_MAX) + " and at most " +
                                  std::to_string(PICTURE_PIXELS_MAX) + " pixels in all");
        return false;
    }
    wish->width = width;
    wish->height = height;
    return true;
}

struct PictureOptions {
    PictureWish wish;
    int32_t dpi = 0;
    bool later = false;
};

// The words behind the file.
bool read_options(const SceneWords& words, PictureOptions* options) {
    PictureWish* wish = &options->wish;
    for (int i = 1; i < words.count; ++i) {
        const std::string_view option = words.raw(i);
        if (option == "-transparent" || option == "-later") {
            (option == "-later" ? options->later : wish->transparent) = true;
            continue;
        }
        if (option != "-size" && option != "-samples" && option != "-supersample" && option != "-dpi") {
            scene_refuse_argument("option", words.raw(i),
                                  "-size, -samples, -supersample, -transparent, -dpi or -later");
            return false;
        }
        if (!words.has(++i)) {
            scene_refuse(PROBLEM_ARGUMENT, "the option " + std::string(option) + " wants a value");
            return false;
        }
        const char* value = words.raw(i);
        const bool read = option == "-size"      ? read_size(value, wish)
                          : option == "-samples" ? scene_read_int("samples", value, 0, SAMPLES_MAX, &wish->samples)
                          : option == "-dpi"
                              ? scene_read_int("dpi", value, 1, DPI_MAX, &options->dpi)
                              : scene_read_int("supersample", value, 1, SUPERSAMPLE_MAX, &wish->supersample);
        if (!read) { return false; }
    }
    return true;
}

bool state_allows(const PictureWish& wish) {
    const WindowHandle window = application()->view.window;
    if (!gl_context_current(window)) {
        scene_refuse(PROBLEM_STATE,
                     "a picture needs the window: make one with \"scene offscreen\" or \"create window\"");
        return false;
    }
    if (wish.samples >= 0 && !gl_has_picture_areas(window)) {
        scene_refuse(PROBLEM_STATE, "samples can only be chosen for a window of \"scene offscreen\"");
        return false;
    }
    return true;
}

Tcl_Obj* refuse_outcome(const PictureOutcome& outcome) {
    problem_set(outcome.kind.c_str(), outcome.failure);
    return scene_refuse_load();
}

// A program that ends writes what is still on its way. Nobody is left to be told but by a line.
void write_at_exit(ClientData) {
    int32_t written = 0;
    const PictureOutcome outcome = picture_write_finish(&written);
    if (!outcome.kind.empty()) { tcl_error_line(system_to_tcl(outcome.failure.text.c_str())); }
}

void write_later(PictureOrder&& order) {
    static bool ends_well = false;
    if (!ends_well) { Tcl_CreateExitHandler(write_at_exit, nullptr); }
    ends_well = true;
    picture_write_later(std::move(order));
}

Tcl_Obj* write_picture(const SceneWords& words) {
    const std::string path = words.text(0);
    const PictureKind kind = kind_of(path);
    if (kind == PICTURE_UNKNOWN) {
        return scene_refuse_argument("file", words.raw(0), "a name that ends in .png or .tga");
    }
    PictureOptions options;
    if (!read_options(words, &options)) { return nullptr; }
    if (options.dpi > 0 && kind != PICTURE_PNG) {
        return scene_refuse(PROBLEM_ARGUMENT, "the option -dpi is for .png: a .tga cannot hold it");
    }
    if (!state_allows(options.wish)) { return nullptr; }
    PictureOrder order{path, {}, kind == PICTURE_PNG, options.dpi};
    std::string failure;
    if (!picture_draw(options.wish, &order.picture, &failure)) { return scene_refuse(PROBLEM_SYSTEM, failure); }
    const int32_t width = order.picture.width, height = order.picture.height;
    PictureOutcome outcome;
    if (options.later) {
        write_later(std::move(order));
    } else {
        outcome = picture_write(order);
    }
    if (!outcome.kind.empty()) { return refuse_outcome(outcome); }
    ReplyList reply;
    reply.add("width", reply_int(width)).add("height", reply_int(height));
    if (!options.later) { reply.add("bytes", reply_int(static_cast<int64_t>(outcome.size))); }
    return reply.value();
}

Tcl_Obj* finish_writing(const SceneWords&) {
    int32_t written = 0;
    const PictureOutcome outcome = picture_write_finish(&written);
    return outcome.kind.empty() ? reply_int(written) : refuse_outcome(outcome);
}

constexpr SceneForm FORMS[] = {
    {"offscreen", "WIDTH HEIGHT ?SAMPLES?", 2, 3, "makes the window, without a display and where nobody sees it",
     make_offscreen},
    {"picture", "FILE ?-size WxH? ?-samples N? ?-supersample N? ?-transparent? ?-dpi N? ?-later?", 1, 11,
     "draws the scene into a PNG or TGA file", write_picture},
    {"written", "", 0, 0, "waits for the pictures that are written later", finish_writing},
};

}  // namespace

std::span<const SceneForm> scene_picture_forms() { return FORMS; }

}  // namespace pelt
