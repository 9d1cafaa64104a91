// The registry of decoded images. Every layer of every model that uses a file shares one entry, which goes when the
// last of them gives its reference back; nothing else empties the registry, so that it outlives every scene.
//
// What surprises: an image has room for one colour key. The first one that is asked for is the key of all its users.
#include "images/image_registry.h"

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "foundation/file_access.h"
#include "foundation/file_find.h"
#include "foundation/key_hash.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "images/shared_pixels.h"

namespace pelt {

namespace {

// Console companions of an image: a header of which only a depth and the name of the palette file are looked at.
constexpr size_t PS2_HEADER_SIZE = 32;
constexpr size_t PS2_DEPTH_OFFSET = 4;
constexpr size_t PS2_PALETTE_NAME_OFFSET = 16;
constexpr int32_t PS2_DIRECT_COLOUR_DEPTH = 16;

constexpr int64_t RGB_BYTES = 3;
constexpr int64_t RGBA_BYTES = 4;

KeyedList registry;  // ImageData, KEY_INT
bool registry_ready = false;
int32_t next_image_id = 1;

// Ids by path: one model can name one file in thousands of spellings, and each is an image of its own. The keys are the
// paths of the entries themselves. Never destroyed: scripts may still run while the process ends.
using IdsByPath = std::unordered_map<std::string_view, int32_t, KeyHash>;
IdsByPath& ids_by_path() {
    static auto& ids = *new IdsByPath;
    return ids;
}

// The paths that are put aside while others are read beside them.
IdsByPath& ids_put_aside() {
    static auto& ids = *new IdsByPath;
    return ids;
}

// What is held of an image, and how often. The keyed pixels are those of when it was held last.
struct HeldImage {
    ImageData image;  // with a path, and users of the pixels, of its own
    int32_t slot;     // where it was registered
    int64_t holds;
};
using HeldImages = std::unordered_map<int32_t, HeldImage>;
HeldImages& held_images() {
    static auto& held = *new HeldImages;
    return held;
}

// Two images can have one path, and only one of them is found by it.
void forget_path(IdsByPath& ids, const ImageData* image) {
    const auto found = ids.find(image->path);
    if (found != ids.end() && found->second == image->id) { ids.erase(found); }
}

void set_up_registry() {
    if (!registry_ready) { registry_ready = list_init(&registry, sizeof(ImageData), KEY_INT) != 0; }
}

unsigned char* share(ImageData* image, int32_t* width, int32_t* height) {
    ++image->ref_count;
    *width = image->width;
    *height = image->height;
    return image->pixels;
}

int give_back(ImageData* image) {
    if (image == nullptr) { return 0; }
    if (--image->ref_count <= 0) {
        forget_path(ids_by_path(), image);
        forget_path(ids_put_aside(), image);
        str_free(image->path);
        shared_pixels_release_keyed(image->shared, image->keyed_pixels);
        shared_pixels_release(image->shared);
        list_remove(&registry, image->id);
    }
    return 1;
}

// A new entry without users, found by the path from now on. Takes over one use of the pixels.
ImageData* enter_image(const char* path, SharedPixels* shared) {
    auto* image = list_add<ImageData>(&registry, next_image_id);
    *image = ImageData{};
    image->path = str_dup(path);
    image->width = shared->width;
    image->height = shared->height;
    image->pixels = shared->pixels;
    image->shared = shared;
    image->id = next_image_id++;
    ids_by_path().erase(image->path);  // the key of another entry is that entry's text
    ids_by_path().emplace(image->path, image->id);
    return image;
}

// Whether the image has, or can get, this key, which is one use of the keyed pixels.
bool takes_key(const ImageData* image, const SharedPixels* shared, const unsigned char* keyed) {
    return image != nullptr && image->shared == shared &&
           (image->keyed_pixels == nullptr || image->keyed_pixels == keyed);
}

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, FileCloser>;

int32_t little_endian_int(const unsigned char* bytes) {
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i) { value = value << 8 | bytes[i]; }
    return static_cast<int32_t>(value);
}

bool has_ps2_files(const ImageData& image) {
    const std::string picture = path_set_extension(image.path, "p2i");
    const File file(file_stream_read(picture.c_str()));
    if (!file) {
        load_error_set_format("cannot find PS2 image file: %s", picture.c_str());
        return false;
    }
    unsigned char header[PS2_HEADER_SIZE];
    if (std::fread(header, sizeof header, 1, file.get()) != 1) {
        load_error_set_format("read failed PS2 image file: %s", picture.c_str());
        return false;
    }
    if (little_endian_int(header + PS2_DEPTH_OFFSET) >= PS2_DIRECT_COLOUR_DEPTH) { return true; }
    const char* name = reinterpret_cast<const char*>(header + PS2_PALETTE_NAME_OFFSET);
    const std::string bounded(name, PS2_HEADER_SIZE - PS2_PALETTE_NAME_OFFSET);
    const std::string palette = bounded.c_str();  // ends at the first zero byte
    if (!File(file_stream_read((palette + ".p2c").c_str()))) {
        load_error_set_format("cannot find PS2 colormap file: %s", palette.c_str());
        return false;
    }
    return true;
}

}  // namespace

unsigned char* image_load(const char* path, int32_t* width, int32_t* height) {
    if (path == nullptr || width == nullptr || height == nullptr) { return nullptr; }
    *width = 0;
    *height = 0;
    set_up_registry();
    if (ImageData* known = image_find(path)) { return share(known, width, height); }
    const char* error = nullptr;
    SharedPixels* shared = shared_pixels_read(path, &error);
    if (shared == nullptr) {
        load_error_set(error);
        return nullptr;
    }
    ImageData* image = enter_image(path, shared);
    return share(image, width, height);
}

int image_release(const char* path) { return give_back(image_find(path)); }

int image_release_id(int32_t id) { return give_back(image_find_id(id)); }

unsigned char* image_keyed(const char* path, int red, int green, int blue) {
    ImageData* image = image_find(path);
    if (image == nullptr) { return nullptr; }
    if (image->keyed_pixels != nullptr) { return image->keyed_pixels; }
    image->keyed_pixels = shared_pixels_keyed(image->shared, static_cast<unsigned char>(red),
                                              static_cast<unsigned char>(green), static_cast<unsigned char>(blue));
    return image->keyed_pixels;
}

ImageData* image_with_key(int32_t id, int red, int green, int blue) {
    ImageData* image = image_find_id(id);
    if (image == nullptr) { return nullptr; }
    SharedPixels* shared = image->shared;
    unsigned char* keyed = shared_pixels_keyed(shared, static_cast<unsigned char>(red),
                                               static_cast<unsigned char>(green), static_cast<unsigned char>(blue));
    if (keyed == nullptr) { return nullptr; }
    ImageData* found = image_find(image->path);
    ImageData* user = takes_key(image, shared, keyed) ? image : takes_key(found, shared, keyed) ? found : nullptr;
    if (user == nullptr) {
        ++shared->users;
        user = enter_image(image->path, shared);
    }
    if (user->keyed_pixels == nullptr) {
        user->keyed_pixels = keyed;
    } else {
        shared_pixels_release_keyed(shared, keyed);
    }
    ++user->ref_count;
    return user;
}

ImageData* image_find(const char* path) {
    if (path == nullptr) { return nullptr; }
    const auto found = ids_by_path().find(path);
    return found != ids_by_path().end() ? image_find_id(found->second) : nullptr;
}

ImageData* image_find_id(int32_t id) { return list_find<ImageData>(&registry, id); }

void image_paths_begin() {
    if (ids_put_aside().empty()) { ids_put_aside().swap(ids_by_path()); }
}

void image_paths_end(bool keep) {
    IdsByPath& former = ids_put_aside();
    if (!keep) { ids_by_path().clear(); }
    ids_by_path().merge(former);
    former.clear();
}

bool image_hold(int32_t id) {
    const ImageData* image = image_find_id(id);
    const auto found = held_images().find(id);
    if (image == nullptr && found == held_images().end()) { return false; }
    HeldImage& held = held_images()[id];
    ++held.holds;
    if (image == nullptr) { return true; }
    if (held.holds == 1) {
        held.image = *image;
        held.image.path = str_dup(image->path);
        held.image.shared = shared_pixels_use(image->shared);
        held.image.keyed_pixels = nullptr;
        held.slot = list_index_of(&registry, id, 0);
    }
    if (held.image.keyed_pixels == nullptr) {
        held.image.keyed_pixels = shared_pixels_use_keyed(image->shared, image->keyed_pixels);
    }
    return true;
}

void image_unhold(int32_t id) {
    const auto found = held_images().find(id);
    if (found == held_images().end() || --found->second.holds > 0) { return; }
    ImageData& image = found->second.image;
    str_free(image.path);
    shared_pixels_release_keyed(image.shared, image.keyed_pixels);
    shared_pixels_release(image.shared);
    held_images().erase(found);
}

bool image_restore(int32_t id) {
    if (ImageData* image = image_find_id(id)) {
        ++image->ref_count;
        return true;
    }
    const auto found = held_images().find(id);
    if (found == held_images().end()) { return false; }
    const HeldImage& held = found->second;
    auto* image = static_cast<ImageData*>(list_add_at(&registry, held.slot, id));
    if (image == nullptr) { image = list_add<ImageData>(&registry, id); }
    *image = held.image;
    image->path = str_dup(held.image.path);
    image->shared = shared_pixels_use(held.image.shared);
    image->keyed_pixels = shared_pixels_use_keyed(held.image.shared, held.image.keyed_pixels);
    image->ref_count = 1;
    ids_by_path().emplace(image->path, id);
    return true;
}

int64_t image_held_bytes() {
    std::unordered_map<const SharedPixels*, int32_t> holders;
    for (const auto& [id, held] : held_images()) { ++holders[held.image.shared]; }
    int64_t bytes = 0;
    for (const auto& [shared, count] : holders) {
        if (shared->users > count) { continue; }
        const int64_t pixels = int64_t{shared->width} * shared->height;
        bytes += pixels * RGB_BYTES + pixels * RGBA_BYTES * static_cast<int64_t>(shared->keyed.size());
    }
    return bytes;
}

const KeyedList* image_registry() { return &registry; }

int image_check_ps2_file(const ImageData* image) { return image != nullptr && has_ps2_files(*image) ? 1 : 0; }

int image_check_ps2_files() {
    for (const ImageData& image : list_elements<ImageData>(registry)) {
        if (!image_check_ps2_file(&image)) { return 0; }
    }
    return 1;
}

}  // namespace pelt
