// A scene made of the bytes, with numbers of nonsense in every place that has one, is imported; what comes out is read.
// The library of formats takes no part: this is about what becomes of the scenes that it hands over.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

#include "formats/model_reader.h"
#include "fuzz/stage.h"
#include "interchange/import.h"
#include "interchange/import_bundle.h"
#include "scene/model.h"
#include "support/scene_maker.h"

namespace pelt::fuzz {

namespace {

using test::SceneMaker;

struct Bytes {
    const uint8_t* data;
    size_t size;
    uint8_t take() {
        if (size == 0) { return 0; }
        --size;
        return *data++;
    }
    unsigned below(unsigned limit) { return take() % limit; }
    // Mostly a small number, now and then any there is.
    float number() {
        const uint8_t first = take();
        if (first < 240) { return static_cast<float>(first) - 120.0f; }
        uint32_t bits = 0;
        for (int i = 0; i < 4; ++i) { bits = bits << 8 | take(); }
        float value = 0.0f;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    std::string name() {
        static const char* const NAMES[] = {
            "",       "a",         "b",
            "world",  "translate", "child0",
            "x y\"z", "\xFF\xC3(", "a name that is much longer than any key of a list may be"};
        return NAMES[below(sizeof NAMES / sizeof *NAMES)];
    }
    aiMatrix4x4 placement() {
        aiMatrix4x4 m;
        for (unsigned left = below(5); left > 0; --left) { m[below(4)][below(4)] = number() / 10.0f; }
        return m;
    }
};

void add_mesh(SceneMaker& maker, Bytes& bytes, aiNode* node) {
    std::vector<test::Triple> places(1 + bytes.below(12));
    for (test::Triple& place : places) { place = {bytes.number(), bytes.number(), bytes.number()}; }
    std::vector<std::vector<unsigned>> faces(bytes.below(12));
    for (auto& face : faces) {
        face.resize(bytes.below(6));
        for (unsigned& corner : face) { corner = bytes.below(16); }
    }
    aiMesh* mesh = maker.add_mesh(places, faces, node, bytes.below(5));
    const unsigned has = bytes.take();
    mesh->mPrimitiveTypes = has & 1 ? aiPrimitiveType_NGONEncodingFlag : 0;
    if (has & 2) {
        std::vector<test::Triple> normals(places.size());
        for (test::Triple& normal : normals) { normal = {bytes.number(), bytes.number(), bytes.number()}; }
        SceneMaker::set_normals(mesh, normals);
    }
    if (has & 4) {
        std::vector<std::array<float, 2>> uvs(places.size());
        for (auto& uv : uvs) { uv = {bytes.number() / 100.0f, bytes.number() / 100.0f}; }
        SceneMaker::set_coordinates(mesh, uvs);
    }
    if (has & 8) {
        std::vector<aiColor4D> colours(places.size());
        for (aiColor4D& colour : colours) { colour = aiColor4D(bytes.number() / 100.0f, 0.5f, 1.0f, bytes.number()); }
        SceneMaker::set_colours(mesh, colours);
    }
    for (unsigned bones = has >> 6; bones > 0; --bones) {
        SceneMaker::Shares shares(bytes.below(8));
        for (auto& [vertex, weight] : shares) {
            vertex = bytes.below(16);
            weight = bytes.number() / 120.0f;
        }
        SceneMaker::add_bone(mesh, bytes.name(), bytes.placement(), shares);
    }
}

void add_material(SceneMaker& maker, Bytes& bytes) {
    aiMaterial* material = maker.add_material(bytes.name());
    const unsigned has = bytes.take();
    if (has & 1) { SceneMaker::set_texture(material, has & 2 ? "*0" : bytes.name()); }
    if (has & 4) { SceneMaker::set_colour(material, aiColor4D(bytes.number() / 100.0f, 0.5f, 1.0f, 1.0f)); }
    if (has & 8) {
        const float opacity = bytes.number() / 100.0f;
        material->AddProperty(&opacity, 1, AI_MATKEY_OPACITY);
    }
    const int sides = static_cast<int>(bytes.take());
    if (has & 16) { material->AddProperty(&sides, 1, AI_MATKEY_TWOSIDED); }
}

void add_animation(SceneMaker& maker, Bytes& bytes) {
    aiAnimation* animation = maker.add_animation(bytes.name(), std::fabs(double{bytes.number()}) / 60.0);
    for (unsigned channels = bytes.below(4); channels > 0; --channels) {
        std::vector<aiVectorKey> places(bytes.below(3));
        for (aiVectorKey& key : places) { key = {double{bytes.number()}, {bytes.number(), bytes.number(), 0}}; }
        std::vector<aiQuatKey> turns(bytes.below(3));
        for (aiQuatKey& key : turns) {
            key = {double{bytes.number()}, aiQuaternion(bytes.number(), bytes.number(), bytes.number(), 1.0f)};
        }
        SceneMaker::add_channel(animation, bytes.name(), places, turns);
    }
}

void make_scene(SceneMaker& maker, Bytes& bytes) {
    for (unsigned materials = bytes.below(4); materials > 0; --materials) { add_material(maker, bytes); }
    std::vector<aiTexel> texels;
    while (texels.size() < 4) { texels.push_back({bytes.take(), bytes.take(), bytes.take(), bytes.take()}); }
    maker.add_texels(2, 2, texels);
    std::vector<aiNode*> nodes{maker.scene.mRootNode};
    for (unsigned count = bytes.below(6); count > 0; --count) {
        nodes.push_back(
            maker.add_node(bytes.name(), bytes.placement(), nodes[bytes.below(static_cast<unsigned>(nodes.size()))]));
    }
    for (unsigned count = 1 + bytes.below(4); count > 0; --count) {
        add_mesh(maker, bytes, nodes[bytes.below(static_cast<unsigned>(nodes.size()))]);
    }
    for (unsigned count = bytes.below(3); count > 0; --count) { add_animation(maker, bytes); }
}

void look_at(const ImportResult& result) {
    if (result.error.empty() == result.files.empty()) { finding("files and an error, or neither"); }
    ImportResult again;
    if (!import_unbundle(import_bundle(result), &again)) { finding("a result that cannot be handed over"); }
    std::vector<File> files;
    for (const ImportedFile& file : result.files) { files.push_back({file.name, file.content}); }
    stage_files(files);
    for (const ImportedFile& file : result.files) {
        if (!file.name.ends_with(".mod")) { continue; }
        Model* model = model_load(file.name.c_str());
        if (model == nullptr) { finding("a model that does not load"); }
        model_release(model);
    }
}

}  // namespace

}  // namespace pelt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace pelt;
    using namespace pelt::fuzz;
    Bytes bytes{data, size};
    ImportOptions options;
    options.scale = bytes.below(4) == 0 ? std::fabs(double{bytes.number()}) : 0.0;
    options.max_texture = 1 + static_cast<int32_t>(bytes.below(3));
    test::SceneMaker maker;
    make_scene(maker, bytes);
    look_at(import_scene(maker.scene, {"", "obj", "made"}, options));
    return 0;
}
