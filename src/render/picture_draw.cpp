// The scene as a picture. What surprises: a picture is drawn in tiles when it is larger than what can be drawn at once,
// and the tiles join without a seam because each is cut out of the viewport of the whole picture; only where no driver
// has so large a viewport does a tile get one of its own. And a pixel of several samples is not read but copied into a
// texture first, because a driver may hand out one of its samples instead of their mean.
#include "render/picture_draw.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>

#include "render/frame.h"

namespace pelt {

namespace {

constexpr int32_t TILE_SIZE = 4096;
constexpr int32_t TILE_SIZE_MIN = 64;
constexpr int64_t TILE_BYTES = int64_t{1} << 28;
constexpr int64_t BYTES_PER_SAMPLE = 8;  // colour and depth
constexpr int32_t PANEL_MARGIN = 64;     // pixels, so that what reaches into a tile from outside it is drawn
constexpr int32_t READ_CHANNELS = 4;
constexpr GLenum SAMPLES_OF_BUFFER = 0x80A9;  // GL_SAMPLES, which is later than OpenGL 1.1

struct Rectangle {
    int32_t x, y;  // lower left
    int32_t width, height;
};

// All there is to one picture while it is made. Fine pixels are those that are drawn.
struct Drawing {
    PictureWish wish;
    ViewState view;         // of the whole picture
    int32_t width, height;  // fine
    int32_t tile_width, tile_height;
    int32_t viewport_max_width, viewport_max_height;
    PictureMemory on_black{nullptr, &std::free};  // a tile as it was read
    PictureMemory on_white{nullptr, &std::free};
};

// The view of the picture: as much of the world as the window shows fits into it.
ViewState view_of_picture(const ViewState& view, int32_t width, int32_t height) {
    const double across = static_cast<double>(width) / view.width;
    const double up = static_cast<double>(height) / view.height;
    const double scale = std::min(across, up);
    ViewState result = view;
    result.extent_x = view_scaled_extent(view.extent_x, static_cast<float>(across / scale));
    result.extent_y = view_scaled_extent(view.extent_y, static_cast<float>(up / scale));
    result.width = width;
    result.height = height;
    result.fixed_size = 0;
    result.resize_due = 0;
    return result;
}

// The largest multiple of the supersampling, so that a tile has whole pixels of the picture.
int32_t whole_pixels(int32_t size, int32_t supersample) { return size / supersample * supersample; }

void plan_tiles(Drawing* drawing, int32_t width, int32_t height) {
    drawing->tile_width = whole_pixels(std::min(drawing->width, width), drawing->wish.supersample);
    drawing->tile_height = whole_pixels(std::min(drawing->height, height), drawing->wish.supersample);
}

bool has_tiles(const Drawing& drawing) { return drawing.tile_width > 0 && drawing.tile_height > 0; }

// An area of its own, as large as there is memory for.
bool begin_area(Drawing* drawing, WindowHandle window) {
    int32_t width = TILE_SIZE, height = TILE_SIZE;
    gl_window_clamp_size(window, &width, &height);
    for (int32_t size = std::min(width, height); size >= TILE_SIZE_MIN; size /= 2) {
        plan_tiles(drawing, size, size);
        const int64_t bytes =
            int64_t{drawing->tile_width} * drawing->tile_height * BYTES_PER_SAMPLE * std::max(drawing->wish.samples, 1);
        if (bytes > TILE_BYTES && size / 2 >= TILE_SIZE_MIN) { continue; }
        if (gl_picture_begin(window, drawing->tile_width, drawing->tile_height, drawing->wish.samples)) { return true; }
    }
    return false;
}

// Behind the window, in its own size.
bool begin_behind(Drawing* drawing, WindowHandle window) {
    int32_t x = 0, y = 0, width = 0, height = 0;
    gl_window_geometry(window, &x, &y, &width, &height);
    plan_tiles(drawing, width, height);
    return has_tiles(*drawing);
}

// The viewport of the whole picture where the driver has such, else one around the tile, and the view that belongs to
// it.
ViewState place_viewport(const Drawing& drawing, const Rectangle& tile) {
    ViewState view = drawing.view;
    if (drawing.width <= drawing.viewport_max_width && drawing.height <= drawing.viewport_max_height) {
        glViewport(-tile.x, -tile.y, drawing.width, drawing.height);
        return view;
    }
    const int32_t width = tile.width + 2 * PANEL_MARGIN;
    const int32_t height = tile.height + 2 * PANEL_MARGIN;
    glViewport(-PANEL_MARGIN, -PANEL_MARGIN, width, height);
    // From the middle of the picture to that of the panel, in halves of the picture.
    const double x = (2.0 * tile.x + tile.width) / drawing.width - 1.0;
    const double y = (2.0 * tile.y + tile.height) / drawing.height - 1.0;
    constexpr double EXTENT_TO_HALF_SIZE = 0.25;
    const double half_size = EXTENT_TO_HALF_SIZE * static_cast<double>(view.zoom);
    view.pan_x = static_cast<float>(view.pan_x + x * half_size * static_cast<double>(view.extent_x));
    view.pan_y = static_cast<float>(view.pan_y + y * half_size * static_cast<double>(view.extent_y));
    view.extent_x = static_cast<float>(static_cast<double>(view.extent_x) * width / drawing.width);
    view.extent_y = static_cast<float>(static_cast<double>(view.extent_y) * height / drawing.height);
    view.width = width;
    view.height = height;
    return view;
}

// The means of the samples.
void read_through_texture(const Rectangle& tile, uint8_t* pixels) {
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, tile.width, tile.height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, tile.width, tile.height);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteTextures(1, &texture);
}

void draw_tile(const ViewState& view, const float (&background)[3], const Rectangle& tile, uint8_t* pixels) {
    glClearColor(background[0], background[1], background[2], 0.0f);
    frame_draw_as(view);
    GLint samples = 0;
    glGetIntegerv(SAMPLES_OF_BUFFER, &samples);
    if (samples > 1) {
        read_through_texture(tile, pixels);
    } else {
        glReadPixels(0, 0, tile.width, tile.height, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    }
}

struct Sums {
    uint32_t on_black[3];
    uint32_t on_white[3];
};

// Of the fine pixels of one pixel.
Sums add_up(const Drawing& drawing, const Rectangle& tile, int32_t x, int32_t y) {
    Sums sums{};
    const int32_t side = drawing.wish.supersample;
    for (int32_t row = y * side; row < (y + 1) * side; ++row) {
        const size_t start = (static_cast<size_t>(row) * static_cast<size_t>(tile.width) +
                              static_cast<size_t>(x) * static_cast<size_t>(side)) *
                             READ_CHANNELS;
        const size_t end = start + static_cast<size_t>(side) * READ_CHANNELS;
        for (size_t at = start; at < end; at += READ_CHANNELS) {
            for (size_t channel = 0; channel < 3; ++channel) {
                sums.on_black[channel] += drawing.on_black[at + channel];
                if (drawing.on_white != nullptr) { sums.on_white[channel] += drawing.on_white[at + channel]; }
            }
        }
    }
    return sums;
}

uint8_t rounded(double value) { return static_cast<uint8_t>(std::clamp(std::lround(value), 0L, 255L)); }

// What is the same on black and on white is opaque, and what differs by all of it is not there.
void put_transparent(const Sums& sums, uint32_t count, uint8_t* to) {
    double difference = 0.0;
    for (size_t channel = 0; channel < 3; ++channel) {
        difference += static_cast<double>(sums.on_white[channel]) - sums.on_black[channel];
    }
    const double alpha = std::clamp(1.0 - difference / (3.0 * 255.0 * count), 0.0, 1.0);
    to[3] = rounded(255.0 * alpha);
    for (size_t channel = 0; channel < 3; ++channel) {
        to[channel] = to[3] == 0 ? 0 : rounded(sums.on_black[channel] / (alpha * count));
    }
}

// The tile that was read takes its place in the picture.
void put_tile(const Drawing& drawing, const Rectangle& tile, Picture* picture) {
    const int32_t side = drawing.wish.supersample;
    const auto count = static_cast<uint32_t>(side * side);
    const int32_t columns = tile.width / side;
    for (int32_t y = 0; y < tile.height / side; ++y) {
        uint8_t* to = picture->row(picture->height - 1 - (tile.y / side + y)) +
                      static_cast<size_t>(tile.x / side) * static_cast<size_t>(picture->channels);
        if (side == 1 && drawing.on_white == nullptr) {
            const uint8_t* from =
                &drawing.on_black[static_cast<size_t>(y) * static_cast<size_t>(columns) * READ_CHANNELS];
            for (int32_t x = 0; x < columns; ++x, from += READ_CHANNELS, to += 3) {
                to[0] = from[0];
                to[1] = from[1];
                to[2] = from[2];
            }
            continue;
        }
        for (int32_t x = 0; x < columns; ++x, to += picture->channels) {
            const Sums sums = add_up(drawing, tile, x, y);
            if (drawing.on_white != nullptr) {
                put_transparent(sums, count, to);
            } else {
                for (size_t i = 0; i < 3; ++i) { to[i] = static_cast<uint8_t>((sums.on_black[i] + count / 2) / count); }
            }
        }
    }
}

bool make_tile_memory(Drawing* drawing) {
    const size_t size = static_cast<size_t>(drawing->tile_width) * static_cast<size_t>(drawing->tile_height) *
                        static_cast<size_t>(READ_CHANNELS);
    drawing->on_black = picture_memory(size);
    if (drawing->wish.transparent) { drawing->on_white = picture_memory(size); }
    return drawing->on_black != nullptr && (!drawing->wish.transparent || drawing->on_white != nullptr);
}

void draw_tiles(const Drawing& drawing, Picture* picture) {
    static constexpr float BLACK[3] = {0.0f, 0.0f, 0.0f};
    static constexpr float WHITE[3] = {1.0f, 1.0f, 1.0f};
    for (int32_t y = 0; y < drawing.height; y += drawing.tile_height) {
        for (int32_t x = 0; x < drawing.width; x += drawing.tile_width) {
            const Rectangle tile{x, y, std::min(drawing.tile_width, drawing.width - x),
                                 std::min(drawing.tile_height, drawing.height - y)};
            const ViewState view = place_viewport(drawing, tile);
            const bool transparent = drawing.wish.transparent;
            draw_tile(view, transparent ? BLACK : drawing.view.background, tile, drawing.on_black.get());
            if (transparent) { draw_tile(view, WHITE, tile, drawing.on_white.get()); }
            put_tile(drawing, tile, picture);
        }
    }
}

// The context goes back to what the window shows. What was drawn behind it has spoiled what a capture reads.
void end_drawing(const ViewState& view, bool behind) {
    if (!behind) { gl_picture_end(view.window); }
    glViewport(0, 0, view.width, view.height);
    glClearColor(view.background[0], view.background[1], view.background[2], 0.0f);
    if (behind) { frame_draw_unswapped(); }
    view_load_projection(&view);
}

}  // namespace

bool picture_draw(const PictureWish& wish, Picture* picture, std::string* failure) {
    const ViewState view = *frame_view();
    Drawing drawing{};
    drawing.wish = wish;
    if (drawing.wish.width == 0) {
        drawing.wish.width = view.width;
        drawing.wish.height = view.height;
    }
    drawing.width = drawing.wish.width * wish.supersample;
    drawing.height = drawing.wish.height * wish.supersample;
    drawing.view = view_of_picture(view, drawing.width, drawing.height);
    GLint limits[2] = {0, 0};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, limits);
    drawing.viewport_max_width = limits[0];
    drawing.viewport_max_height = limits[1];

    const bool behind = !gl_has_picture_areas(view.window);
    if (behind ? !begin_behind(&drawing, view.window) : !begin_area(&drawing, view.window)) {
        *failure = behind ? "the window is too small to draw a picture behind it" : "the driver has no memory for it";
        return false;
    }
    const bool made = make_tile_memory(&drawing) &&
                      picture_make(drawing.wish.width, drawing.wish.height, wish.transparent ? 4 : 3, picture);
    if (made) { draw_tiles(drawing, picture); }
    end_drawing(view, behind);
    if (!made) { *failure = "no memory for the picture"; }
    return made;
}

}  // namespace pelt
