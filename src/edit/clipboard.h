// What was copied out of a model, whole and by itself: it lasts when the model is gone. (The clipboard of the session
// is another thing, that of the verb "select".)
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "edit/faces.h"
#include "scene/session.h"

namespace pelt {

struct CopiedJoint {
    std::string name;
    std::string parent;
    Vec3 place;
};

struct CopiedPoint {
    int32_t id;    // in the model that it was copied from
    Point record;  // without joints
    std::string joint_a, joint_b;
};

struct CopiedLayer {
    Layer settings;                                     // without its lists
    bool whole;                                         // the layer was copied, and not faces of it
    std::array<std::string, LAYER_IMAGE_SLOTS> images;  // paths; empty for none
    float reflection;
    std::vector<Triangle> triangles;
    std::vector<std::vector<PolygonVertex>> polygons;
    std::vector<std::vector<int32_t>> lines;
    std::vector<Uvee> uvees;
};

struct Clipboard {
    bool has_normals;
    bool has_gouraud;
    std::vector<CopiedJoint> joints;  // each behind its parent
    std::vector<CopiedPoint> points;
    std::vector<CopiedLayer> layers;
};

struct CopyRequest {
    std::vector<int32_t> points;
    std::vector<PrimitiveName> primitives;
    std::vector<const Layer*> layers;
};

// Copies what is asked for, with the points, texture coordinates and joints that it needs. False, with the clipboard as
// it was, for a face that is none of the model or uses a point that is none.
bool edit_copy(const Model* model, const CopyRequest& wanted, Clipboard* clipboard, EditRefusal* refused);

struct PasteRequest {
    const Layer* layer;  // that takes all faces, null for one that is called like theirs
    Vec3 move;           // what is added to the places
    std::function<std::string(const std::string&)> absolute_path;
};

struct Pasted {
    std::vector<int32_t> points;      // their new ids, in the order in which they were copied
    std::vector<std::string> layers;  // that got something
    std::vector<PrimitiveName> primitives;
};

// Puts the contents of the clipboard into the model, and into all that were read from the same file: points under new
// ids, copied layers as new ones under names that are free, copied faces into the layer of their name, which is made
// where there is none. Joints are found by their names, and made where there are none of these.
bool edit_paste(Session* session, Model* model, const Clipboard& clipboard, const PasteRequest& wanted, Pasted* pasted,
                EditRefusal* refused);

}  // namespace pelt
