// What the tests of model files share: a directory with one image, loads of a text as a model file, and the checks of
// the load-error record. Each test ends by looking for images that were left behind.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "formats/model_reader.h"
#include "foundation/load_error.h"
#include "images/image_registry.h"
#include "scene/model.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace pelt::test {

struct ModelDeleter {
    void operator()(Model* model) const { model_release(model); }
};
using ModelPtr = std::unique_ptr<Model, ModelDeleter>;

inline const std::string FOUR_POINTS = "points\n1 0 0 0\n2 10 0 0\n3 0 10 0\n4 10 10 0\n";
inline const std::string LAYER = "layer a 10 20 30 doublesided\n";
inline const std::string TRIANGLE = FOUR_POINTS + LAYER + "triangles\n0 1 2 3\n";

class ModelFileTest : public testing::Test {
protected:
    ModelFileTest() { dir.write("a.tga", solid_tga(2, 2, 1, 2, 3)); }
    ~ModelFileTest() override { EXPECT_EQ(list_count(image_registry()), 0) << "an image was left behind"; }

    ModelPtr load(const std::string& text) {
        path = dir.write("ship.mod", text);
        load_error_set("stale");
        return ModelPtr(model_load(path.c_str()));
    }
    ModelPtr load_good(const std::string& text) {
        ModelPtr model = load(text);
        EXPECT_NE(model, nullptr) << text << "\n" << error();
        EXPECT_EQ(load_error_get(), nullptr) << text;
        return model;
    }
    static std::string error() { return load_error_get() != nullptr ? load_error_get() : "(none)"; }

    // The load fails with this text at this line.
    void expect_error(const std::string& text, const std::string& message, int line) {
        EXPECT_EQ(load(text), nullptr) << text;
        EXPECT_EQ(error(), message + " (file: " + path + ", line: " + std::to_string(line) + ")") << text;
    }
    void expect_silent_failure(const std::string& text) {
        EXPECT_EQ(load(text), nullptr) << text;
        EXPECT_EQ(error(), "(none)") << text;
    }
    // The lines stand at line 2 and on, behind a section keyword.
    void expect_data_error(const std::string& section, const std::string& line, const std::string& message) {
        expect_error(section + "\n" + line + "\n", message, 2);
    }
    static int lines_in(const std::string& text) {
        int count = 0;
        for (const char c : text) { count += c == '\n'; }
        return count;
    }

    TempDir dir;
    std::string path;
};

inline Point& point(const ModelPtr& model, int32_t id) { return *model_find_point(model.get(), id); }
inline Layer& layer(const ModelPtr& model, const char* name = "a") { return *model_find_layer(model.get(), name); }
inline Triangle& triangle(const ModelPtr& model, int32_t slot = 0) {
    return *list_at<Triangle>(&layer(model).triangles, slot, 0);
}
inline std::vector<int> ids(const int16_t* first, int count) { return std::vector<int>(first, first + count); }
using Ids = std::vector<int>;
inline const ChildLink& link(const ModelPtr& model, int32_t slot = 0) {
    return *list_at<const ChildLink>(&model->children, slot, 0);
}

}  // namespace pelt::test
