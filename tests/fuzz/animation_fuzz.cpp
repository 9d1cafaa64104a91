// A scene list and clips of the input over two models that stand beforehand, followed by a hundred steps of the clock.
// What surprises: the input may hold models of its own under the fixed names, which then take their place.
#include "application/application.h"
#include "application/open_and_fit.h"
#include "fuzz/fixed_files.h"
#include "fuzz/stage.h"
#include "motion/animation_clock.h"

namespace {

constexpr int STEPS = 100;
constexpr int STEPS_A_FRAME = 20;
constexpr int STEPS_BACK = 3;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace pelt;
    using namespace pelt::fuzz;
    std::vector<File> files = fixed_files();
    std::vector<File> own = split_files(data, size);
    own.front().name = "fixed.scene";
    files.insert(files.end(), own.begin(), own.end());
    stage_files(files);

    scene_begin();
    Application* app = application();
    animate_open(app, "fixed.scene");
    for (int step = 0; step < STEPS; ++step) {
        animate_next(&app->session);
        if (step % STEPS_A_FRAME == 0) { scene_draw_checked(); }
    }
    for (int step = 0; step < STEPS_BACK; ++step) { animate_prev(&app->session); }
    scene_draw_checked();
    file_reload(app);
    scene_draw_checked();
    scene_end();
    return 0;
}
