// A whole file written in one go, so that nothing of a file that was there before is lost when it fails.
#pragma once

#include <cstddef>
#include <string>

namespace pelt {

// How the writing of a whole file ended.
struct FileReplacement {
    bool opened;         // whether the name can be written to at all
    int error;           // 0 when all of the content stands under the name, else an error number as in errno
    std::string former;  // the file with the former content, when that could not be put back; else empty
};

// Puts this content under the name, and on the disk. Other names of the file, the link that leads to it, its owner,
// group, permissions, access list and attributes stay. On failure a file that was there is what it was, and none is
// there where there was none.
FileReplacement file_replace(const char* path, const void* data, size_t size);

}  // namespace pelt
