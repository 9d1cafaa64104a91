// Reads a text that was just written as the reader of files would.
#include "read_back.h"

#include "formats/model_compare.h"
#include "formats/model_read_back.h"
#include "model_files.h"

namespace pelt::tool {

std::string refusal_of_text(const std::string& text, const Model* model) {
    std::string refused;
    const ModelOwner again(model_read_back(text, model, &refused));
    return refused;
}

std::string difference_of_text(const std::string& text, const Model* model) {
    std::string refused;
    const ModelOwner again(model_read_back(text, model, &refused));
    return again != nullptr ? model_difference(model, again.get()) : refused;
}

}  // namespace pelt::tool
