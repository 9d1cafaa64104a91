// The selection, the clipboard, and what is done with what is selected. 1, or 0 for a failure, unless said otherwise.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

void selection_init(Session* session);
int selection_clear(Session* session);
int clipboard_clear(Session* session);
int selection_all(Session* session);
int selection_add_model(Session* session, int32_t id);
int selection_add_child(Session* session, int32_t id);
Model* selection_current_model(Session* session);  // null when nothing is selected or the first entry is stale

// The model of an entry of the selection, or null when the key no longer stands for that model: it was closed since.
Model* selection_entry_model(const Session* session, int32_t key, const SelectedModel* entry);

int selection_copy(Session* session);
int selection_cut(Session* session);
int selection_paste();
int selection_translate(Session* session, float x, float y, float z, int relative);
int selection_scale(Session* session, float x, float y, float z, int relative);
int selection_rotate(Session* session, const char* a, const char* b, const char* c, int relative);
int selection_set_centre(Session* session, float x, float y, float z);
int selection_set_axis(Session* session, float x, float y, float z);
int selection_delete(Session* session);
int selection_add_data(Session* session, const char* text);
int selection_add_child_model(Session* session, int32_t id);

}  // namespace pelt
