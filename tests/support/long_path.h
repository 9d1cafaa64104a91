// Directories of a chosen length, for what a model can keep of its path.
#pragma once

#include <string>

#include "support/temp_dir.h"

namespace pelt::test {

// A length that no record and no buffer of this library holds, and the system does.
inline constexpr size_t LONG_DIRECTORY = 3000;

// Makes a directory below this one whose whole path, with a separator at its end, has so many bytes. The result is its
// name from this one on, with the separator.
inline std::string directory_of_length(const TempDir& dir, size_t length) {
    constexpr size_t LONGEST = 110;
    std::string name;
    const size_t wanted = length - dir.path().size() - 2;  // the separators on both sides
    while (name.size() < wanted) {
        const size_t left = wanted - name.size();
        name += left > LONGEST ? std::string(LONGEST - 10, 'd') + "/" : std::string(left, 'e');
    }
    dir.make_dir(name);
    return name + "/";
}

}  // namespace pelt::test
