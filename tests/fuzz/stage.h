// What the fuzz targets share: a directory made of the input, a scene with a window that draws on the recording OpenGL,
// and the tests that hold after every input whatever it was.
//
// An input that is a directory consists of files. Each begins behind a line "=== NAME"; what stands in front of the
// first such line belongs to the file "main.mod".
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "window/gl_window.h"

namespace pelt::fuzz {

struct File {
    std::string name;  // without any separator of directories
    std::string content;
};

std::vector<File> split_files(const uint8_t* data, size_t size);

// Empties the directory of this process, which is also its working directory, and writes the files. Its full path.
const std::string& stage_files(const std::vector<File>& files);

// Ends the process, as a finding, with the text.
[[noreturn]] void finding(const char* text);

// An application with an empty scene and a window of its own in a parent, as after the start of the library and
// "create window". The event procedure is that of the window. The handle is that of the parent.
WindowHandle scene_begin(WindowProc event = nullptr);

// Draws, and takes a mistake in the use of OpenGL for a finding.
void scene_draw_checked();

// Resets the scene; a record, a state or an image that is left is a finding. Then releases all that the application
// holds.
void scene_end();

}  // namespace pelt::fuzz
