// Transparency and colour key of a layer that is made from another.
#include <gtest/gtest.h>

#include "reduce/carry_settings.h"
#include "support/edit_model.h"

namespace {

using namespace pelt;
using namespace pelt::edit_model;

class CarrySettings : public EditTest {
protected:
    CarrySettings() : source(put_layer(model.get(), "source")), target(put_layer(model.get(), "target")) {}
    Owned model = empty_model();
    Layer* source;
    Layer* target;
};

TEST_F(CarrySettings, transparency_goes_along) {
    source->transparency = 0.75f;
    carry_settings(model.get(), "target", *source);
    EXPECT_EQ(target->transparency, 0.75f);
    EXPECT_EQ(target->invisible, 0);
}

TEST_F(CarrySettings, transparency_out_of_range_is_refused) {
    source->transparency = 1.5f;
    carry_settings(model.get(), "target", *source);
    EXPECT_EQ(target->transparency, 0.0f);
}

TEST_F(CarrySettings, every_colour_key_comes_back_as_the_same_bytes) {
    source->invisible = 1;
    for (int value = 0; value <= 255; ++value) {
        source->invisible_colour[0] = value;
        source->invisible_colour[1] = 255 - value;
        source->invisible_colour[2] = value / 2;
        carry_settings(model.get(), "target", *source);
        EXPECT_EQ(target->invisible, 1);
        EXPECT_EQ(target->invisible_colour[0], value);
        EXPECT_EQ(target->invisible_colour[1], 255 - value);
        EXPECT_EQ(target->invisible_colour[2], value / 2);
    }
}

}  // namespace
