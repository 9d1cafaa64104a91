// Models of the scene written to files.
#pragma once

#include <string>

namespace pelt {

struct Application;
struct Model;

struct SaveWish {
    Model* model = nullptr;
    std::string file;    // empty for the model's own
    bool force = false;  // also where the file changed on disk since it was read
    bool whole = false;  // laid out anew
    bool round = false;  // places between whole numbers go to the nearest
};

struct SaveDone {
    std::string path;
    float shift = 0.0f;  // by which the place that moved furthest was rounded
};

// Writes a model to its file, or to another one, which it then belongs to. False, with the reason in problem_last and
// every file as it was. What is changed in the model itself (rounded places, names beside another file) is told to the
// history; after a failure it is for the caller to have the history put it back.
bool scene_save(Application* app, const SaveWish& wish, SaveDone* done);

// Writes the scene as a model whose children are the models that stand in it. They have to have files, and these to
// have what is shown; the scene itself stays as it is.
bool scene_save_as_model(Application* app, const std::string& file, SaveDone* done);

}  // namespace pelt
