// Models read without what lies beside them, as they come out of a version control system.
#pragma once

#include <string>

#include "model_files.h"

namespace pelt::tool {

// The model of one file: its images and child models are names, and never looked for. Null with the reason printed.
ModelOwner load_lone_model(const std::string& path);

}  // namespace pelt::tool
