// The life of the scene: set up, reset, load, reload, rename, find. 1 or an id for success, 0 for failure.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

void session_init(Session* session);
void session_reset(Session* session, int restore_display);
int32_t session_load_model(Session* session, const char* path);  // id of the new root
int32_t session_add_model(Session* session, Model* model);
int session_load_animation(Session* session, const char* path, int keep_radius);
int session_reload(Session* session);
int session_rename_model(Session* session, int32_t id, const char* path);
void session_save_model(Session* session);
int32_t session_find_model(Session* session, const char* name);
const char* session_find_images(Session* session, int32_t id);  // static text, or null
int session_replace_model(Session* session, const char* name);

}  // namespace pelt
