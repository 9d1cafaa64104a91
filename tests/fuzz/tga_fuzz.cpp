// The bytes of an image file, read, shared, keyed by a colour and given back.
#include <cstdint>

#include "fuzz/stage.h"
#include "images/image_registry.h"
#include "images/tga.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace pelt;
    using namespace pelt::fuzz;
    stage_files({{"image.tga", std::string(reinterpret_cast<const char*>(data), size)}});
    const char* error = nullptr;
    TgaImage* image = tga_read("image.tga", &error);
    if ((image == nullptr) == (error == nullptr)) { finding("neither an image nor a reason, or both"); }
    if (image != nullptr && (image->width < 0 || image->height < 0)) { finding("a negative size"); }
    tga_free(image);

    int32_t width = -1, height = -1;
    if (image_load("image.tga", &width, &height) != nullptr) {
        const unsigned char* keyed = image_keyed("image.tga", size > 20 ? data[18] : 0, size > 20 ? data[19] : 0, 3);
        const int64_t pixels = int64_t{width} * height;
        // Each pixel there is has an alpha of one of two values.
        for (int64_t i = 0; keyed != nullptr && i < pixels; ++i) {
            if (keyed[4 * i + 3] != 0 && keyed[4 * i + 3] != 255) { finding("an alpha between the two"); }
        }
        image_release("image.tga");
    }
    if (list_count(image_registry()) != 0) { finding("an image is left"); }
    return 0;
}
