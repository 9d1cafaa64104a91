// Where numbers of points and names of layers end.
#include <gtest/gtest.h>

#include "reduce/flatten_limits.h"
#include "support/edit_model.h"

namespace {

using namespace pelt;
using namespace pelt::edit_model;

TEST(FlattenLimits, the_highest_id_is_the_last_of_16_signed_bits) {
    load_error_set(nullptr);
    EXPECT_TRUE(point_id_fits(32767));
    EXPECT_EQ(error_text(), "(none)");
    EXPECT_FALSE(point_id_fits(32768));
    EXPECT_EQ(error_text(), "new point ids would pass 32767");
    EXPECT_FALSE(point_id_fits(int64_t{1} << 40));
}

TEST(FlattenLimits, a_layer_name_ends_at_31_bytes) {
    load_error_set(nullptr);
    EXPECT_TRUE(layer_name_fits(std::string(31, 'a').c_str()));
    EXPECT_EQ(error_text(), "(none)");
    EXPECT_FALSE(layer_name_fits(std::string(32, 'a').c_str()));
    EXPECT_EQ(error_text(), "layer name too long: " + std::string(32, 'a'));
}

TEST(FlattenLimits, a_layer_is_found_by_its_name_or_not_at_all) {
    Owned model = empty_model();
    EXPECT_TRUE(layer_can_be_found(model.get(), put_layer(model.get(), "short")));
    ASSERT_EQ(model_add_layer(model.get(), std::string(32, 'a').c_str(), 0, 0, 0, 0, 0, 1), 1);
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        EXPECT_EQ(layer_can_be_found(model.get(), &layer), layer.name[0] == 's');
    }
}

}  // namespace
