// A model that was changed goes back into the text that it was read from: the lines that must change do, and no other.
#pragma once

#include <string>
#include <string_view>

namespace pelt {

struct Model;

struct ModelSave {
    std::string text;     // of the file; empty after a refusal
    std::string refused;  // the reason, beginning with the name of what cannot be written; empty where there is none
    bool by_layout;       // it is the order of the lines that forbids it: the whole writer could write this model
};

// The text that reads back as the model, made of the one that it was loaded from. It was read, and compared with the
// model, when this returns. Refused by name is what changed since into something that no file can hold, and what the
// order of the lines forbids; what the text itself says beyond the limits of a line or an id stays.
ModelSave model_save(const Model* model, std::string_view loaded);

// The same laid out anew; the name only stands in the comment at its head.
ModelSave model_save_whole(const Model* model, const char* file_name);

}  // namespace pelt
