// Takes the corners of meshes into the numbers of the format, and their faces with them.
//
// What surprises: a quad comes as two triangles that begin with the same corner, which is how the library marks what it
// cut. They become one quad again, cut along the same diagonal.
#include "interchange/soup_making.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace pelt {

namespace {

constexpr float UV_STEPS = 100000.0f;
constexpr float LARGEST_UV = 100000.0f;
constexpr int32_t NO_PLACE = std::numeric_limits<int32_t>::min();
constexpr uint32_t NO_VERTEX = std::numeric_limits<uint32_t>::max();

struct MeshTaking {
    const MeshPlace* at;
    const SurfaceLook* look;
    int32_t look_number;
    double scale;
    bool mirrors;
    uint32_t first;  // vertex of the part that is the mesh's first
    SoupPart* part;
    LookBook* book;
};

std::array<int32_t, 3> whole_place(const MeshTaking& taking, const aiVector3D& v) {
    Place place = transformed(taking.at->placement, v);
    for (double& component : place) { component *= taking.scale; }
    if (!is_finite(place)) { return {NO_PLACE, NO_PLACE, NO_PLACE}; }
    std::array<int32_t, 3> whole{};
    for (size_t i = 0; i < whole.size(); ++i) {
        whole[i] = static_cast<int32_t>(std::llround(std::clamp(place[i], -2e9, 2e9)));
    }
    return whole;
}

std::array<float, 2> rounded_uv(const aiVector3D& uv) {
    const auto rounded = [](float value) {
        if (!std::isfinite(value)) { return 0.0f; }
        return std::round(std::clamp(value, -LARGEST_UV, LARGEST_UV) * UV_STEPS) / UV_STEPS + 0.0f;
    };
    return {rounded(uv.x), rounded(1.0f - uv.y)};
}

SoupVertex vertex_of(const MeshTaking& taking, unsigned number, int32_t skin) {
    const aiMesh& mesh = *taking.at->mesh;
    SoupVertex vertex{};
    vertex.place = whole_place(taking, mesh.mVertices[number]);
    if (mesh.mNormals != nullptr) {
        const Place normal = transformed_normal(taking.at->placement, mesh.mNormals[number]);
        for (size_t i = 0; i < normal.size(); ++i) {
            vertex.normal[i] = static_cast<int16_t>(std::lround(normal[i] * double{SOUP_NORMAL_SCALE}));
        }
    }
    if (taking.look->has_coordinates) { vertex.uv = rounded_uv(mesh.mTextureCoords[taking.look->uv_channel][number]); }
    const aiColor4D white(1.0f, 1.0f, 1.0f, 1.0f);
    vertex.colour = vertex_colour(*taking.look, mesh.mColors[0] != nullptr ? mesh.mColors[0][number] : white);
    vertex.skin = skin;
    return vertex;
}

bool has_own_colours(const aiMesh& mesh) {
    const aiColor4D white(1.0f, 1.0f, 1.0f, 1.0f);
    return mesh.mColors[0] != nullptr && std::any_of(mesh.mColors[0], mesh.mColors[0] + mesh.mNumVertices,
                                                     [&](const aiColor4D& colour) { return colour != white; });
}

// ---- faces ----

// Leaves out corners at the place of the one before. 0 corners for a face of which nothing is left.
SoupFace without_doubles(const SoupPart& part, const SoupFace& face) {
    SoupFace kept{face.look, 0, {}};
    const auto place = [&](uint32_t corner) { return part.vertices[corner].place; };
    const auto count = static_cast<size_t>(face.count);
    for (size_t i = 0; i < count; ++i) {
        const uint32_t before = face.corners[(i + count - 1) % count];
        if (place(face.corners[i]) != place(before)) {
            kept.corners[static_cast<size_t>(kept.count++)] = face.corners[i];
        }
    }
    const bool is_folded = kept.count == 4 && (place(kept.corners[0]) == place(kept.corners[2]) ||
                                               place(kept.corners[1]) == place(kept.corners[3]));
    const int32_t least = face.count == 2 ? 2 : 3;
    if (kept.count < least || is_folded) { kept.count = 0; }
    return kept;
}

bool had_area(const MeshTaking& taking, const SoupFace& face) {
    const auto source = [&](size_t i) { return taking.at->mesh->mVertices[face.corners[i] - taking.first]; };
    const auto count = static_cast<size_t>(face.count);
    for (size_t i = 0; i < count; ++i) {
        if (source(i) == source((i + 1) % count)) { return false; }
    }
    return true;
}

void add_face(const MeshTaking& taking, const SoupFace& face) {
    SoupPart& part = *taking.part;
    for (size_t i = 0; i < static_cast<size_t>(face.count); ++i) {
        if (part.vertices[face.corners[i]].place[0] == NO_PLACE) {
            taking.book->losses->add("faces with places that are no numbers left out");
            return;
        }
    }
    if (face.count == 1) {
        taking.book->losses->add("points without a face, which are seen only where points are shown");
        part.faces.push_back(face);
        return;
    }
    SoupFace kept = without_doubles(part, face);
    if (kept.count == 0) {
        if (had_area(taking, face)) {
            taking.book->losses->add("faces smaller than a unit left out (a larger --scale keeps them)");
        } else {
            taking.book->notes->add("faces without an area left out");
        }
        return;
    }
    if (taking.mirrors) { std::reverse(kept.corners.begin() + 1, kept.corners.begin() + kept.count); }
    part.faces.push_back(kept);
}

// Whether the two triangles are one quad that was cut.
bool are_one_quad(const aiFace& a, const aiFace& b) {
    return a.mNumIndices == 3 && b.mNumIndices == 3 && a.mIndices[0] == b.mIndices[0] &&
           a.mIndices[2] == b.mIndices[1] && a.mIndices[1] != b.mIndices[2];
}

void take_face(const MeshTaking& taking, const aiFace& face, uint32_t last) {
    const uint32_t first = taking.first;
    SoupFace taken{taking.look_number, 0, {}};
    for (unsigned i = 0; i < std::min(face.mNumIndices, 3U); ++i) {
        taken.corners[static_cast<size_t>(taken.count++)] = first + face.mIndices[i];
    }
    if (last != NO_VERTEX) { taken.corners[static_cast<size_t>(taken.count++)] = first + last; }
    add_face(taking, taken);
    // What the library did not cut stands round its first corner.
    for (unsigned i = 3; i < face.mNumIndices; ++i) {
        add_face(taking, {taking.look_number,
                          3,
                          {first + face.mIndices[0], first + face.mIndices[i - 1], first + face.mIndices[i], 0}});
    }
}

void take_faces(const MeshTaking& taking) {
    const aiMesh& mesh = *taking.at->mesh;
    for (unsigned i = 0; mesh.mNumFaces == 0 && i < mesh.mNumVertices; ++i) {  // a cloud of points
        add_face(taking, {taking.look_number, 1, {taking.first + i, 0, 0, 0}});
    }
    const bool marks_quads = (mesh.mPrimitiveTypes & aiPrimitiveType_NGONEncodingFlag) != 0;
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
        const aiFace& face = mesh.mFaces[i];
        if (face.mNumIndices == 0 || !face_is_sound(mesh, face)) {
            taking.book->losses->add("faces with corners that do not exist left out");
            continue;
        }
        const bool has_next = marks_quads && i + 1 < mesh.mNumFaces && face_is_sound(mesh, mesh.mFaces[i + 1]);
        const bool is_quad = has_next && are_one_quad(face, mesh.mFaces[i + 1]);
        take_face(taking, face, is_quad ? mesh.mFaces[++i].mIndices[2] : NO_VERTEX);
    }
}

// ---- meshes ----

void tell_losses(const MeshTaking& taking) {
    const aiMesh& mesh = *taking.at->mesh;
    const auto add = [&](bool is_lost, const char* text) {
        if (is_lost) { taking.book->losses->add(text); }
    };
    add(mesh.mNumAnimMeshes > 0, "meshes that lose the shapes they can blend to");
    add(mesh.mTextureCoords[0] != nullptr && mesh.mTextureCoords[1] != nullptr,
        "meshes that lose further texture coordinates");
    add(mesh.mColors[0] != nullptr && mesh.mColors[1] != nullptr, "meshes that lose further colours of vertices");
    const std::vector<SoupVertex>& vertices = taking.part->vertices;
    const bool leaves =
        taking.look->is_clamped &&
        std::any_of(vertices.begin() + taking.first, vertices.end(), [](const SoupVertex& vertex) {
            return std::min(vertex.uv[0], vertex.uv[1]) < 0.0f || std::max(vertex.uv[0], vertex.uv[1]) > 1.0f;
        });
    add(leaves, "meshes whose image repeats where it ended or was mirrored");
}

void take_mesh(const MeshPlace& at, double scale, LookBook& book, const std::vector<int32_t>& skins, SoupPart* part) {
    const int32_t look = look_of_mesh(book, *at.mesh);
    const MeshTaking taking{&at,
                            &book.looks[static_cast<size_t>(look)],
                            look,
                            scale,
                            placement_determinant(at.placement) < 0.0,
                            static_cast<uint32_t>(part->vertices.size()),
                            part,
                            &book};
    part->coloured = part->coloured || has_own_colours(*at.mesh);
    for (unsigned i = 0; i < at.mesh->mNumVertices; ++i) {
        part->vertices.push_back(vertex_of(taking, i, i < skins.size() ? skins[i] : NO_SKIN));
    }
    take_faces(taking);
    tell_losses(taking);
}

}  // namespace

std::vector<SoupPart> make_parts(const SourceScene& source, double scale, LookBook& book,
                                 const std::vector<std::vector<int32_t>>& skins, std::string* error) {
    int64_t faces = 0;
    for (const MeshPlace& at : source.places) { faces += at.mesh->mNumFaces; }
    if (faces > IMPORT_FACE_LIMIT) {
        *error = "it has " + std::to_string(faces) + " faces, more than " + std::to_string(IMPORT_FACE_LIMIT);
        return {};
    }
    std::vector<SoupPart> parts(source.unit_names.size());
    for (size_t i = 0; i < source.places.size(); ++i) {
        const MeshPlace& at = source.places[i];
        SoupPart& part = parts[static_cast<size_t>(at.unit)];
        part.name = source.unit_names[static_cast<size_t>(at.unit)];
        take_mesh(at, scale, book, i < skins.size() ? skins[i] : std::vector<int32_t>(), &part);
    }
    for (SoupPart& part : parts) { soup_compact(&part); }
    return parts;
}

}  // namespace pelt
