// Scenes of the library of formats, made by hand, and what an import makes of them, loaded.
#pragma once

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include <assimp/anim.h>
#include <assimp/camera.h>
#include <assimp/material.h>
#include <assimp/mesh.h>
#include <assimp/scene.h>

#include "interchange/import.h"
#include "scene/model.h"
#include "support/model_text.h"
#include "support/temp_dir.h"

namespace pelt::test {

using Triple = std::array<float, 3>;

inline aiVector3D vector_of(const Triple& v) { return aiVector3D(v[0], v[1], v[2]); }

// The array that the scene's own records hold, which take it over.
template <typename Element>
Element* array_of(const std::vector<Element>& elements) {
    auto* array = new Element[elements.size()];
    std::copy(elements.begin(), elements.end(), array);
    return array;
}

// A scene with one node, the root, which can be given meshes and further nodes. Everything belongs to the scene.
class SceneMaker {
public:
    SceneMaker() { scene.mRootNode = new aiNode("root"); }

    // A mesh of these places and faces, shown by the root or by another node.
    aiMesh* add_mesh(const std::vector<Triple>& places, const std::vector<std::vector<unsigned>>& faces,
                     aiNode* shown_by = nullptr, unsigned material = 0) {
        auto* mesh = new aiMesh;
        mesh->mMaterialIndex = material;
        mesh->mNumVertices = static_cast<unsigned>(places.size());
        mesh->mVertices = new aiVector3D[places.size()];
        for (size_t i = 0; i < places.size(); ++i) { mesh->mVertices[i] = vector_of(places[i]); }
        mesh->mNumFaces = static_cast<unsigned>(faces.size());
        mesh->mFaces = faces.empty() ? nullptr : new aiFace[faces.size()];
        for (size_t i = 0; i < faces.size(); ++i) {
            mesh->mFaces[i].mNumIndices = static_cast<unsigned>(faces[i].size());
            mesh->mFaces[i].mIndices = array_of(faces[i]);
        }
        append(scene.mMeshes, scene.mNumMeshes, mesh);
        aiNode* node = shown_by != nullptr ? shown_by : scene.mRootNode;
        append(node->mMeshes, node->mNumMeshes, scene.mNumMeshes - 1);
        return mesh;
    }

    static void set_normals(aiMesh* mesh, const std::vector<Triple>& normals) {
        mesh->mNormals = new aiVector3D[normals.size()];
        for (size_t i = 0; i < normals.size(); ++i) { mesh->mNormals[i] = vector_of(normals[i]); }
    }

    static void set_coordinates(aiMesh* mesh, const std::vector<std::array<float, 2>>& uvs) {
        mesh->mTextureCoords[0] = new aiVector3D[uvs.size()];
        mesh->mNumUVComponents[0] = 2;
        for (size_t i = 0; i < uvs.size(); ++i) { mesh->mTextureCoords[0][i] = aiVector3D(uvs[i][0], uvs[i][1], 0); }
    }

    static void set_colours(aiMesh* mesh, const std::vector<aiColor4D>& colours) {
        mesh->mColors[0] = array_of(colours);
    }

    aiMaterial* add_material(const std::string& name) {
        auto* material = new aiMaterial;
        const aiString text(name);
        material->AddProperty(&text, AI_MATKEY_NAME);
        append(scene.mMaterials, scene.mNumMaterials, material);
        return material;
    }

    static void set_texture(aiMaterial* material, const std::string& path) {
        const aiString text(path);
        material->AddProperty(&text, AI_MATKEY_TEXTURE(aiTextureType_DIFFUSE, 0));
    }

    static void set_colour(aiMaterial* material, const aiColor4D& colour) {
        material->AddProperty(&colour, 1, AI_MATKEY_COLOR_DIFFUSE);
    }

    // Texels of an image within the scene, which materials call by this name ("*0" for the first).
    void add_texels(unsigned width, unsigned height, const std::vector<aiTexel>& texels) {
        auto* texture = new aiTexture;
        texture->mWidth = width;
        texture->mHeight = height;
        texture->pcData = array_of(texels);
        append(scene.mTextures, scene.mNumTextures, texture);
    }

    aiNode* add_node(const std::string& name, const aiMatrix4x4& placement = aiMatrix4x4(), aiNode* above = nullptr) {
        auto* node = new aiNode(name);
        node->mTransformation = placement;
        aiNode* parent = above != nullptr ? above : scene.mRootNode;
        parent->addChildren(1, &node);
        return node;
    }

    using Shares = std::vector<std::pair<unsigned, float>>;

    // Lets a node move vertices of a mesh. The mesh was bound when the node had this inverse placement.
    static void add_bone(aiMesh* mesh, const std::string& node, const aiMatrix4x4& offset, const Shares& shares) {
        auto* bone = new aiBone;
        bone->mName = aiString(node);
        bone->mOffsetMatrix = offset;
        bone->mNumWeights = static_cast<unsigned>(shares.size());
        bone->mWeights = new aiVertexWeight[shares.size()];
        for (size_t i = 0; i < shares.size(); ++i) {
            bone->mWeights[i] = aiVertexWeight(shares[i].first, shares[i].second);
        }
        append(mesh->mBones, mesh->mNumBones, bone);
    }

    // An animation whose times are seconds.
    aiAnimation* add_animation(const std::string& name, double seconds) {
        auto* animation = new aiAnimation;
        animation->mName = aiString(name);
        animation->mDuration = seconds;
        animation->mTicksPerSecond = 1.0;
        append(scene.mAnimations, scene.mNumAnimations, animation);
        return animation;
    }

    static void add_channel(aiAnimation* animation, const std::string& node, const std::vector<aiVectorKey>& places,
                            const std::vector<aiQuatKey>& turns, const std::vector<aiVectorKey>& scales = {}) {
        auto* channel = new aiNodeAnim;
        channel->mNodeName = aiString(node);
        channel->mNumPositionKeys = static_cast<unsigned>(places.size());
        channel->mPositionKeys = places.empty() ? nullptr : array_of(places);
        channel->mNumRotationKeys = static_cast<unsigned>(turns.size());
        channel->mRotationKeys = turns.empty() ? nullptr : array_of(turns);
        channel->mNumScalingKeys = static_cast<unsigned>(scales.size());
        channel->mScalingKeys = scales.empty() ? nullptr : array_of(scales);
        append(animation->mChannels, animation->mNumChannels, channel);
    }

    template <typename Element>
    static void append(Element*& array, unsigned& count, const Element& element) {
        auto* longer = new Element[count + 1];
        std::copy(array, array + count, longer);
        longer[count] = element;
        delete[] array;
        array = longer;
        ++count;
    }

    aiScene scene;
};

// A box of 24 corners, six faces of two triangles with a normal each, whose least corner is the origin.
inline aiMesh* add_box(SceneMaker& maker, float size, aiNode* shown_by = nullptr) {
    std::vector<Triple> places;
    std::vector<Triple> normals;
    std::vector<std::vector<unsigned>> faces;
    for (unsigned axis = 0; axis < 3; ++axis) {
        for (const float side : {0.0f, 1.0f}) {
            const auto first = static_cast<unsigned>(places.size());
            for (const auto& [a, b] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
                Triple place{};
                place[axis] = side * size;
                place[(axis + 1) % 3] = static_cast<float>(a) * size;
                place[(axis + 2) % 3] = static_cast<float>(b) * size;
                places.push_back(place);
                Triple normal{};
                normal[axis] = side > 0.0f ? 1.0f : -1.0f;
                normals.push_back(normal);
            }
            if (side > 0.0f) {
                faces.push_back({first, first + 1, first + 2});
                faces.push_back({first, first + 2, first + 3});
            } else {
                faces.push_back({first, first + 2, first + 1});
                faces.push_back({first, first + 3, first + 2});
            }
        }
    }
    aiMesh* mesh = maker.add_mesh(places, faces, shown_by);
    SceneMaker::set_normals(mesh, normals);
    return mesh;
}

// What an import made, its files written to a directory.
struct Imported {
    ImportResult result;
    TempDir dir;

    Imported(const aiScene& scene, const ImportOptions& options = {}, const std::string& format = "obj",
             const std::string& images = "") {
        ImportSource source{images.empty() ? "" : images + "/", format, "made"};
        result = import_scene(scene, source, options);
        for (const ImportedFile& file : result.files) { dir.write(file.name, file.content); }
    }

    OwnedModel load(const std::string& name = "made.mod") const {
        return OwnedModel(model_load(dir.file(name).c_str()));
    }
    bool has_loss(const std::string& part) const { return holds(result.losses, part); }
    bool has_note(const std::string& part) const { return holds(result.notes, part); }
    std::string losses() const {
        std::string all;
        for (const std::string& line : result.losses) { all += line + "\n"; }
        return all;
    }

private:
    static bool holds(const std::vector<std::string>& lines, const std::string& part) {
        return std::any_of(lines.begin(), lines.end(),
                           [&](const std::string& line) { return line.find(part) != std::string::npos; });
    }
};

inline ImportOptions at_scale(double scale) {
    ImportOptions options;
    options.scale = scale;
    return options;
}

inline const Layer* only_layer(const OwnedModel& model) {
    return model != nullptr && list_count(&model->layers) == 1
               ? static_cast<const Layer*>(list_at(&model->layers, 0, 1))
               : nullptr;
}

inline std::vector<Triangle> triangles_of(const Layer* layer) {
    std::vector<Triangle> all;
    if (layer != nullptr) {
        for (const Triangle& triangle : list_elements<Triangle>(layer->triangles)) { all.push_back(triangle); }
    }
    return all;
}

}  // namespace pelt::test
