// Memory that a file asks for and that is not there: the file is refused with a text, and nothing is left behind. The
// requests of the library go through the functions below (the linker sees to that), so that any of them can fail.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "formats/clip_reader.h"
#include "formats/model_reader.h"
#include "foundation/keyed_list.h"
#include "foundation/load_error.h"
#include "images/image_registry.h"
#include "scene/model.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace {

constexpr int NONE = -1;
int requests;           // of zero-filled memory, as lists and tables of clips make them
int failing = NONE;     // the number of the one that fails
size_t largest = ~0ul;  // a request of any kind for more fails too

}  // namespace

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);

void* __wrap_malloc(size_t size) { return size > largest ? nullptr : __real_malloc(size); }
void* __wrap_realloc(void* block, size_t size) { return size > largest ? nullptr : __real_realloc(block, size); }
void* __wrap_calloc(size_t count, size_t size) {
    const bool fails = requests++ == failing || count * size > largest;
    return fails ? nullptr : __real_calloc(count, size);
}
}

namespace pelt {
namespace {

class FailedAllocationTest : public testing::Test {
protected:
    void TearDown() override {
        failing = NONE;
        largest = ~size_t{0};
    }

    // Loads with each request failing in turn, until one load has fewer than that. Returns how many failed.
    int refused_loads(const std::string& path) {
        for (int number = 0;; ++number) {
            requests = 0;
            failing = number;
            Model* model = model_load(path.c_str());
            failing = NONE;
            if (requests <= number) {
                EXPECT_NE(model, nullptr) << load_error_get();
                model_release(model);
                return number;
            }
            EXPECT_EQ(model, nullptr) << number;
            EXPECT_NE(load_error_get(), nullptr) << number;
            model_release(model);
        }
    }

    const test::TempDir dir;
};

TEST_F(FailedAllocationTest, AModelIsRefusedWithATextWhicheverListFindsNoMemory) {
    const std::string path = dir.write("all.mod",
                                       "joint root 0 0 0 none 3\n"
                                       "joint arm 0 0 0 root 1\n"
                                       "blend root arm 1\n"
                                       "points\n1 0 0 0\n2 9 0 0\n3 9 9 0\n4 0 9 0\n5 0 0 9\n"
                                       "layer skin 1 2 3 singlesided\n"
                                       "triangles\n0 1 2 3\n2 1 2 3 4\n"
                                       "uvees\n1 0.5 0.5\n"
                                       "lines\n2 1 2 3 4\n");
    // Joints, blends, points, layers, triangles, polygons, uvees, lines, and the corners of a polygon and of a line:
    // two requests each.
    EXPECT_GE(refused_loads(path), 20);
}

TEST_F(FailedAllocationTest, TheTextNamesTheLineThatAskedForTooMuch) {
    const std::string path = dir.write("few.mod", "points\n1 0 0 0\n");
    requests = 0;
    failing = 0;
    EXPECT_EQ(model_load(path.c_str()), nullptr);
    EXPECT_EQ(load_error_get(), "out of memory (file: " + path + ", line: 2)");
}

TEST_F(FailedAllocationTest, AFragmentIsRefusedAlike) {
    Model* model = model_create("m.mod", nullptr);
    requests = 0;
    failing = 0;
    EXPECT_EQ(model_read_data(model, "points\n1 0 0 0\n"), 0);
    EXPECT_STREQ(load_error_get(), "out of memory (file: (data), line: 2)");
    failing = NONE;
    EXPECT_EQ(model_read_data(model, "points\n1 0 0 0\n"), 1);
    EXPECT_EQ(model_count_points(model), 1);
    model_release(model);
}

TEST_F(FailedAllocationTest, APictureTooLargeForTheMemoryIsRefused) {
    const std::string path = dir.write("big.tga", test::solid_tga(200, 100, 9, 9, 9));
    int32_t width = 0, height = 0;
    largest = 50000;
    EXPECT_EQ(image_load(path.c_str(), &width, &height), nullptr);
    EXPECT_EQ(load_error_get(), "TGA read failed: " + path);
    largest = 70000;  // enough for the picture, not for its form with a colour key
    EXPECT_NE(image_load(path.c_str(), &width, &height), nullptr);
    EXPECT_EQ(image_keyed(path.c_str(), 1, 2, 3), nullptr);
    image_release(path.c_str());
}

TEST_F(FailedAllocationTest, ALayerWhoseColourKeyFindsNoMemoryIsRefused) {
    dir.write("big.tga", test::solid_tga(200, 100, 9, 9, 9));
    const std::string path = dir.write("key.mod",
                                       "points\n1 0 0 0\n2 9 0 0\n3 9 9 0\n"
                                       "layer skin 1 2 3 singlesided\ninvisible 0 0 0\ntriangles\n0 1 2 3\n"
                                       "image big.tga x y\n");
    largest = 70000;
    EXPECT_EQ(model_load(path.c_str()), nullptr);
    EXPECT_EQ(load_error_get(), "out of memory (file: " + path + ", line: 9)");
}

TEST_F(FailedAllocationTest, AClipIsRefusedWhicheverTableFindsNoMemory) {
    Model* model = model_create("m.mod", nullptr);
    dir.write("part.clip", "0 1 2 3\n");
    dir.write("whole.clip", "0 1 2 3\n1 4 5 6\n0.5 part.clip\n");
    int number = 0;
    for (bool refused = true; refused; ++number) {
        ModelAnimation* animation = animation_create(model);
        requests = 0;
        failing = number;
        const float length =
            animation_read_clip(model, &animation->clip, dir.path().c_str(), "whole.clip", 0.0f, HOLD_NONE, nullptr);
        refused = requests > number;
        failing = NONE;
        if (refused) {
            EXPECT_EQ(length, 0.0f) << number;
            EXPECT_STREQ(animation_error(), "Out of memory") << number;
        } else {
            EXPECT_EQ(length, 1.0f);
        }
        animation_release(animation);
    }
    EXPECT_GE(number, 6);  // sub-clips, frames and their keys, and the same of the part
    model_release(model);
}

TEST_F(FailedAllocationTest, AListThatCannotGrowSaysSoAndStaysAsItWas) {
    KeyedList list;
    list_init(&list, sizeof(int), KEY_INT);
    for (int key = 1; key <= 16; ++key) { *static_cast<int*>(list_add(&list, key)) = key; }
    requests = 0;
    failing = 0;
    EXPECT_THROW(list_add(&list, 17), std::bad_alloc);
    failing = NONE;
    EXPECT_EQ(list_count(&list), 16);
    EXPECT_EQ(list_find(&list, 17), nullptr);
    EXPECT_NE(list_add(&list, 17), nullptr);
    list_free(&list);
}

}  // namespace
}  // namespace pelt
