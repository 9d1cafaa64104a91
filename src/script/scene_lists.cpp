// Reading lists out of the words of a call.
#include "script/scene_lists.h"

#include <limits>
#include <unordered_set>

#include "application/problem.h"
#include "scene/model.h"
#include "script/scene_call.h"
#include "script/tcl_glue.h"

#include <tcl.h>

namespace pelt {

bool scene_read_list(const char* what, const char* word, const char* allowed, std::vector<std::string>* words) {
    words->clear();
    int count = 0;
    const char** parts = nullptr;
    if (Tcl_SplitList(nullptr, word, &count, &parts) != TCL_OK) {
        scene_refuse_argument(what, word, allowed);
        return false;
    }
    words->assign(parts, parts + count);
    Tcl_Free(reinterpret_cast<char*>(parts));
    return true;
}

bool scene_read_points(const Model* model, const char* word, std::vector<int32_t>* ids, ScenePoints which) {
    constexpr const char* ALLOWED = "one or more ids of points of this model";
    ids->clear();
    std::vector<std::string> words;
    if (!scene_read_list("points", word, ALLOWED, &words)) { return false; }
    if (words.empty() && which != SCENE_POINTS_OR_NONE) {
        scene_refuse_argument("points", word, ALLOWED);
        return false;
    }
    std::unordered_set<int32_t> met;
    for (const std::string& each : words) {
        int32_t id = 0;
        if (!scene_read_int("point", each.c_str(), 1, std::numeric_limits<int32_t>::max(), &id)) { return false; }
        if (list_find<const Point>(&model->points, id) == nullptr) {
            scene_refuse_argument("point", each.c_str(), "the id of a point of this model");
            return false;
        }
        if (met.insert(id).second || which == SCENE_POINTS_ALL) { ids->push_back(id); }
    }
    return true;
}

bool scene_read_finite(const char* what, const char* word, float* value) {
    constexpr float MOST = std::numeric_limits<float>::max();
    return scene_read_real(what, word, -MOST, MOST, value);
}

bool scene_read_vec(const char* what, const char* word, Vec3* value) {
    constexpr const char* ALLOWED = "a list of three numbers";
    std::vector<std::string> words;
    if (!scene_read_list(what, word, ALLOWED, &words)) { return false; }
    if (words.size() != 3) {
        scene_refuse_argument(what, word, ALLOWED);
        return false;
    }
    return scene_read_finite(what, words[0].c_str(), &value->x) &&
           scene_read_finite(what, words[1].c_str(), &value->y) && scene_read_finite(what, words[2].c_str(), &value->z);
}

}  // namespace pelt
