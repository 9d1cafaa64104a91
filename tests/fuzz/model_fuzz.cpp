// A directory of models and images is opened, drawn, evaluated, reloaded, written, and put through every step of the
// tool. What surprises: a model that is written is read again, because what the writer makes must at least be readable
// without harm.
#include <cstdio>
#include <cstdlib>

#include "application/application.h"
#include "application/open_and_fit.h"
#include "application/session_lifecycle.h"
#include "formats/model_reader.h"
#include "formats/model_writer.h"
#include "formats/obj_writer.h"
#include "fuzz/stage.h"
#include "images/image_registry.h"
#include "reduce/bake_mirror.h"
#include "reduce/flatten.h"
#include "reduce/tessellate.h"
#include "scene/model.h"

namespace pelt::fuzz {

namespace {

constexpr char MAIN_FILE[] = "main.mod";
constexpr char WRITTEN_FILE[] = "written.mod";

void write_and_read(const Model* model) {
    if (std::FILE* stream = std::fopen(WRITTEN_FILE, "wb")) {
        const std::string text = model_write_text(model, WRITTEN_FILE);
        std::fwrite(text.data(), 1, text.size(), stream);
        std::fclose(stream);
    }
    model_write_obj_text(model, WRITTEN_FILE);
    Model* again = model_load(WRITTEN_FILE);
    if (again != nullptr) { model_release(again); }
}

void show() {
    Application* app = application();
    if (file_open_model(app, MAIN_FILE) > 0) {
        scene_draw_checked();
        file_reload(app);
        file_add(app, MAIN_FILE);
        scene_draw_checked();
        session_find_images(&app->session, 0);
        image_check_ps2_files();
    }
}

void convert() {
    Model* model = model_load(MAIN_FILE);
    if (model == nullptr) { return; }
    write_and_read(model);
    model_bake_mirror(model);
    model_tessellate(model, 1);
    model_flatten(model);
    model_split_normals(model);
    model_renumber_points(model);
    write_and_read(model);
    model_release(model);
}

}  // namespace

}  // namespace pelt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace pelt::fuzz;
    stage_files(split_files(data, size));
    scene_begin();
    show();
    convert();
    scene_end();
    return 0;
}
