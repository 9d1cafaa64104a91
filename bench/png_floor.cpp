// What writing a picture as PNG costs and weighs, against libpng at its lowest level with its default filters. Reads
// the picture from a TGA of 24 bits without an id.
//   png_floor TGA
#include <png.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include "bench/report.h"
#include "images/picture_files.h"

namespace {

using pelt::Picture;
using pelt::PictureFile;

constexpr int ROUNDS = 15;

bool read_tga(const char* path, Picture* picture) {
    std::FILE* file = std::fopen(path, "rb");
    unsigned char header[18];
    bool read = file != nullptr && std::fread(header, 1, sizeof header, file) == sizeof header;
    read = read && pelt::picture_make(header[12] | header[13] << 8, header[14] | header[15] << 8, 3, picture);
    for (int32_t y = picture->height - 1; read && y >= 0; --y) {
        read = std::fread(picture->row(y), 1, picture->row_size(), file) == picture->row_size();
    }
    if (file != nullptr) { std::fclose(file); }
    return read;
}

void append(png_structp writer, png_bytep bytes, size_t size) {
    auto* file = static_cast<std::vector<unsigned char>*>(png_get_io_ptr(writer));
    file->insert(file->end(), bytes, bytes + size);
}

size_t write_plainly(const Picture& picture) {
    std::vector<unsigned char> file;
    png_structp writer = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(writer);
    png_set_write_fn(writer, &file, append, nullptr);
    png_set_IHDR(writer, info, static_cast<unsigned>(picture.width), static_cast<unsigned>(picture.height), 8,
                 PNG_COLOR_TYPE_RGB, 0, 0, 0);
    png_set_compression_level(writer, 1);
    png_write_info(writer, info);
    for (int32_t y = 0; y < picture.height; ++y) { png_write_row(writer, picture.row(y)); }
    png_write_end(writer, info);
    png_destroy_write_struct(&writer, &info);
    return file.size();
}

size_t write_ours(const Picture& picture) {
    PictureFile file;
    std::string failure;
    return pelt::picture_to_png(picture, 0, &file, &failure) ? file.size : 0;
}

template <typename Write>
double milliseconds(const Picture& picture, Write write) {
    const double start = bench::processor_seconds();
    write(picture);
    return 1000.0 * (bench::processor_seconds() - start);
}

}  // namespace

int main(int argc, char** argv) {
    Picture picture;
    if (argc != 2 || !read_tga(argv[1], &picture) || write_ours(picture) == 0) { return 2; }
    double ours = 1e9, plain = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        ours = std::min(ours, milliseconds(picture, write_ours));
        plain = std::min(plain, milliseconds(picture, write_plainly));
    }
    const double our_size = 1e-3 * static_cast<double>(write_ours(picture));
    const double plain_size = 1e-3 * static_cast<double>(write_plainly(picture));
    constexpr char AGAINST[] = "libpng, level 1, default filters";
    const bool quick = bench::row("PNG of 1920 x 1080", AGAINST, ours, plain, "ms", 0.6);
    const bool small = bench::row("PNG of 1920 x 1080, its size", AGAINST, our_size, plain_size, "kB", 1.02);
    return quick && small ? 0 : 1;
}
