// Lays models flat into the plane z = 0, keeping the length of each edge that is walked.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

int selection_pancake(Session* session);  // 0 when a model failed
int model_pancake(Model* model);          // 0 for null or a model without layers
int pancake_chain(Model* model, KeyedList* laid, const int16_t* ids, int count);
void pancake_point(const Point* a, const Point* b, Point* out);

}  // namespace pelt
