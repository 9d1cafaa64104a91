// Makes packed calls again, out of their array. This is the floor that the frame benchmark is held against, so it does
// as little as it can for each call: one look at the number, then the call.
#include <GL/gl.h>

#include <bit>
#include <cstdlib>
#include <cstring>

#include "support/recording_gl.h"
#include "support/recording_gl_functions.h"

namespace recording_gl {
namespace {

float word_float(uint32_t word) { return std::bit_cast<float>(word); }

const void* word_pointer(const uint32_t* words) {
    return reinterpret_cast<const void*>(static_cast<uintptr_t>(words[0] | static_cast<uint64_t>(words[1]) << 32));
}

GLint word_int(uint32_t word) { return static_cast<GLint>(word); }

// The calls that make up nearly all of a frame, and among the rest those of matrices and state. Returns the number
// of words used.
size_t replay_vertex(uint32_t function, const uint32_t* w) {
    switch (function) {
        case VERTEX3F: glVertex3f(word_float(w[0]), word_float(w[1]), word_float(w[2])); return 3;
        case NORMAL3F: glNormal3f(word_float(w[0]), word_float(w[1]), word_float(w[2])); return 3;
        case TEX_COORD2F: glTexCoord2f(word_float(w[0]), word_float(w[1])); return 2;
        case COLOR4F: glColor4f(word_float(w[0]), word_float(w[1]), word_float(w[2]), word_float(w[3])); return 4;
        case COLOR3F: glColor3f(word_float(w[0]), word_float(w[1]), word_float(w[2])); return 3;
        case EDGE_FLAG: glEdgeFlag(static_cast<GLboolean>(w[0])); return 1;
        case BEGIN: glBegin(w[0]); return 1;
        case END: glEnd(); return 0;
        case VERTEX2F: glVertex2f(word_float(w[0]), word_float(w[1])); return 2;
        default: return SIZE_MAX;
    }
}

size_t replay_matrix(uint32_t function, const uint32_t* w) {
    float values[16];
    switch (function) {
        case MATRIX_MODE: glMatrixMode(w[0]); return 1;
        case LOAD_IDENTITY: glLoadIdentity(); return 0;
        case LOAD_MATRIXF:
            std::memcpy(values, w, sizeof values);
            glLoadMatrixf(values);
            return 16;
        case MULT_MATRIXF:
            std::memcpy(values, w, sizeof values);
            glMultMatrixf(values);
            return 16;
        case PUSH_MATRIX: glPushMatrix(); return 0;
        case POP_MATRIX: glPopMatrix(); return 0;
        case TRANSLATEF: glTranslatef(word_float(w[0]), word_float(w[1]), word_float(w[2])); return 3;
        case ROTATEF: glRotatef(word_float(w[0]), word_float(w[1]), word_float(w[2]), word_float(w[3])); return 4;
        case SCALEF: glScalef(word_float(w[0]), word_float(w[1]), word_float(w[2])); return 3;
        case VIEWPORT: glViewport(word_int(w[0]), word_int(w[1]), word_int(w[2]), word_int(w[3])); return 4;
        default: return SIZE_MAX;
    }
}

size_t replay_state(uint32_t function, const uint32_t* w) {
    float values[4];
    switch (function) {
        case CLEAR: glClear(w[0]); return 1;
        case CLEAR_COLOR:
            glClearColor(word_float(w[0]), word_float(w[1]), word_float(w[2]), word_float(w[3]));
            return 4;
        case FLUSH: glFlush(); return 0;
        case ENABLE: glEnable(w[0]); return 1;
        case DISABLE: glDisable(w[0]); return 1;
        case SHADE_MODEL: glShadeModel(w[0]); return 1;
        case DEPTH_FUNC: glDepthFunc(w[0]); return 1;
        case DEPTH_MASK: glDepthMask(static_cast<GLboolean>(w[0])); return 1;
        case BLEND_FUNC: glBlendFunc(w[0], w[1]); return 2;
        case POLYGON_MODE: glPolygonMode(w[0], w[1]); return 2;
        case MATERIALFV:
            std::memcpy(values, w + 2, sizeof values);
            glMaterialfv(w[0], w[1], values);
            return 6;
        case LIGHTFV:
            std::memcpy(values, w + 2, sizeof values);
            glLightfv(w[0], w[1], values);
            return 6;
        case LIGHT_MODELF: glLightModelf(w[0], word_float(w[1])); return 2;
        case COLOR_MATERIAL: glColorMaterial(w[0], w[1]); return 2;
        case TEX_ENVF: glTexEnvf(w[0], w[1], word_float(w[2])); return 3;
        case PUSH_ATTRIB: glPushAttrib(w[0]); return 1;
        case POP_ATTRIB: glPopAttrib(); return 0;
        case LINE_WIDTH: glLineWidth(word_float(w[0])); return 1;
        case LINE_STIPPLE: glLineStipple(word_int(w[0]), static_cast<GLushort>(w[1])); return 2;
        case POINT_SIZE: glPointSize(word_float(w[0])); return 1;
        case POLYGON_OFFSET: glPolygonOffset(word_float(w[0]), word_float(w[1])); return 2;
        case TEX_PARAMETERF: glTexParameterf(w[0], w[1], word_float(w[2])); return 3;
        default: return SIZE_MAX;
    }
}

size_t replay_picture(uint32_t function, const uint32_t* w) {
    float floats[16];
    int integers[16];
    unsigned char flags[16];
    switch (function) {
        case PIXEL_STOREI: glPixelStorei(w[0], word_int(w[1])); return 2;
        case TEX_IMAGE2D:
            glTexImage2D(w[0], word_int(w[1]), word_int(w[2]), word_int(w[3]), word_int(w[4]), word_int(w[5]), w[6],
                         w[7], word_pointer(w + 8));
            return 10;
        case RASTER_POS3F: glRasterPos3f(word_float(w[0]), word_float(w[1]), word_float(w[2])); return 3;
        case BITMAP:
            glBitmap(word_int(w[0]), word_int(w[1]), word_float(w[2]), word_float(w[3]), word_float(w[4]),
                     word_float(w[5]), static_cast<const GLubyte*>(word_pointer(w + 6)));
            return 8;
        case READ_PIXELS: return 6;  // has nowhere to write to
        case GET_FLOATV: glGetFloatv(w[0], floats); return 1;
        case GET_INTEGERV: glGetIntegerv(w[0], integers); return 1;
        case GET_BOOLEANV: glGetBooleanv(w[0], flags); return 1;
        default: return SIZE_MAX;
    }
}

}  // namespace

void replay(const Packed& words) {
    const uint32_t* w = words.data();
    const uint32_t* const end = w + words.size();
    while (w < end) {
        const uint32_t function = *w++;
        size_t used = replay_vertex(function, w);
        if (used == SIZE_MAX) { used = replay_matrix(function, w); }
        if (used == SIZE_MAX) { used = replay_state(function, w); }
        if (used == SIZE_MAX) { used = replay_picture(function, w); }
        if (used == SIZE_MAX) { std::abort(); }
        w += used;
    }
}

}  // namespace recording_gl
