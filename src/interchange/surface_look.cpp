// Makes looks of layers from materials, and the images that they need.
//
// What surprises: a transparent surface without a texture gets a white one. The renderer sets how it blends only as it
// hands a texture on, so that without any the surface would be drawn solid.
#include "interchange/surface_look.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include <assimp/GltfMaterial.h>
#include <assimp/material.h>

#include "foundation/file_access.h"
#include "foundation/keyed_list.h"
#include "foundation/text.h"
#include "interchange/source_image.h"

namespace pelt {

namespace {

constexpr float FULL_COLOUR = 127.0f;  // of a layer
constexpr float FULL_BYTE = 255.0f;
constexpr float USUAL_CUTOFF = 0.5f;
constexpr size_t LAYER_NAME_LENGTH = KEY_TEXT_SIZE - 1;
constexpr size_t IMAGE_NAME_LENGTH = 100;  // a record has room for 127 bytes
constexpr const char* WHITE = "*white";    // no source is called so

float held(float value) { return std::isfinite(value) ? std::clamp(value, 0.0f, 1.0f) : 1.0f; }

float screen_step(float light) {
    return light <= 0.0031308f ? light * 12.92f : 1.055f * std::pow(light, 1.0f / 2.4f) - 0.055f;
}

// ---- what a material says ----

struct MaterialTexture {
    std::string path;
    unsigned channel = 0;
    bool is_clamped = false;
    bool ignores_alpha = false;
};

std::optional<MaterialTexture> texture_of(const aiMaterial& material) {
    for (const aiTextureType type : {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE}) {
        aiString path;
        if (material.GetTextureCount(type) == 0 || material.GetTexture(type, 0, &path) != aiReturn_SUCCESS ||
            path.length == 0) {
            continue;
        }
        MaterialTexture texture{path.C_Str()};
        int channel = 0;
        material.Get(AI_MATKEY_UVWSRC(type, 0), channel);
        texture.channel = static_cast<unsigned>(std::max(channel, 0));
        for (const auto mode : {_AI_MATKEY_MAPPINGMODE_U_BASE, _AI_MATKEY_MAPPINGMODE_V_BASE}) {
            int value = aiTextureMapMode_Wrap;
            material.Get(mode, static_cast<unsigned>(type), 0, value);
            texture.is_clamped = texture.is_clamped || value != aiTextureMapMode_Wrap;
        }
        int flags = 0;
        material.Get(AI_MATKEY_TEXFLAGS(type, 0), flags);
        texture.ignores_alpha = (flags & aiTextureFlags_IgnoreAlpha) != 0;
        return texture;
    }
    return std::nullopt;
}

struct MaterialAlpha {
    bool is_opaque = false;  // whatever its colour and texture say
    bool is_mask = false;    // the source itself knows only full and none
    float cutoff = USUAL_CUTOFF;
};

MaterialAlpha alpha_of(const aiMaterial& material) {
    MaterialAlpha alpha;
    aiString mode;
    if (material.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == aiReturn_SUCCESS) {
        alpha.is_opaque = std::strcmp(mode.C_Str(), "OPAQUE") == 0;
        float cutoff = USUAL_CUTOFF;
        alpha.is_mask = std::strcmp(mode.C_Str(), "MASK") == 0;
        if (alpha.is_mask && material.Get(AI_MATKEY_GLTF_ALPHACUTOFF, cutoff) == aiReturn_SUCCESS) {
            alpha.cutoff = held(cutoff);
        }
    }
    return alpha;
}

struct LostMap {
    aiTextureType type;
    const char* text;
};

constexpr LostMap LOST_MAPS[] = {
    {aiTextureType_SPECULAR, "maps of shine left out"},
    {aiTextureType_AMBIENT, "maps of ambient light left out"},
    {aiTextureType_EMISSIVE, "maps of glow left out"},
    {aiTextureType_HEIGHT, "maps of heights left out"},
    {aiTextureType_NORMALS, "maps of normals left out"},
    {aiTextureType_SHININESS, "maps of shine left out"},
    {aiTextureType_OPACITY, "maps of opacity left out"},
    {aiTextureType_DISPLACEMENT, "maps of heights left out"},
    {aiTextureType_LIGHTMAP, "maps of light left out"},
    {aiTextureType_REFLECTION, "maps of reflections left out"},
    {aiTextureType_NORMAL_CAMERA, "maps of normals left out"},
    {aiTextureType_EMISSION_COLOR, "maps of glow left out"},
    {aiTextureType_METALNESS, "maps of metal left out"},
    {aiTextureType_DIFFUSE_ROUGHNESS, "maps of roughness left out"},
    {aiTextureType_AMBIENT_OCCLUSION, "maps of ambient light left out"},
    {aiTextureType_SHEEN, "maps of shine left out"},
    {aiTextureType_CLEARCOAT, "maps of shine left out"},
    {aiTextureType_TRANSMISSION, "maps of opacity left out"},
    {aiTextureType_UNKNOWN, "maps of metal and roughness left out"},
};

bool is_black(const aiColor3D& colour) { return colour.r <= 0.0f && colour.g <= 0.0f && colour.b <= 0.0f; }

void tell_losses(const aiMaterial& material, LossCounts& losses) {
    std::map<std::string, bool> told;  // a map may stand in a material under two names
    for (const LostMap& lost : LOST_MAPS) {
        if (material.GetTextureCount(lost.type) > 0 && !told[lost.text]) {
            told[lost.text] = true;
            losses.add(lost.text);
        }
    }
    const unsigned layers =
        std::max(material.GetTextureCount(aiTextureType_DIFFUSE), material.GetTextureCount(aiTextureType_BASE_COLOR));
    if (layers > 1) { losses.add("textures above the first of a surface left out", layers - 1); }
    aiColor3D colour(0.0f, 0.0f, 0.0f);
    if (material.Get(AI_MATKEY_COLOR_EMISSIVE, colour) == aiReturn_SUCCESS && !is_black(colour)) {
        losses.add("surfaces that lose their glow");
    }
    float shine = 0.0f;
    const bool shines = material.Get(AI_MATKEY_SHININESS, shine) == aiReturn_SUCCESS && shine > 0.0f &&
                        material.Get(AI_MATKEY_COLOR_SPECULAR, colour) == aiReturn_SUCCESS && !is_black(colour);
    float metal = 0.0f;
    const bool is_metal = material.Get(AI_MATKEY_METALLIC_FACTOR, metal) == aiReturn_SUCCESS && metal > 0.0f;
    if (shines || is_metal) { losses.add("surfaces that lose their shine"); }
}

// ---- images ----

std::string base_of(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }

// Names of files stand in some formats as in an address.
std::string without_percents(const std::string& text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto is_digit = [&](size_t at) {
            return at < text.size() && std::isxdigit(static_cast<unsigned char>(text[at])) != 0;
        };
        if (text[i] == '%' && is_digit(i + 1) && is_digit(i + 2)) {
            result += static_cast<char>(std::strtol(text.substr(i + 1, 2).c_str(), nullptr, 16));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

std::string found_image(const std::string& directory, const std::string& path) {
    for (const std::string& name : {path, without_percents(path), base_of(path), base_of(without_percents(path))}) {
        if (name.empty() || name.find('\0') != std::string::npos) { continue; }
        const std::string found = file_resolve(path_from(directory.c_str(), name.c_str()).c_str());
        if (!found.empty()) { return found; }
    }
    return {};
}

bool take_texels(const aiTexture& texture, SourceImage* image) {
    image->width = static_cast<int32_t>(texture.mWidth);
    image->height = static_cast<int32_t>(texture.mHeight);
    constexpr unsigned MOST_ON_A_SIDE = 32768;
    if (texture.mWidth == 0 || texture.mWidth > MOST_ON_A_SIDE || texture.mHeight > MOST_ON_A_SIDE) { return false; }
    const size_t count = size_t{texture.mWidth} * texture.mHeight;
    for (size_t i = 0; i < count; ++i) {
        const aiTexel& texel = texture.pcData[i];
        image->pixels.insert(image->pixels.end(), {texel.r, texel.g, texel.b, texel.a});
    }
    image->has_alpha = true;
    return true;
}

// The picture of a path in a material, from within the scene or from a file. False with the loss in *lost.
bool get_picture(LookBook& book, const std::string& path, SourceImage* image, std::string* lost) {
    std::string bytes;
    const aiTexture* embedded = path.empty() ? nullptr : book.scene->GetEmbeddedTexture(path.c_str());
    if (embedded != nullptr && embedded->pcData != nullptr && embedded->mHeight > 0) {
        *lost = "images that are broken: " + base_of(path);
        return take_texels(*embedded, image);
    }
    if (embedded != nullptr && embedded->pcData != nullptr) {
        bytes.assign(reinterpret_cast<const char*>(embedded->pcData), embedded->mWidth);
    } else {
        const std::string file = found_image(book.source->directory, path);
        if (file.empty()) {
            *lost = "image is missing: " + path;
            return false;
        }
        book.read_files.push_back(file);
        size_t size = 0;
        const std::unique_ptr<char, void (*)(void*)> content(file_read_all(file.c_str(), &size), std::free);
        if (content != nullptr) { bytes.assign(content.get(), size); }
    }
    std::string reason;
    if (decode_image(bytes, image, &reason)) { return true; }
    *lost = "image cannot be used, " + reason + ": " + base_of(path);
    return false;
}

std::string name_for_image(const LookBook& book, const std::string& path, const std::string& layer) {
    std::string name = path.empty() || path[0] == '*' ? layer : base_of(without_percents(path));
    const size_t dot = name.rfind('.');
    if (dot != std::string::npos && dot > 0) { name.erase(dot); }
    const auto is_free = [&](const std::string& wanted) {
        return std::none_of(book.images.begin(), book.images.end(), [&](const MadeImage& image) {
            return str_equal_ignoring_case(image.name.c_str(), (wanted + ".tga").c_str());
        });
    };
    constexpr size_t ENDING = 4;
    const size_t most = IMAGE_NAME_LENGTH - ENDING;
    return free_name(plain_name(book.source->stem + "_" + name, most), most, is_free) + ".tga";
}

// What the alpha of a picture comes to, for a material that heeds it.
KeyedPicture key_picture(LookBook& book, SourceImage* image, const std::string& name, const MaterialAlpha& alpha) {
    const size_t count = image->pixels.size() / 4;
    size_t clear = 0;
    for (size_t i = 0; i < count; ++i) { clear += image->pixels[4 * i + 3] == 0 ? 1 : 0; }
    if (clear == count) {
        return {};  // an alpha of nothing but zeros was never meant
    }
    const KeyedPicture keyed = key_image(image, alpha.cutoff);
    if (keyed.was_smooth && !alpha.is_mask) {
        book.losses->add("image loses its half transparent places: " + base_of(name));
    }
    return keyed;
}

int32_t make_image(LookBook& book, const std::string& path, const std::string& layer, const MaterialAlpha& alpha) {
    SourceImage image;
    std::string lost;
    if (!get_picture(book, path, &image, &lost)) {
        book.losses->add(lost);
        return -1;
    }
    MadeImage made{name_for_image(book, path, layer), {}};
    KeyedPicture keyed;
    const std::string size = std::to_string(image.width) + " x " + std::to_string(image.height);
    if (shrink_image(&image, book.options->max_texture)) {
        book.losses->add("image of " + size + " pixels is made smaller (--max-texture): " + made.name);
    }
    if (!alpha.is_opaque && image.has_alpha) { keyed = key_picture(book, &image, made.name, alpha); }
    made.has_key = keyed.has_key;
    made.key = keyed.key;
    made.tga = tga_of(image);
    book.images.push_back(std::move(made));
    return static_cast<int32_t>(book.images.size()) - 1;
}

int32_t image_of(LookBook& book, const std::string& path, const std::string& layer, const MaterialAlpha& alpha) {
    const std::string use = alpha.is_opaque ? "" : " keyed at " + float_to_text(alpha.cutoff, 4);
    const auto [known, is_new] = book.known_images.insert({path + use, -1});
    if (is_new) { known->second = make_image(book, path, layer, alpha); }
    return known->second;
}

int32_t white_image(LookBook& book) {
    const auto [known, is_new] = book.known_images.insert({WHITE, -1});
    if (is_new) {
        const SourceImage image{1, 1, false, {255, 255, 255, 255}};
        known->second = static_cast<int32_t>(book.images.size());
        book.images.push_back({name_for_image(book, "white", "white"), tga_of(image)});
    }
    return known->second;
}

// ---- looks ----

std::string layer_name(const LookBook& book, const aiMaterial& material) {
    aiString given;
    material.Get(AI_MATKEY_NAME, given);
    std::string name = plain_name(given.C_Str(), LAYER_NAME_LENGTH);
    if (name.empty() || name == AI_DEFAULT_MATERIAL_NAME) { name = "surface"; }
    return free_name(name, LAYER_NAME_LENGTH, [&](const std::string& wanted) {
        return std::none_of(book.looks.begin(), book.looks.end(),
                            [&](const SurfaceLook& look) { return look.name == wanted; });
    });
}

void take_colour(SurfaceLook& look, const LookBook& book, const aiMaterial& material, bool is_opaque) {
    aiColor4D colour(1.0f, 1.0f, 1.0f, 1.0f);
    const bool has_base = material.Get(AI_MATKEY_BASE_COLOR, colour) == aiReturn_SUCCESS;
    if (!has_base) { material.Get(AI_MATKEY_COLOR_DIFFUSE, colour); }
    look.is_linear = has_base && (book.source->format == "gltf" || book.source->format == "glb");
    // Under a texture black is what exporters write that have no colour to write.
    if (look.image >= 0 && colour.r <= 0.0f && colour.g <= 0.0f && colour.b <= 0.0f) { colour = aiColor4D(1, 1, 1, 1); }
    float opacity = 1.0f;
    material.Get(AI_MATKEY_OPACITY, opacity);
    look.tint = {held(colour.r), held(colour.g), held(colour.b), is_opaque ? 1.0f : held(opacity)};
    for (size_t i = 0; i < look.colour.size(); ++i) {
        const float step = look.is_linear ? screen_step(look.tint[i]) : look.tint[i];
        look.colour[i] = static_cast<int32_t>(std::lround(step * FULL_COLOUR));
    }
    look.transparency = static_cast<float>(std::lround((1.0f - look.tint[3]) * 1000.0f)) / 1000.0f;
}

bool is_singlesided(const LookBook& book, const aiMaterial& material) {
    if (book.options->sides != SIDES_OF_FILE) { return book.options->sides == SIDES_ONE; }
    int both = 1;
    material.Get(AI_MATKEY_TWOSIDED, both);
    return both == 0;
}

SurfaceLook make_look(LookBook& book, const aiMaterial& material, const std::optional<MaterialTexture>& texture) {
    SurfaceLook look;
    look.name = layer_name(book, material);
    const MaterialAlpha alpha = alpha_of(material);
    if (texture.has_value()) {
        MaterialAlpha of_texture = alpha;
        of_texture.is_opaque = alpha.is_opaque || texture->ignores_alpha;
        look.image = image_of(book, texture->path, look.name, of_texture);
        look.has_coordinates = look.image >= 0;
        look.uv_channel = texture->channel;
        look.is_clamped = texture->is_clamped;
    }
    take_colour(look, book, material, alpha.is_opaque);
    look.singlesided = is_singlesided(book, material);
    if (look.image < 0 && look.transparency > 0.0f) { look.image = white_image(book); }
    return look;
}

}  // namespace

void LossCounts::add(const std::string& text, int64_t count) {
    if (count < 1) { return; }
    if (counts_.find(text) == counts_.end()) { order_.push_back(text); }
    counts_[text] += count;
}

std::vector<std::string> LossCounts::lines() const {
    std::vector<std::string> lines;
    for (const std::string& text : order_) {
        const int64_t count = counts_.at(text);
        // A text that ends in a name is one of a kind.
        const bool has_name = text.find(": ") != std::string::npos;
        lines.push_back(has_name && count == 1 ? text : text + ": " + std::to_string(count));
    }
    return lines;
}

std::string plain_name(const std::string& wanted, size_t most) {
    std::string name = wanted;
    for (char& c : name) {
        const bool is_plain = std::isalnum(static_cast<unsigned char>(c)) != 0 || std::strchr("_-.+", c) != nullptr ||
                              static_cast<unsigned char>(c) >= 0x80;
        if (!is_plain || c == '\0') { c = '_'; }
    }
    name.resize(text_cut_length(name.c_str(), std::min(most, name.size())));
    return name;
}

int32_t look_of_mesh(LookBook& book, const aiMesh& mesh) {
    static const aiMaterial PLAIN;
    const unsigned number = mesh.mMaterialIndex;
    const bool exists = book.scene->mMaterials != nullptr && number < book.scene->mNumMaterials &&
                        book.scene->mMaterials[number] != nullptr;
    const aiMaterial& material = exists ? *book.scene->mMaterials[number] : PLAIN;
    std::optional<MaterialTexture> texture = texture_of(material);
    const bool has_coordinates = texture.has_value() && texture->channel < AI_MAX_NUMBER_OF_TEXTURECOORDS &&
                                 mesh.mTextureCoords[texture->channel] != nullptr;
    if (!has_coordinates) { texture.reset(); }
    const std::array<int64_t, 2> key{exists ? int64_t{number} : -1, has_coordinates ? 1 : 0};
    const auto [known, is_new] = book.known_looks.insert({key, static_cast<int32_t>(book.looks.size())});
    if (is_new) {
        if (book.known_looks.count({key[0], 1 - key[1]}) == 0) { tell_losses(material, *book.losses); }
        book.looks.push_back(make_look(book, material, texture));
    }
    return known->second;
}

std::array<uint8_t, 4> vertex_colour(const SurfaceLook& look, const aiColor4D& colour) {
    const std::array<float, 4> own{held(colour.r), held(colour.g), held(colour.b), held(colour.a)};
    std::array<uint8_t, 4> bytes{};
    for (size_t i = 0; i < own.size(); ++i) {
        const float product = own[i] * look.tint[i];
        const float opacity_or_step = i == 3 ? 1.0f - product : look.is_linear ? screen_step(product) : product;
        bytes[i] = static_cast<uint8_t>(std::lround(std::clamp(opacity_or_step, 0.0f, 1.0f) * FULL_BYTE));
    }
    return bytes;
}

}  // namespace pelt
