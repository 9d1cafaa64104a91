// The fixed orders of view and scene around a load.
#pragma once

#include <cstdint>

#include "application/application.h"

namespace pelt {

int32_t file_open_model(Application* app, const char* path);  // id, 0 on failure; the old scene is gone either way
int32_t file_add(Application* app, const char* path);         // id, 0 on failure; the old scene stays
void file_reload(Application* app);
int32_t animate_open(Application* app, const char* path);  // 1, 0 on failure
void application_reset(Application* app);

}  // namespace pelt
