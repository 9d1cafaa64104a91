// Memory of pictures: what a caller asks for may be more than there is, so that all of it can be refused.
#include "images/picture.h"

namespace pelt {

PictureMemory picture_memory(size_t size) { return {static_cast<uint8_t*>(std::calloc(size, 1)), &std::free}; }

bool picture_make(int32_t width, int32_t height, int32_t channels, Picture* picture) {
    picture->width = width;
    picture->height = height;
    picture->channels = channels;
    picture->pixels = picture_memory(picture->row_size() * static_cast<size_t>(height));
    return picture->pixels != nullptr;
}

}  // namespace pelt
