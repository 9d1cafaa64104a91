// Walks the scene: models with their placement, layers pass by pass, lines, child models. What is drawn how often, in
// which order and with which blend state is decided here and nowhere else. The surprise: OpenGL promises 32 matrices
// on its stack and no more, so that deep in a tree of children the matrix is read and loaded again instead of pushed.
#include "render/scene_draw.h"

#include <GL/gl.h>

#include "motion/drawn_patch.h"
#include "motion/transform_state.h"
#include "render/overlays.h"
#include "render/patch_draw.h"
#include "render/triangle_draw.h"

namespace pelt {

namespace {

constexpr float LAYER_COLOUR_SCALE = 0.007874f;  // 127 is full intensity

// Depth of the tree from which on the matrix stack is left alone. A level takes two entries; in front of them stand
// the first entry, that of the frame and that of the root, and a mirror may add one more: 3 + 2 * 13 + 1 entries.
constexpr int STACK_LEVELS = 14;

// Where the traversal stands: the model in hand and those above it.
struct Level {
    const Model* model;
    const Level* above;
    int depth;  // 0 for a root
};

// One matrix put aside, on the stack or, at depth, in a copy.
struct SavedMatrix {
    bool on_stack;
    float values[16];
};

void matrix_save(SavedMatrix* saved, int depth) {
    saved->on_stack = depth < STACK_LEVELS;
    if (saved->on_stack) {
        glPushMatrix();
    } else {
        glGetFloatv(GL_MODELVIEW_MATRIX, saved->values);
    }
}

void matrix_restore(const SavedMatrix* saved) {
    if (saved->on_stack) {
        glPopMatrix();
    } else {
        glLoadMatrixf(saved->values);
    }
}

// What the passes of a layer have in common.
struct LayerPass {
    Session* session;
    Model* model;
    Layer* layer;
    float alpha;
    bool textured;
};

float layer_alpha(const Session* session, const Layer* layer) {
    return session->display_transparency != 0 ? 1.0f - layer->transparency : 1.0f;
}

void layer_colour(const Layer* layer, float alpha) {
    glColor4f(static_cast<float>(layer->colour[0]) * LAYER_COLOUR_SCALE,
              static_cast<float>(layer->colour[1]) * LAYER_COLOUR_SCALE,
              static_cast<float>(layer->colour[2]) * LAYER_COLOUR_SCALE, alpha);
}

// A code beyond the three axes scales by 1: intended, the layer is then drawn twice in the same place.
void mirror_scale(const Layer* layer) {
    glScalef(layer->mirror_axis == AXIS_X ? -1.0f : 1.0f, layer->mirror_axis == AXIS_Y ? -1.0f : 1.0f,
             layer->mirror_axis == AXIS_Z ? -1.0f : 1.0f);
}

bool is_mirrored(const Session* session, const Layer* layer) {
    return session->display_mirror != 0 && layer->mirror != 0;
}

void layer_polygon_mode(const Session* session, const Layer* layer, GLenum mode) {
    if (layer->singlesided != 0 && mode == GL_FILL && session->display_backfaces == 0) {
        glPolygonMode(GL_FRONT, GL_FILL);
        glPolygonMode(GL_BACK, GL_LINE);
    } else {
        glPolygonMode(GL_FRONT_AND_BACK, mode);
    }
}

// Pixels have a fourth byte only where the colour key was known when they were loaded.
void upload_slot(const LayerPass& pass, const LayerImage* image, int slot) {
    const bool keyed = pass.layer->invisible != 0 && image->bytes_per_pixel[slot] == 4;
    layer_set_texture(pass.session, image->pixels[slot], image->width[slot], image->height[slot], keyed, pass.alpha);
}

int32_t base_pass(const LayerPass& pass, const LayerImage* image, bool mirrored) {
    if (pass.session->display_reflect != 0 && image != nullptr && image->reflection == 1.0f) { return 0; }
    return layer_draw(pass.session, pass.model, pass.layer, pass.alpha, pass.textured, mirrored, false);
}

// Draws the same surface once more with the reflection map; it counts nothing.
void reflection_pass(const LayerPass& pass, const LayerImage* image, bool mirrored) {
    if (pass.session->display_reflect == 0 || image == nullptr || !(image->reflection > 0.0f) ||
        image->pixels[IMAGE_SLOT_REFLECTION] == nullptr) {
        return;
    }
    layer_colour(pass.layer, pass.alpha * image->reflection);
    layer_set_texture(pass.session, image->pixels[IMAGE_SLOT_REFLECTION], image->width[IMAGE_SLOT_REFLECTION],
                      image->height[IMAGE_SLOT_REFLECTION], false, image->reflection);
    glEnable(GL_TEXTURE_2D);
    layer_draw(pass.session, pass.model, pass.layer, pass.alpha, true, mirrored, true);
    if (!pass.textured) { glDisable(GL_TEXTURE_2D); }
}

void set_base_texture(LayerPass* pass, const LayerImage* image) {
    if (pass->session->display_textures == 0) { return; }
    pass->textured = image != nullptr && image->pixels[IMAGE_SLOT_BASE] != nullptr;
    if (pass->textured) {
        upload_slot(*pass, image, IMAGE_SLOT_BASE);
        glEnable(GL_TEXTURE_2D);
    } else {
        glDisable(GL_TEXTURE_2D);
    }
}

int32_t mirrored_drawing(const LayerPass& pass, const LayerImage* image) {
    glPushMatrix();
    mirror_scale(pass.layer);
    layer_colour(pass.layer, pass.alpha);
    if (pass.textured) {
        const int slot = image->pixels[IMAGE_SLOT_MIRROR] != nullptr ? IMAGE_SLOT_MIRROR : IMAGE_SLOT_BASE;
        upload_slot(pass, image, slot);
    }
    const int32_t count = base_pass(pass, image, true);
    reflection_pass(pass, image, true);
    glPopMatrix();
    return count;
}

int32_t layer_passes(Session* session, Model* model, Layer* layer, GLenum mode) {
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    LayerPass pass{session, model, layer, layer_alpha(session, layer), false};
    layer_colour(layer, pass.alpha);
    if (pass.alpha > 0.0f) {
        glEnable(GL_BLEND);  // intended: for opaque layers too
    }
    layer_polygon_mode(session, layer, mode);
    int32_t count = 0;
    const auto images = list_elements<LayerImage>(layer->images);
    auto next = images.begin();
    while (true) {
        const LayerImage* image = next != images.end() ? &*next : nullptr;
        set_base_texture(&pass, image);
        count += base_pass(pass, image, false);
        reflection_pass(pass, image, false);
        // Intended: only a layer that is mirrored ever shows a second image.
        if (!is_mirrored(session, layer)) { return count; }
        count += mirrored_drawing(pass, image);
        if (session->display_textures == 0 || image == nullptr) { return count; }
        if (++next == images.end()) { return count; }
    }
}

void lines_pass(Session* session, Model* model, Layer* layer) {
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    layer_colour(layer, layer_alpha(session, layer));
    for (Line& line : list_elements<Line>(layer->lines)) {
        line_draw(session, model, &line);
        if (!is_mirrored(session, layer)) { continue; }
        glPushMatrix();
        mirror_scale(layer);
        line_draw(session, model, &line);
        glPopMatrix();
    }
}

// A borrowed link can lead back to a model that is being drawn.
bool is_drawing(const Level* level, const Model* model) {
    for (; level != nullptr; level = level->above) {
        if (level->model == model) { return true; }
    }
    return false;
}

int32_t model_draw_at(Session* session, Model* model, const Level* above);

int32_t children_draw(Session* session, Model* model, const Level* level) {
    int32_t count = 0;
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        const ChildState* state = child_state(session, &link);
        if (state == nullptr) { continue; }
        SavedMatrix saved;
        matrix_save(&saved, level->depth + 1);
        glMultMatrixf(state->gl_matrix.m);
        count += model_draw_at(session, link.model, level);
        matrix_restore(&saved);
    }
    return count;
}

int32_t model_draw_at(Session* session, Model* model, const Level* above) {
    const int depth = above == nullptr ? 0 : above->depth + 1;
    if (model == nullptr || depth > MODEL_TREE_DEPTH_LIMIT || is_drawing(above, model)) { return 0; }
    const Level level{model, above, depth};
    SavedMatrix saved;
    glMatrixMode(GL_MODELVIEW);
    matrix_save(&saved, depth);
    ModelState* state = model->state_index != -1 ? model_state(session, model) : nullptr;
    if (state != nullptr) {
        glMultMatrixf(state->gl_matrix.m);
        state->triangle_count = 0;
    }
    int32_t count = 0;
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_NORMALIZE);
    glShadeModel(GL_SMOOTH);
    if (session->display_points != 0) { points_draw(session, model); }
    if (session->display_skeleton != 0) { skeleton_draw(session, model); }
    const GLenum mode = session->display_wireframe != 0 ? GL_LINE : GL_FILL;
    if (session->display_lighting != 0) {
        glEnable(GL_LIGHTING);
    } else {
        glDisable(GL_LIGHTING);
    }
    if (session->display_triangles != 0) {
        for (Layer& layer : list_elements<Layer>(model->layers)) {
            if (layer.hidden == 0) { count += layer_passes(session, model, &layer, mode); }
        }
    }
    if (session->display_lines != 0) {
        for (Layer& layer : list_elements<Layer>(model->layers)) {
            if (layer.hidden == 0) { lines_pass(session, model, &layer); }
        }
    }
    if (state != nullptr) {
        state->triangle_count = count;  // intended: without the children
    }
    count += children_draw(session, model, &level);
    matrix_restore(&saved);
    return count;
}

}  // namespace

void scene_draw(Session* session) {
    session->triangles_drawn = 0;
    for (RootModel& root : list_elements<RootModel>(session->root_models)) {
        session->triangles_drawn += model_draw(session, root.model);
    }
}

int32_t model_draw(Session* session, Model* model) { return model_draw_at(session, model, nullptr); }

int32_t surface_draw(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored,
                     bool reflection) {
    switch (surface_form(session, triangle)) {
        case SurfaceForm::FILTERED: return triangle_draw_pn(session, model, triangle, textured, mirrored);
        case SurfaceForm::CURVED: return triangle_draw_curved(session, model, triangle, textured, mirrored, reflection);
        default: return triangle_draw(session, model, triangle, textured, mirrored, reflection);
    }
}

int32_t layer_draw(Session* session, Model* model, Layer* layer, float, bool textured, bool mirrored, bool reflection) {
    const bool normals = session->display_normals != 0;
    int32_t count = 0;
    for (Triangle& triangle : list_elements<Triangle>(layer->triangles)) {
        count += surface_draw(session, model, &triangle, textured, mirrored, reflection);
        if (normals) { triangle_normals_draw(session, model, &triangle); }
    }
    for (Polygon& polygon : list_elements<Polygon>(layer->polygons)) {
        count += polygon_draw(session, model, &polygon, textured, mirrored, reflection);
        if (normals) { polygon_normals_draw(session, model, &polygon); }
    }
    return count;
}

void layer_set_texture(Session* session, const unsigned char* texels, int32_t width, int32_t height, bool invisible,
                       float alpha) {
    const auto filter = static_cast<float>(session->display_smooth != 0 ? GL_LINEAR : GL_NEAREST);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    if (invisible && session->display_transparency != 0) {
        glEnable(GL_BLEND);
        glDepthMask(GL_TRUE);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    } else if (!invisible && alpha < 1.0f) {
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glDepthMask(GL_TRUE);
    } else {
        glDepthMask(GL_TRUE);
        glDisable(GL_BLEND);
    }
    glTexImage2D(GL_TEXTURE_2D, 0, 4, width, height, 0, invisible ? GL_RGBA : GL_RGB, GL_UNSIGNED_BYTE, texels);
}

}  // namespace pelt
