// Models of other formats made into models of this one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct aiScene;

namespace pelt {

// Which axis of the source points up. Most formats say it, or always mean y; those that do not are taken as they are
// mostly used.
enum ImportUp : int { UP_OF_FORMAT = 0, UP_Y = 1, UP_Z = 2 };

// Whether a surface is seen from behind. Where a file says nothing it is.
enum ImportSides : int { SIDES_OF_FILE = 0, SIDES_ONE = 1, SIDES_BOTH = 2 };

inline constexpr int32_t IMPORT_TEXTURE_SIZE = 1024;  // on a side, unless asked for otherwise

struct ImportOptions {
    double scale = 0.0;  // units of the model to one of the source; 0 for a choice by size
    ImportUp up = UP_OF_FORMAT;
    ImportSides sides = SIDES_OF_FILE;
    int32_t max_texture = IMPORT_TEXTURE_SIZE;
};

struct ImportedFile {
    std::string name;  // without directory
    std::string content;
};

struct ImportResult {
    std::string error;                 // why there is nothing; else empty
    std::vector<std::string> notes;    // choices that were made
    std::vector<std::string> losses;   // what the source says and the model does not, one line each
    std::vector<ImportedFile> files;   // in the order in which they are to be written: what names others comes last
    std::string main;                  // the name of that which goes to the place that was asked for
    std::vector<std::string> sources;  // the files that were read, as far as it came
};

// What a scene that was read does not say itself.
struct ImportSource {
    std::string directory;        // where its images lie, with the separator; empty for the current one
    std::string format;           // the ending of its file, in lower case and without the dot
    std::string stem;             // what the names of all files that are made begin with
    std::string model_file = {};  // how the first model will be called, for those that name it; empty for stem.mod
    std::vector<std::string> losses = {};  // what its reader has left out already
};

// Reads any file that the library of formats knows, for a model in a file of this name, which has no directory.
// Everything happens in this process: a broken file may end it, or take any memory and time.
ImportResult import_model_file(const std::string& path, const std::string& model_file, const ImportOptions& options);

// The same from a scene in memory, whatever nonsense it holds.
ImportResult import_scene(const aiScene& scene, const ImportSource& source, const ImportOptions& options);

}  // namespace pelt
