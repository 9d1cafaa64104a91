// What a save of a changed model makes of the text that it was read from.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "formats/model_compare.h"
#include "formats/model_read_back.h"
#include "formats/model_save.h"
#include "scene/model.h"

namespace pelt::test {

// The new text reads back as the model, or it is the order of the lines that forbids it. Counts of joints and groups
// are those that the text has, whatever the model's records say meanwhile.
inline void expect_saves_into(const std::string& loaded, const Model* model) {
    const ModelSave save = model_save(model, loaded);
    if (save.by_layout) { return; }
    ASSERT_EQ(save.refused, "") << loaded;
    std::string reason;
    Model* read = model_read_back(save.text, model, &reason);
    ASSERT_NE(read, nullptr) << reason << "\n" << save.text;
    EXPECT_EQ(model_difference(model, read, false), "") << save.text;
    model_release(read);
}

}  // namespace pelt::test
