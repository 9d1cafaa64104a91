// Lines added to a model that is loaded, posed by a clip and selected, in pieces, with a frame after each. What
// surprises: the model has joints, blends, children and an image from the start, so that the lines find something to
// disturb.
#include <algorithm>
#include <string>

#include "application/application.h"
#include "application/open_and_fit.h"
#include "application/session_lifecycle.h"
#include "edit/selection.h"
#include "formats/model_reader.h"
#include "fuzz/fixed_files.h"
#include "fuzz/stage.h"
#include "motion/animation_clock.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace pelt;
    using namespace pelt::fuzz;
    stage_files(fixed_files());
    scene_begin();
    Application* app = application();
    Session* session = &app->session;
    animate_open(app, "fixed.scene");
    animate_next(session);
    scene_draw_checked();
    selection_all(session);

    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string pieces[2] = {text.substr(0, size / 2), text.substr(size / 2)};
    for (const std::string& piece : pieces) {
        Model* model = selection_current_model(session);
        if (model != nullptr) { model_read_data(model, piece.c_str()); }
        scene_draw_checked();
        animate_next(session);
        scene_draw_checked();
    }
    // As the script's own form has it: one line, to everything that is selected.
    selection_add_data(session, text.c_str());
    selection_translate(session, 1, 2, 3, 1);
    session_reload(session);
    scene_draw_checked();
    selection_delete(session);
    scene_end();
    return 0;
}
