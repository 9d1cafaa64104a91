// A whole file written in one go, so that nothing of a file that was there before is lost when it fails.
#pragma once

#include <cstddef>

namespace pelt {

// Puts this content under the name. 1 also when it could not be written: the file is then what it was, or not there
// when it was not there. 0 when the name cannot be opened for writing at all.
int file_replace(const char* path, const void* data, size_t size);

}  // namespace pelt
