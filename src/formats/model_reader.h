// Reader of the .mod text format.
#pragma once

namespace pelt {

struct Model;

// A new root model with all its children, or null with the reason in the load-error record (where there is one).
Model* model_load(const char* path);
Model* model_read(const char* path, Model* parent);

// Adds the lines to an existing model as they stand: no binding of points, no test of normals, no children.
// 1 when read to the end, else 0.
int model_read_file(Model* model, const char* path);
int model_read_data(Model* model, const char* text);

// The test that ends the read of a file: 1 when all points have normals that can be used, else 0 with the load error
// set for the first one that has not.
int model_test_normals(const Model* model);

}  // namespace pelt
