// What the forms that change models have in common: settings as keys and values by turns, words among their
// arguments, and what they say where a change was refused.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

struct Tcl_Obj;

namespace pelt {

struct EditRefusal;
struct Model;
struct Layer;
struct PlaceEdit;
struct SceneWords;

// A key and what reads the word behind it, which answers false after a refusal.
struct SceneOption {
    const char* key;
    std::function<bool(const char* word)> read;
};

// Reads keys and values from one index to the end. False after a refusal: a key that is none or has no value.
bool scene_read_options(const SceneWords& words, int first, std::initializer_list<SceneOption> options);

// A list of exactly so many whole numbers.
bool scene_read_ints(const char* what, const char* word, int32_t least, int32_t most, int32_t* values, int count);
bool scene_read_colour(const char* what, const char* word, int32_t least, int32_t most, std::array<int32_t, 3>* colour);

// One of the words x, y, z, -x, -y and -z as its AxisCode; a list of two of them.
bool scene_read_axis(const char* what, const char* word, int32_t* code);
bool scene_read_axes(const char* what, const char* word, std::array<int, 2>* axes);

// A list of names of layers of the model, at least one; each layer once.
bool scene_read_layers(const Model* model, const char* word, std::vector<const Layer*>* layers);

// The keys of a placement: translation, scale, rotation.
bool scene_read_place_options(const SceneWords& words, int first, PlaceEdit* edit);

// A path from the root of the file system, with slashes and without "." and ".."; of an empty one the directory of the
// process.
std::string scene_absolute_path(const std::string& path);

// A word in the system's encoding.
std::string scene_text(const char* word);

// The failure of the call; null.
Tcl_Obj* scene_refuse_edit(const EditRefusal& refused);

// What a form without a result answers: the empty text.
Tcl_Obj* reply_nothing();

}  // namespace pelt
