// How the surfaces of a scene look, as far as a layer can say it.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "interchange/source_scene.h"

namespace pelt {

struct SurfaceLook {
    std::string name;  // of the layer: unique, at most as long as a key
    std::array<int32_t, 3> colour;
    float transparency = 0.0f;
    bool singlesided = false;
    int32_t image = -1;            // number among the images that are made, -1 for none
    bool has_coordinates = false;  // of its own for the image, which is otherwise of one colour
    unsigned uv_channel = 0;
    bool is_clamped = false;    // outside 0 to 1 the source shows something else than the image again
    std::array<float, 4> tint;  // what colours of vertices are multiplied by: red, green, blue, opacity
    bool is_linear = false;     // these and those count light, not the steps of a screen
};

// An image that is made beside the model.
struct MadeImage {
    std::string name;  // of its file
    std::string tga;
    bool has_key = false;
    std::array<int32_t, 3> key{};
};

// Losses as they are counted: lines of a text and its number, in the order in which the texts were first met.
class LossCounts {
public:
    void add(const std::string& text, int64_t count = 1);
    std::vector<std::string> lines() const;

private:
    std::vector<std::string> order_;
    std::map<std::string, int64_t> counts_;
};

// The looks of a scene, gathered as its meshes are met.
struct LookBook {
    const aiScene* scene;
    const ImportSource* source;
    const ImportOptions* options;
    LossCounts* losses;
    LossCounts* notes;
    std::vector<SurfaceLook> looks = {};
    std::vector<MadeImage> images = {};
    std::vector<std::string> read_files = {};
    std::map<std::array<int64_t, 2>, int32_t> known_looks = {};  // by material and whether there are coordinates
    std::map<std::string, int32_t> known_images = {};            // by source and use; -1 for one that cannot be had
};

// The number of the look of a mesh's material, which is added when it is new: without its texture where the mesh has no
// coordinates for it.
int32_t look_of_mesh(LookBook& book, const aiMesh& mesh);

// The colour of a vertex under a look, as a point holds it; a mesh without colours has white ones.
std::array<uint8_t, 4> vertex_colour(const SurfaceLook& look, const aiColor4D& colour);

// The text with '_' for what a word of the format or a name of a file had better not hold, no longer than most bytes.
std::string plain_name(const std::string& wanted, size_t most);

// The name, or it with a number behind it, for which is_free holds; no longer than most bytes.
template <typename IsFree>
std::string free_name(const std::string& wanted, size_t most, const IsFree& is_free) {
    std::string name = wanted;
    for (int number = 2; !is_free(name); ++number) {
        const std::string ending = "_" + std::to_string(number);
        name = plain_name(wanted, most - ending.size()) + ending;
    }
    return name;
}

}  // namespace pelt
