// The small animated scene that the targets for added lines and for animations begin with.
#pragma once

#include "fuzz/stage.h"

namespace pelt::fuzz {

inline std::vector<File> fixed_files() {
    return {
        {"body.mod",
         "joint hip 0 0 10 world 3\njoint arm 0 0 20 hip 2\nblend hip arm 2\npoints\n1 0 0 0 1\n2 10 0 0 1\n3 0 10 0 "
         "1\n"
         "4 10 10 0 1\n5 0 0 10 1\n6 10 0 10 0.5\n7 0 10 10 0.25\nnormals\n1 0 0 -1\n2 0 0 -1\n3 0 0 -1\n4 0 0 -1\n"
         "gouraud\n1 255 0 0 0\n2 0 255 0 9\nlayer skin 127 127 127 doublesided mirror x\ntransparency 0.5\n"
         "invisible 1 0 0\ntriangles\n0 1 2 3\n1 1 2 3 4\n2 1 2 3 4 5\n3 1 2 3 3\n4 1 2 3 4 4\nimage dot.tga x y\n"
         "lines\n2 1 2 3\nchild hat 1 2 3 1 1 1 0 z30 0\n"},
        {"hat.mod", "points\n1 0 0 0\n2 9 0 0\n3 0 9 0\nlayer top 9 9 9 singlesided\ntriangles\n0 1 2 3\n"},
        {"dot.tga", std::string("\0\0\2\0\0\0\0\0\0\0\0\0\1\0\1\0\30\0\1\2\3", 21)},
        {"fixed.scene", ". body.mod . run.clip world\n. hat.mod . hat.clip body.mod arm\n"},
        {"run.clip",
         "names translate rotate hip arm child0\n0.0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n"
         "1.0 5 0 0 0 0 z90 10 20 30 x1 0 0 0 0 0\n0.5 hat.clip\n"},
        {"hat.clip", "names translate\n0.0 0 0 0\n2.0 1 1 1\n"},
    };
}

}  // namespace pelt::fuzz
