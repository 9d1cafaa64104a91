// Decoded images, shared by path and counted. The registry lives as long as the process and is independent of the
// scene: an image goes when its last user gives it back. Images whose paths lead to one file have their pixels in
// common.
#pragma once

#include <cstdint>

#include "foundation/keyed_list.h"

namespace pelt {

struct SharedPixels;

struct ImageData {
    char* path;  // heap text: the identity of the image
    int32_t width;
    int32_t height;
    unsigned char* pixels;        // 3 bytes a pixel, red, green, blue, rows without padding
    unsigned char* keyed_pixels;  // null, or 4 bytes a pixel made by image_keyed
    SharedPixels* shared;         // what holds both
    int32_t ref_count;
    int32_t id;
};

// Pixels of the image, read on first use, with one more reference. Null on failure, with the load error set and both
// outputs 0.
unsigned char* image_load(const char* path, int32_t* width, int32_t* height);

// Gives back one reference. 1 when the image was registered, else 0.
int image_release(const char* path);
int image_release_id(int32_t id);

// Pixels with alpha 0 where the colour equals the key and 255 elsewhere; the first key ever asked for stays. Null for
// a path that is not registered.
unsigned char* image_keyed(const char* path, int red, int green, int blue);

// An image of the same path and pixels as that of the id, whose key is this colour, with one more reference: that one
// or the one that is found by the path, where either has this key or none yet; otherwise a new one, which is found by
// the path from then on. No file is looked at. Null for an unknown id, and without memory for the pixels.
ImageData* image_with_key(int32_t id, int red, int green, int blue);

ImageData* image_find(const char* path);
ImageData* image_find_id(int32_t id);

// Between the two calls no image is found by its path that was registered before, so that files are looked at afresh.
// With keep set the new ones are found from then on, and the former ones where there is no new one of the same path;
// without it the new ones are not found any more. What was loaded stays, either way, with those who use it.
void image_paths_begin();
void image_paths_end(bool keep);

// Holding, for whoever may put a reference back that was given back. A held image can be restored under its id with its
// pixels where they were; it counts as no reference, and when the last of these goes the image is registered and found
// no more. Each hold that was granted (true) is to be given back.
bool image_hold(int32_t id);
void image_unhold(int32_t id);

// One more reference to an image that is registered or held, by its id. False when it is neither.
bool image_restore(int32_t id);

// Bytes of the pixels that are there for holds alone.
int64_t image_held_bytes();

// All registered images, in the order of their slots.
const KeyedList* image_registry();

// 1 when every registered image has its console companions (.p2i, and .p2c for a palette); else 0 with the load
// error set for the first one that has not.
int image_check_ps2_files();

// The same for one image.
int image_check_ps2_file(const ImageData* image);

}  // namespace pelt
