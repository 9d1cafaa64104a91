// Models that are one file: what is read from a file several times is to be changed in all places alike.
#pragma once

#include <string>
#include <vector>

#include "scene/session.h"

namespace pelt {

// The models of the scene that were read from the same file as this one, itself first; itself alone when it was read
// from none. Empty, with the reason in *refused (which is else emptied), when they do not all say the same: the verbs
// that change one alone have been at work.
std::vector<Model*> models_of_file(Session* session, Model* model, std::string* refused);

// All of them were just changed in the same way, so that they say the same without being compared.
void models_changed_alike(const std::vector<Model*>& models);

}  // namespace pelt
