// Has a file read by the library of formats.
//
// What surprises: every file that it opens is found as this system finds files, whatever the case of its name and
// whichever way its separators lean, and is a regular one: a name in a material may lead to a device that never ends.
#include <algorithm>
#include <cctype>
#include <memory>
#include <set>

#include <assimp/DefaultIOSystem.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <assimp/Importer.hpp>

#include "foundation/file_access.h"
#include "interchange/import.h"
#include "interchange/surface_look.h"

namespace pelt {

namespace {

constexpr float SMOOTH_BELOW_DEGREES = 45.0f;  // where a file has no normals
constexpr unsigned READ_STEPS =
    aiProcess_Triangulate | aiProcess_GenSmoothNormals | aiProcess_GenUVCoords | aiProcess_TransformUVCoords;

class RegularFiles : public Assimp::DefaultIOSystem {
public:
    explicit RegularFiles(std::vector<std::string>* opened) : opened_(opened) {}

    bool Exists(const char* path) const override { return !file_resolve(path).empty(); }
    Assimp::IOStream* Open(const char* path, const char* mode) override {
        const std::string found = file_resolve(path);
        const bool reads = mode != nullptr && std::string(mode).find_first_of("wa+") == std::string::npos;
        if (found.empty() || !reads) { return nullptr; }
        if (std::find(opened_->begin(), opened_->end(), found) == opened_->end()) { opened_->push_back(found); }
        return DefaultIOSystem::Open(found.c_str(), mode);
    }

private:
    std::vector<std::string>* opened_;
};

std::string ending_of(const std::string& path) {
    const size_t dot = path.find_last_of("./\\");
    std::string ending = dot == std::string::npos || path[dot] != '.' ? "" : path.substr(dot + 1);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    return ending;
}

// Formats whose models move by frames of whole meshes, of which the reader takes the first.
bool moves_by_frames(const std::string& format) {
    static const std::set<std::string> FORMATS = {"md2", "md3", "mdc", "mdl", "hmp"};
    return FORMATS.count(format) != 0;
}

void configure(Assimp::Importer& importer) {
    importer.SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, SMOOTH_BELOW_DEGREES);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
}

std::string reason_of(const Assimp::Importer& importer) {
    const std::string reason = importer.GetErrorString();
    return reason.empty() ? "it cannot be read" : "it cannot be read: " + reason;
}

bool has_bones(const aiScene& scene) {
    return std::any_of(scene.mMeshes, scene.mMeshes + scene.mNumMeshes,
                       [](const aiMesh* mesh) { return mesh->mNumBones > 0; });
}

bool lacks_normals(const aiScene& scene) {
    return std::any_of(scene.mMeshes, scene.mMeshes + scene.mNumMeshes, [](const aiMesh* mesh) {
        return mesh->mNormals == nullptr &&
               (mesh->mPrimitiveTypes & (aiPrimitiveType_TRIANGLE | aiPrimitiveType_POLYGON)) != 0;
    });
}

}  // namespace

ImportResult import_model_file(const std::string& path, const std::string& model_file, const ImportOptions& options) {
    ImportResult result;
    if (file_resolve(path.c_str()).empty()) {
        result.error = "there is no such file";
        return result;
    }
    std::vector<std::string> opened;
    Assimp::Importer importer;
    importer.SetIOHandler(new RegularFiles(&opened));  // goes with the importer
    configure(importer);
    const aiScene* scene = importer.ReadFile(path, 0);
    const bool makes_normals = scene != nullptr && lacks_normals(*scene);
    if (scene != nullptr) { scene = importer.ApplyPostProcessing(READ_STEPS); }
    if (scene == nullptr) {
        result.error = reason_of(importer);
        result.sources = opened;
        return result;
    }
    constexpr size_t STEM_LENGTH = 60;
    const std::string stem = plain_name(model_file.substr(0, model_file.rfind('.')), STEM_LENGTH);
    ImportSource source{path.substr(0, path_directory_length(path.c_str())), ending_of(path), stem, model_file};
    if (moves_by_frames(source.format) && !has_bones(*scene)) {
        source.losses.push_back("frames behind the first left out");
    }
    result = import_scene(*scene, source, options);
    result.sources.insert(result.sources.begin(), opened.begin(), opened.end());
    if (makes_normals && result.error.empty()) {
        result.notes.push_back("it has no normals: they are made of the faces, round below 45 degrees");
    }
    return result;
}

}  // namespace pelt
