// One model can name one file in as many spellings as it has lines; what they share is here.
//
// What surprises: the same file with the same size and times need not hold the same bytes, because the times of a file
// move in steps, and two changes can fall into one. So a file that changed a moment ago is read again, and what came
// out decides whether its pixels are shared.
#include "images/shared_pixels.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "images/tga.h"

namespace pelt {

namespace {

constexpr size_t PIXEL_SIZE = 3;
constexpr size_t KEYED_PIXEL_SIZE = 4;
constexpr unsigned char ALPHA_OPAQUE = 255;

using FileNumber = std::pair<uint64_t, uint64_t>;
using PixelsByFile = std::multimap<FileNumber, SharedPixels>;

// Never destroyed: scripts may still run while the process ends.
PixelsByFile& pixels_by_file() {
    static auto& pixels = *new PixelsByFile;
    return pixels;
}

FileNumber number_of(const FileIdentity& identity) { return {identity.device, identity.file}; }

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
struct ImageFreer {
    void operator()(TgaImage* image) const { tga_free(image); }
};

size_t pixel_count(int32_t width, int32_t height) { return static_cast<size_t>(width) * static_cast<size_t>(height); }

bool same_state(const FileIdentity& kept, const FileIdentity& now) {
    return kept.settled && kept.size == now.size && kept.modified == now.modified && kept.changed == now.changed;
}

bool same_picture(const SharedPixels& kept, const TgaImage& image) {
    return kept.width == image.width && kept.height == image.height &&
           std::memcmp(kept.pixels, image.pixels, pixel_count(image.width, image.height) * PIXEL_SIZE) == 0;
}

// The pixels of the file for which the test is true, with one more user; null when there are none.
template <typename Test>
SharedPixels* share(const FileIdentity& identity, Test test) {
    const auto [first, last] = pixels_by_file().equal_range(number_of(identity));
    for (auto entry = first; entry != last; ++entry) {
        if (test(entry->second)) {
            ++entry->second.users;
            return &entry->second;
        }
    }
    return nullptr;
}

uint32_t colour_of(unsigned char red, unsigned char green, unsigned char blue) {
    return static_cast<uint32_t>(red) << 16 | static_cast<uint32_t>(green) << 8 | blue;
}

unsigned char* make_keyed(const SharedPixels& shared, const unsigned char (&key)[PIXEL_SIZE]) {
    const size_t count = pixel_count(shared.width, shared.height);
    auto* keyed = static_cast<unsigned char*>(std::malloc(count * KEYED_PIXEL_SIZE + 1));
    if (keyed == nullptr) { return nullptr; }
    const unsigned char* from = shared.pixels;
    unsigned char* to = keyed;
    for (size_t i = 0; i < count; ++i, from += PIXEL_SIZE, to += KEYED_PIXEL_SIZE) {
        std::memcpy(to, from, PIXEL_SIZE);
        to[PIXEL_SIZE] = std::memcmp(from, key, PIXEL_SIZE) == 0 ? 0 : ALPHA_OPAQUE;
    }
    return keyed;
}

}  // namespace

SharedPixels* shared_pixels_read(const char* path, const char** error) {
    const std::unique_ptr<std::FILE, FileCloser> file(file_stream_read(path));
    FileIdentity identity{};
    const bool is_known = file != nullptr && file_stream_identity(file.get(), &identity);
    const auto is_same_state = [&](const SharedPixels& kept) { return same_state(kept.identity, identity); };
    if (SharedPixels* kept = is_known ? share(identity, is_same_state) : nullptr) { return kept; }
    const std::unique_ptr<TgaImage, ImageFreer> image(tga_read_stream(file.get(), path, error));
    if (image == nullptr) { return nullptr; }
    const auto is_same_picture = [&](const SharedPixels& kept) { return same_picture(kept, *image); };
    if (SharedPixels* kept = is_known ? share(identity, is_same_picture) : nullptr) {
        kept->identity = identity;
        return kept;
    }
    SharedPixels shared{identity, image->width, image->height, std::exchange(image->pixels, nullptr), 1, {}};
    return &pixels_by_file().emplace(number_of(identity), std::move(shared))->second;
}

SharedPixels* shared_pixels_use(SharedPixels* shared) {
    ++shared->users;
    return shared;
}

unsigned char* shared_pixels_use_keyed(SharedPixels* shared, unsigned char* bytes) {
    for (auto& [colour, keyed] : shared->keyed) {
        if (keyed.bytes == bytes) { ++keyed.users; }
    }
    return bytes;
}

void shared_pixels_release(SharedPixels* shared) {
    if (shared == nullptr || --shared->users > 0) { return; }
    const auto [first, last] = pixels_by_file().equal_range(number_of(shared->identity));
    for (auto entry = first; entry != last; ++entry) {
        if (&entry->second == shared) {
            std::free(shared->pixels);
            pixels_by_file().erase(entry);
            return;
        }
    }
}

unsigned char* shared_pixels_keyed(SharedPixels* shared, unsigned char red, unsigned char green, unsigned char blue) {
    KeyedPixels& keyed = shared->keyed[colour_of(red, green, blue)];
    if (keyed.users == 0) {
        keyed.bytes = make_keyed(*shared, {red, green, blue});
        if (keyed.bytes == nullptr) {
            shared->keyed.erase(colour_of(red, green, blue));
            return nullptr;
        }
    }
    ++keyed.users;
    return keyed.bytes;
}

void shared_pixels_release_keyed(SharedPixels* shared, const unsigned char* bytes) {
    for (auto keyed = shared->keyed.begin(); keyed != shared->keyed.end(); ++keyed) {
        if (keyed->second.bytes == bytes) {
            if (--keyed->second.users == 0) {
                std::free(keyed->second.bytes);
                shared->keyed.erase(keyed);
            }
            return;
        }
    }
}

}  // namespace pelt
