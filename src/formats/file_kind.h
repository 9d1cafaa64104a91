// Tells the text files from each other by what is in them: their names say nothing.
#pragma once

namespace pelt {

enum FileKind {
    FILE_KIND_MISSING,  // there is no regular file that can be read
    FILE_KIND_MODEL,    // a line that begins with a keyword of models, or no line at all
    FILE_KIND_SCENE,    // a row of a scene list: two words or more, the second of which names a model file
    FILE_KIND_OTHER,
};

// What the first line that is one or the other says.
FileKind file_kind(const char* path);

}  // namespace pelt
