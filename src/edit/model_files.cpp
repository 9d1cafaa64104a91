// Which models are one file. To compare two models takes as long as reading them all through, and a drag asks for it
// with each of its steps; so what was found the same, or was made so, is remembered by the numbers of the contents,
// which no other content ever gets.
#include "edit/model_files.h"

#include <cstring>
#include <unordered_map>

#include "formats/model_compare.h"
#include "foundation/file_access.h"
#include "foundation/text.h"

namespace pelt {

namespace {

constexpr size_t REMEMBERED_MOST = 4096;  // contents; what is forgotten is compared again

// Contents with the same number here say the same.
std::unordered_map<uint64_t, uint64_t> same_contents;

uint64_t content_number(const Model* model) {
    const auto found = same_contents.find(model->version);
    return found != same_contents.end() ? found->second : model->version;
}

void remember_same(const Model* model, const Model* other) {
    const uint64_t number = content_number(model);
    if (same_contents.size() >= REMEMBERED_MOST) { same_contents.clear(); }
    same_contents[model->version] = number;
    same_contents[other->version] = number;
}

// Two names lead to one file also where they differ in case.
bool is_same_file(const char* a, const char* b) {
    if (std::strcmp(a, b) == 0) { return true; }
    if (!str_equal_ignoring_case(a + path_directory_length(a), b + path_directory_length(b))) { return false; }
    const std::string found = file_resolve(a);
    return !found.empty() && found == file_resolve(b);
}

void collect(Model* model, const Model* searched, std::vector<Model*>* found) {
    if (model == nullptr) { return; }
    if (model != searched && model->opened_path != nullptr && is_same_file(model->opened_path, searched->opened_path)) {
        found->push_back(model);
    }
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { collect(link.model, searched, found); }
    }
}

}  // namespace

std::vector<Model*> models_of_file(Session* session, Model* model, std::string* refused) {
    refused->clear();
    if (session == nullptr || model == nullptr) { return {}; }
    std::vector<Model*> models{model};
    if (model->opened_path == nullptr) { return models; }
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        collect(root.model, model, &models);
    }
    for (const Model* each : models) {
        if (content_number(each) == content_number(model)) { continue; }
        const std::string difference = model_difference(model, each);
        if (!difference.empty()) {
            *refused = std::string(model->opened_path) +
                       " stands in the scene several times and not everywhere alike (" + difference + ")";
            return {};
        }
        remember_same(model, each);
    }
    return models;
}

void models_changed_alike(const std::vector<Model*>& models) {
    for (const Model* each : models) { remember_same(models.front(), each); }
}

}  // namespace pelt
