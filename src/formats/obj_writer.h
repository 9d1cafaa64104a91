// Export to the Wavefront text format: positions, faces and lines, without normals, texture coordinates, materials
// and child models.
#pragma once

#include <string>

namespace pelt {

struct Model;

inline constexpr int EXPORT_FORMAT_OBJ = 1;

// What model_write_obj returns for EXPORT_FORMAT_OBJ; 0, and no file, for any other format.
int model_export(const Model* model, int format, const char* path);

// Writes to the path with ".obj" put behind the dot of its extension, so that tree.mod becomes tree..obj. 1, or 0 for a
// null argument or a file that cannot be opened; whether all was written is not looked at.
int model_write_obj(const Model* model, const char* path);

// The same text in memory, empty for a null model; the file name only stands in the comment at its head.
std::string model_write_obj_text(const Model* model, const char* file_name);

}  // namespace pelt
