// Pictures on their way into files. One at a time is compressed and written, beside whatever the program does
// meanwhile, in the order in which they were handed over.
#pragma once

#include <cstdint>
#include <string>

#include "foundation/load_error.h"
#include "images/picture.h"

namespace pelt {

struct PictureOrder {
    std::string path;
    Picture picture;
    bool png;     // else TGA
    int32_t dpi;  // 0 for none; of a PNG alone
};

// How the writing of a file ended; the kind is empty when all is well, else a word of problem.h.
struct PictureOutcome {
    std::string kind;
    LoadFailure failure;
    size_t size = 0;  // of the file
};

// Writes at once, behind all that was handed over before.
PictureOutcome picture_write(const PictureOrder& order);

// Takes the picture over and returns; it waits while several are on their way, so that their memory stays bounded.
void picture_write_later(PictureOrder&& order);

// Waits for all of them. The first that failed since the last such call, else an outcome without a kind; the number of
// files written since then.
PictureOutcome picture_write_finish(int32_t* written);

}  // namespace pelt
