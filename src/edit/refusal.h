// Why a change of the scene was not made.
#pragma once

#include <string>
#include <vector>

#include "edit/model_files.h"

namespace pelt {

enum EditProblem : int {
    EDIT_ARGUMENT,  // what was asked for cannot be
    EDIT_STATE,     // the scene, as it stands, does not allow it
    EDIT_FILE,      // a file could not be read: the load-error record says more
};

struct EditRefusal {
    EditProblem kind = EDIT_STATE;
    std::string text;
    std::string file;  // of EDIT_FILE
};

// For "return edit_refuse(...)": always false.
inline bool edit_refuse(EditRefusal* refused, EditProblem kind, const std::string& text, const std::string& file = {}) {
    if (refused != nullptr) { *refused = EditRefusal{kind, text, file}; }
    return false;
}

// The models that a change of this one is for; false where they differ by now.
inline bool edit_targets(Session* session, Model* model, std::vector<Model*>* targets, EditRefusal* refused) {
    std::string reason;
    *targets = models_of_file(session, model, &reason);
    return !targets->empty() || edit_refuse(refused, EDIT_STATE, reason);
}

}  // namespace pelt
