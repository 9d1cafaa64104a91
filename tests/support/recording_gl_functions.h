// Numbers of the recorded functions, as they stand in the records and in the packed form.
#pragma once

namespace recording_gl {

enum Function : int {
    BEGIN,
    END,
    VERTEX2F,
    VERTEX3F,
    NORMAL3F,
    TEX_COORD2F,
    COLOR3F,
    COLOR4F,
    EDGE_FLAG,
    MATRIX_MODE,
    LOAD_IDENTITY,
    LOAD_MATRIXF,
    MULT_MATRIXF,
    PUSH_MATRIX,
    POP_MATRIX,
    TRANSLATEF,
    ROTATEF,
    SCALEF,
    VIEWPORT,
    CLEAR,
    CLEAR_COLOR,
    FLUSH,
    ENABLE,
    DISABLE,
    SHADE_MODEL,
    DEPTH_FUNC,
    DEPTH_MASK,
    BLEND_FUNC,
    POLYGON_MODE,
    MATERIALFV,
    LIGHTFV,
    LIGHT_MODELF,
    COLOR_MATERIAL,
    TEX_ENVF,
    TEX_PARAMETERF,
    TEX_IMAGE2D,
    PIXEL_STOREI,
    RASTER_POS3F,
    BITMAP,
    READ_PIXELS,
    GET_FLOATV,
    GET_INTEGERV,
    GET_BOOLEANV,
    PUSH_ATTRIB,
    POP_ATTRIB,
    LINE_WIDTH,
    LINE_STIPPLE,
    POINT_SIZE,
    POLYGON_OFFSET,
    FUNCTION_COUNT
};

void forget_names();  // of pictures

}  // namespace recording_gl
