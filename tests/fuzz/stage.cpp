// The stage that fuzz targets play on. What surprises: inputs are files of a real directory, in memory where the system
// has such a place, because what is to be tried includes how names are found, joined and opened.
#include "fuzz/stage.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>

#include <unistd.h>

#include "application/application.h"
#include "application/open_and_fit.h"
#include "application/session_lifecycle.h"
#include "edit/history.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "images/image_registry.h"
#include "render/frame.h"
#include "support/native_null.h"
#include "support/recording_gl.h"

namespace pelt::fuzz {

namespace {

constexpr std::string_view SEPARATOR = "=== ";
constexpr size_t FILE_LIMIT = 8;
constexpr size_t NAME_LIMIT = 64;
constexpr int32_t PARENT_WIDTH = 202;
constexpr int32_t PARENT_HEIGHT = 152;

// A directory that goes with the process.
struct Directory {
    std::filesystem::path path;
    Directory() {
        const char* memory = "/dev/shm";
        std::string name =
            (access(memory, W_OK) == 0 ? std::string(memory) : std::filesystem::temp_directory_path().string()) +
            "/pelt_fuzz_XXXXXX";
        if (mkdtemp(name.data()) == nullptr || chdir(name.c_str()) != 0) { std::abort(); }
        path = name;
    }
    ~Directory() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

// Letters, digits, '_', '-' and '.', so that a file stays in its directory.
std::string clean_name(std::string_view text) {
    std::string name;
    for (const char c : text.substr(0, NAME_LIMIT)) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (letter || c == '_' || c == '-' || c == '.' || c == '[' || c == ']') { name += c; }
    }
    return name == "." || name == ".." || name.empty() ? "unnamed" : name;
}

volatile size_t report_length;

// Reads the whole text, so that one without an end is found.
void read_report(const char* text) { report_length = text != nullptr ? std::strlen(text) : 0; }

void expect_empty(const KeyedList& list, const char* what) {
    if (list_count(&list) != 0) { finding(what); }
}

}  // namespace

std::vector<File> split_files(const uint8_t* data, size_t size) {
    std::vector<File> files;
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    files.push_back({"main.mod", {}});
    while (!rest.empty()) {
        const size_t end = std::min(rest.find('\n'), rest.size() - 1) + 1;
        const std::string_view line = rest.substr(0, end);
        rest.remove_prefix(end);
        if (line.substr(0, SEPARATOR.size()) != SEPARATOR) {
            files.back().content += line;
        } else if (files.size() == FILE_LIMIT) {
            break;
        } else {
            files.push_back({clean_name(line.substr(SEPARATOR.size())), {}});
        }
    }
    return files;
}

const std::string& stage_files(const std::vector<File>& files) {
    static const Directory directory;
    static const std::string path = directory.path.string();
    for (const auto& entry : std::filesystem::directory_iterator(directory.path)) {
        std::filesystem::remove_all(entry.path());
    }
    for (const File& file : files) {
        std::ofstream stream(directory.path / file.name, std::ios::binary);
        stream.write(file.content.data(), static_cast<std::streamsize>(file.content.size()));
    }
    return path;
}

void finding(const char* text) {
    std::fprintf(stderr, "finding: %s\n", text);
    std::abort();
}

WindowHandle scene_begin(WindowProc event) {
    recording_gl::reset();
    null_reset();
    Application* app = application();
    std::memset(static_cast<void*>(app), 0, sizeof *app);
    session_init(&app->session);
    session_set_status_callback(&app->session, read_report);
    session_set_message_callback(&app->session, read_report);
    frame_bind(&app->session, &app->view);
    history_attach(&app->session);
    const WindowHandle parent = null_add_window(PARENT_WIDTH, PARENT_HEIGHT);
    app->view.window = gl_window_create("view", parent, view_init, nullptr, view_resize, event, 0);
    return parent;
}

void scene_draw_checked() {
    recording_gl::clear();
    frame_draw();
    if (!recording_gl::errors().empty()) { finding(recording_gl::joined(recording_gl::errors()).c_str()); }
    recording_gl::clear();
}

void scene_end() {
    Application* app = application();
    Session* session = &app->session;
    application_reset(app);
    expect_empty(session->root_models, "a root is left after a reset");
    expect_empty(session->model_states, "a model state is left after a reset");
    expect_empty(session->point_states, "a point state is left after a reset");
    expect_empty(session->triangle_caches, "a triangle cache is left after a reset");
    expect_empty(session->joint_states, "a joint state is left after a reset");
    expect_empty(session->child_states, "a child state is left after a reset");
    expect_empty(session->selection.models, "a selected model is left after a reset");
    expect_empty(session->selection.children, "a selected child is left after a reset");
    history_detach();
    expect_empty(*image_registry(), "an image is left after a reset");
    if (image_held_bytes() != 0) { finding("pixels are held after a reset"); }
    str_free(app->mouse_proc);
    str_free(app->keyboard_proc);
    str_free(app->status_proc);
    app->mouse_proc = app->keyboard_proc = app->status_proc = nullptr;
    null_reset();
}

}  // namespace pelt::fuzz
