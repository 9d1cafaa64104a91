// Joints, blend groups, points, normals and colours of a save. What surprises: a point belongs to a joint by its place
// among the points alone, so that one that changes its joint moves to the end of the points, where its line names it.
#include <algorithm>
#include <cstring>
#include <map>
#include <unordered_set>
#include <utility>

#include "formats/model_compare.h"
#include "formats/save_work.h"
#include "formats/sequence_match.h"

namespace pelt {

namespace {

using JointPair = std::pair<const Joint*, const Joint*>;

constexpr int NEW_RUN = -1;
constexpr unsigned char DEFAULT_COLOUR[] = {127, 127, 127, 0};
constexpr Vec3 DEFAULT_NORMAL{0.0f, 0.0f, 1.0f};

// The points that a joint or a blend group is dealt.
struct Run {
    const Joint* joint;        // whose line says the count, or null
    const BlendWeight* blend;  // or this
    JointPair joints;          // that its points follow
    int old;                   // place among the runs of the text, NEW_RUN for none
    int line;                  // that says the count
    int32_t kept;              // points that stay
    std::vector<int32_t> added;
};

struct Skeleton {
    std::vector<Run> runs;        // joints in their order, behind them the blend groups in theirs
    std::vector<int> new_of_old;  // place in runs of each run of the text, or NO_MATCH
    std::map<JointPair, size_t> by_joints;
    std::vector<int32_t> world;  // points that are put behind all others
};

const char* name_of(const Joint* joint) { return joint != nullptr ? joint->name : ""; }

std::string of_point(int32_t id) { return "point " + std::to_string(id) + ": "; }

// ---- which run is which ----

template <typename Element, typename Key>
std::vector<std::string> keys_of(const std::vector<const Element*>& elements, const Key& key) {
    std::vector<std::string> keys;
    for (const Element* element : elements) { keys.push_back(key(*element)); }
    return keys;
}

void add_runs_of_joints(SaveWork& work, Skeleton& skeleton, std::map<const Joint*, const Joint*>& renamed) {
    const auto before = save_elements<Joint>(work.source.model->joints);
    const auto after = save_elements<Joint>(work.model.joints);
    const auto key = [](const Joint& joint) { return std::string(joint.name); };
    const std::vector<int> matches = match_sequences(keys_of(before, key), keys_of(after, key));
    skeleton.new_of_old.assign(before.size(), NO_MATCH);
    for (size_t i = 0; i < after.size(); ++i) {
        const int old = matches[i];
        const auto place = static_cast<size_t>(std::max(old, 0));
        if (old != NO_MATCH) {
            skeleton.new_of_old[place] = static_cast<int>(i);
            renamed[before[place]] = after[i];
        }
        const Joint* parent = model_find_joint(&work.model, after[i]->parent_name);
        skeleton.runs.push_back(
            {after[i], nullptr, {after[i], parent}, old, old != NO_MATCH ? work.source.joints[place] : NO_LINE, 0, {}});
    }
}

void add_runs_of_blends(SaveWork& work, Skeleton& skeleton, const std::map<const Joint*, const Joint*>& renamed) {
    const auto joints = static_cast<int>(skeleton.new_of_old.size());
    const auto before = save_elements<BlendWeight>(work.source.model->blends);
    const auto after = save_elements<BlendWeight>(work.model.blends);
    const auto name_now = [&](const Joint* joint) {
        const auto found = renamed.find(joint);
        return std::string(name_of(found != renamed.end() ? found->second : joint));
    };
    const auto key_before = [&](const BlendWeight& blend) {
        return name_now(blend.joint_a) + "\n" + name_now(blend.joint_b);
    };
    const auto key_after = [&](const BlendWeight& blend) {
        return std::string(name_of(blend.joint_a)) + "\n" + name_of(blend.joint_b);
    };
    const std::vector<int> matches = match_sequences(keys_of(before, key_before), keys_of(after, key_after));
    skeleton.new_of_old.resize(skeleton.new_of_old.size() + before.size(), NO_MATCH);
    for (size_t i = 0; i < after.size(); ++i) {
        const auto place = static_cast<size_t>(std::max(matches[i], 0));
        const int old = matches[i] != NO_MATCH ? joints + matches[i] : NEW_RUN;
        if (old != NEW_RUN) { skeleton.new_of_old[static_cast<size_t>(old)] = static_cast<int>(skeleton.runs.size()); }
        skeleton.runs.push_back({nullptr,
                                 after[i],
                                 {after[i]->joint_a, after[i]->joint_b},
                                 old,
                                 old != NEW_RUN ? work.source.blends[place] : NO_LINE,
                                 0,
                                 {}});
    }
}

Skeleton match_skeleton(SaveWork& work) {
    Skeleton skeleton;
    std::map<const Joint*, const Joint*> renamed;
    add_runs_of_joints(work, skeleton, renamed);
    add_runs_of_blends(work, skeleton, renamed);
    for (size_t run = 0; run < skeleton.runs.size(); ++run) {
        if (skeleton.runs[run].joints != JointPair{nullptr, nullptr}) {
            skeleton.by_joints.emplace(skeleton.runs[run].joints, run);
        }
    }
    return skeleton;
}

// ---- points ----

LaidPoint laid(int32_t id, const Point& point, bool names_joints) { return {id, &point, names_joints}; }

bool has_joints(const Point& point) { return point.joint_a != nullptr || point.joint_b != nullptr; }

using Ids = std::unordered_set<int32_t, KeyHash>;

// All lines of points that are gone, and the point lines of those that move.
void delete_point_lines(SaveWork& work, const Ids& gone, const Ids& moved) {
    for (size_t i = 0; i < work.source.lines.size(); ++i) {
        const SourceLine& line = work.source.lines[i];
        const LineMode mode = line.what.mode;
        if (line.what.kind != LINE_IS_DATA) { continue; }
        const bool is_point = mode == LINE_MODE_POINTS;
        const bool goes = is_point || mode == LINE_MODE_NORMALS || mode == LINE_MODE_GOURAUD;
        if ((goes && gone.count(line.record) != 0) || (is_point && moved.count(line.record) != 0)) {
            save_delete(work, static_cast<int>(i), of_point(line.record));
        }
    }
}

// The run that a point of the text stays in; NO_MATCH for one that leaves its own. World points have none to leave.
int stays_in(const Skeleton& skeleton, const Point& point, const PointLines& lines) {
    if (lines.run == WORLD_RUN) { return WORLD_RUN; }
    const int run = skeleton.new_of_old[static_cast<size_t>(lines.run)];
    const bool stays =
        run != NO_MATCH && skeleton.runs[static_cast<size_t>(run)].joints == JointPair{point.joint_a, point.joint_b};
    return stays ? run : NO_MATCH - 1;
}

void change_point_line(SaveWork& work, int32_t id, const Point& point, const PointLines& lines) {
    const bool is_world = lines.run == WORLD_RUN;
    const size_t count = save_token_count(work, lines.point);
    const bool named_before = is_world && count >= 7 && has_joints(*list_find<Point>(&work.source.model->points, id));
    const bool names = is_world && (has_joints(point) || named_before);
    auto line = save_lines(work, [&](whole::WholeWriter& writer) { put_point(writer, laid(id, point, names)); })[0];
    if (count >= 5 && point.weight == 1.0f && !names) { line += " 1"; }
    const size_t meaning = count >= 7 && is_world && names ? 7 : std::min<size_t>(count, 5);
    save_change(work, lines.point, {line, "IIIIRJJ", meaning, false, &work.model}, of_point(id));
}

bool point_line_differs(const Point& a, const Point& b, bool with_joints) {
    const bool joints = with_joints && (std::strcmp(name_of(a.joint_a), name_of(b.joint_a)) != 0 ||
                                        std::strcmp(name_of(a.joint_b), name_of(b.joint_b)) != 0);
    return joints || a.position.x != b.position.x || a.position.y != b.position.y || a.position.z != b.position.z ||
           a.weight != b.weight;
}

// What stays, what goes, what moves and what is new.
struct Sorted {
    Ids deleted;
    Ids moved;                      // to the world points
    std::vector<int32_t> unplaced;  // known by normals or colours alone until now
};

Sorted sort_points(SaveWork& work, Skeleton& skeleton) {
    Sorted sorted;
    for (const int32_t id : work.source.point_order) {
        const PointLines& lines = work.source.points.at(id);
        const Point* point = list_find<Point>(&work.model.points, id);
        const int run = point != nullptr ? stays_in(skeleton, *point, lines) : WORLD_RUN;
        if (point == nullptr) {
            sorted.deleted.insert(id);
            continue;
        }
        if (run < WORLD_RUN) {
            sorted.moved.insert(id);
            skeleton.world.push_back(id);
            continue;
        }
        if (run != WORLD_RUN) { ++skeleton.runs[static_cast<size_t>(run)].kept; }
        work.available[id] = work.line(lines.first).next;
        const Point& before = *list_find<Point>(&work.source.model->points, id);
        if (!point_line_differs(before, *point, run == WORLD_RUN)) { continue; }
        if (lines.point != NO_LINE) {
            change_point_line(work, id, *point, lines);
        } else {
            sorted.unplaced.push_back(id);
        }
    }
    return sorted;
}

void sort_new_points(SaveWork& work, Skeleton& skeleton) {
    const auto points = list_elements<Point>(work.model.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const int32_t id = point.int_key();
        if (work.source.points.count(id) != 0) { continue; }
        if (id > HIGHEST_ID) {
            whole::refuse(work.writer, of_point(id) + "its id is above " + std::to_string(HIGHEST_ID));
        }
        const auto run = skeleton.by_joints.find({point->joint_a, point->joint_b});
        if (run != skeleton.by_joints.end()) {
            skeleton.runs[run->second].added.push_back(id);
        } else {
            skeleton.world.push_back(id);
        }
    }
}

bool is_of_points(const SourceLine& line) {
    return line.what.mode == LINE_MODE_POINTS && (line.what.kind == LINE_IS_DATA || line.what.kind == LINE_IS_SECTION);
}

// Where the lines of points go that stand behind none of their own.
struct PointPlaces {
    std::vector<int> last_of_run;  // of the text: the first line of its last point
    int first = NO_LINE;           // line of a point
    int last = NO_LINE;
    int section = NO_LINE;       // the last one of points
    bool tail_is_dealt = false;  // behind the last line of a point stand others that a joint is dealt
    bool begins = false;         // there is none
};

PointPlaces find_places(const SaveWork& work, size_t old_runs) {
    PointPlaces places;
    places.last_of_run.assign(old_runs, NO_LINE);
    for (const int32_t id : work.source.point_order) {
        const PointLines& lines = work.source.points.at(id);
        const bool is_point_line = work.line(lines.first).what.mode == LINE_MODE_POINTS;
        if (lines.run != WORLD_RUN) { places.last_of_run[static_cast<size_t>(lines.run)] = lines.first; }
        if (is_point_line) {
            places.first = places.first == NO_LINE ? lines.first : places.first;
            places.last = lines.first;
            places.tail_is_dealt = false;
        } else if (lines.run != WORLD_RUN) {
            places.tail_is_dealt = true;
        }
    }
    for (size_t i = 0; i < work.source.lines.size(); ++i) {
        if (is_of_points(work.source.lines[i]) && work.source.lines[i].what.kind == LINE_IS_SECTION) {
            places.section = static_cast<int>(i);
        }
    }
    return places;
}

// Without a section of points: before the first layer or child, else at the end. What stands there begins with a
// keyword.
size_t place_of_new_section(const SaveWork& work) {
    for (const SourceLine& line : work.source.lines) {
        if (line.what.kind == LINE_IS_LAYER || line.what.kind == LINE_IS_CHILD) { return line.place.begin; }
    }
    return work.source.text.size();
}

size_t place_behind(SaveWork& work, PointPlaces& places, int line, const std::string& of) {
    if (line != NO_LINE && !is_of_points(work.line(line))) {
        save_refuse_layout(work, of + "it would have to stand behind a point that normals alone make known");
    }
    if (line == NO_LINE) { line = places.last != NO_LINE ? places.last : places.section; }
    if (line != NO_LINE) { return work.line(line).next; }
    places.begins = true;
    return place_of_new_section(work);
}

void insert_point(SaveWork& work, const PointPlaces& places, int32_t id, size_t at, bool names_joints) {
    const Point& point = *list_find<Point>(&work.model.points, id);
    const auto lines =
        save_lines(work, [&](whole::WholeWriter& writer) { put_point(writer, laid(id, point, names_joints)); });
    save_insert_in_mode(work, at, LINE_MODE_POINTS, "points", places.begins, lines);
    if (work.available.count(id) == 0) { work.available[id] = at; }
}

// Behind the last point of the run, or of the runs before it, or before all points.
size_t place_in_run(SaveWork& work, const Skeleton& skeleton, PointPlaces& places, size_t run, const std::string& of) {
    for (size_t before = run + 1; before-- > 0;) {
        const int old = skeleton.runs[before].old;
        const int line = old != NEW_RUN ? places.last_of_run[static_cast<size_t>(old)] : NO_LINE;
        if (line != NO_LINE) { return place_behind(work, places, line, of); }
    }
    if (places.first != NO_LINE) { return work.line(places.first).place.begin; }
    return place_behind(work, places, NO_LINE, of);
}

void insert_points(SaveWork& work, const Skeleton& skeleton, const Sorted& sorted) {
    PointPlaces places = find_places(work, skeleton.new_of_old.size());
    for (size_t run = 0; run < skeleton.runs.size(); ++run) {
        for (const int32_t id : skeleton.runs[run].added) {
            const size_t at = place_in_run(work, skeleton, places, run, of_point(id));
            insert_point(work, places, id, at, false);
        }
    }
    const auto put_behind_all = [&](int32_t id, bool names_joints) {
        if (places.tail_is_dealt) {
            save_refuse_layout(work, of_point(id) + "joints are dealt points that normals alone make known");
        }
        const size_t at = place_behind(work, places, NO_LINE, of_point(id));
        insert_point(work, places, id, at, names_joints);
    };
    for (const int32_t id : sorted.unplaced) { put_behind_all(id, false); }
    for (const int32_t id : skeleton.world) {
        put_behind_all(id, has_joints(*list_find<Point>(&work.model.points, id)));
    }
}

// ---- counts, joints and blend groups ----

int32_t count_in_text(const SaveWork& work, const Run& run) {
    const auto joints = static_cast<size_t>(list_count(&work.source.model->joints));
    const auto old = static_cast<size_t>(run.old);
    const bool is_joint = old < joints;
    const auto rank = static_cast<int32_t>(is_joint ? old : old - joints);
    return is_joint ? list_at<const Joint>(&work.source.model->joints, rank, 0)->point_count
                    : list_at<const BlendWeight>(&work.source.model->blends, rank, 0)->point_count;
}

// The count that the line of a run is to say. One beyond the points that are left stays, unless points come behind
// them.
int32_t wanted_count(const SaveWork& work, const Run& run, bool more_behind) {
    const auto now = run.kept + static_cast<int32_t>(run.added.size());
    if (run.old == NEW_RUN) { return now; }
    const int32_t before = count_in_text(work, run);
    const int32_t dealt = work.source.run_counts[static_cast<size_t>(run.old)];
    const bool same_points = run.added.empty() && run.kept == dealt;
    return same_points && (before <= dealt || !more_behind) ? before : now;
}

size_t first_keyword(const SaveWork& work) {
    for (const SourceLine& line : work.source.lines) {
        if (line.what.kind != LINE_IS_NOTHING) { return line.place.begin; }
    }
    return work.source.text.size();
}

void save_run(SaveWork& work, const Run& run, int32_t count, size_t* at) {
    const bool is_joint = run.joint != nullptr;
    const std::string of =
        is_joint ? std::string("joint ") + run.joint->name + ": "
                 : std::string("blend of ") + name_of(run.joints.first) + " and " + name_of(run.joints.second) + ": ";
    if (run.line != NO_LINE) { *at = work.line(run.line).next; }
    const bool is_emptied = !is_joint && count < 1;
    if (is_emptied && run.line != NO_LINE) { save_delete(work, run.line, of); }
    if (is_emptied) { return; }
    const auto lines = save_lines(work, [&](whole::WholeWriter& writer) {
        if (is_joint) {
            put_joint(writer, *run.joint, count);
        } else {
            put_blend(writer, *run.blend, count);
        }
    });
    if (run.line == NO_LINE) {
        save_insert(work, *at, lines);
    } else if (is_joint) {
        save_change(work, run.line, {lines[0], "TNIIINI", 7, false, nullptr}, of);
    } else {
        save_change(work, run.line, {lines[0], "TJJI", 4, false, &work.model}, of);
    }
}

// A joint or group of the text that was not touched stays as it is, also where no line could be written of it.
bool run_differs(const SaveWork& work, const Run& run, int32_t count) {
    if (run.old == NEW_RUN || count != count_in_text(work, run)) { return true; }
    const auto joints = static_cast<size_t>(list_count(&work.source.model->joints));
    const auto old = static_cast<size_t>(run.old);
    if (run.joint == nullptr) {
        const auto* blend =
            list_at<const BlendWeight>(&work.source.model->blends, static_cast<int32_t>(old - joints), 0);
        return std::strcmp(name_of(blend->joint_a), name_of(run.joints.first)) != 0 ||
               std::strcmp(name_of(blend->joint_b), name_of(run.joints.second)) != 0;
    }
    const auto* joint = list_at<const Joint>(&work.source.model->joints, run.old, 0);
    return std::strcmp(joint->name, run.joint->name) != 0 ||
           std::strcmp(joint->parent_name, run.joint->parent_name) != 0 || joint->position.x != run.joint->position.x ||
           joint->position.y != run.joint->position.y || joint->position.z != run.joint->position.z;
}

void save_runs(SaveWork& work, const Skeleton& skeleton) {
    const SaveSource& source = work.source;
    size_t at = source.joints.empty() ? first_keyword(work) : work.line(source.joints[0]).place.begin;
    for (size_t i = 0; i < skeleton.runs.size(); ++i) {
        const Run& run = skeleton.runs[i];
        bool more_behind = !skeleton.world.empty();
        for (size_t later = i + 1; later < skeleton.runs.size(); ++later) {
            more_behind = more_behind || !skeleton.runs[later].added.empty();
        }
        const int32_t count = wanted_count(work, run, more_behind);
        if (run_differs(work, run, count)) {
            save_run(work, run, count, &at);
        } else {
            at = work.line(run.line).next;
        }
    }
    for (size_t old = 0; old < skeleton.new_of_old.size(); ++old) {
        if (skeleton.new_of_old[old] != NO_MATCH) { continue; }
        const bool is_joint = old < source.joints.size();
        const auto* joint = list_at<const Joint>(&source.model->joints, static_cast<int32_t>(old), 0);
        save_delete(work, is_joint ? source.joints[old] : source.blends[old - source.joints.size()],
                    is_joint ? std::string("joint ") + joint->name + ": " : "blend group: ");
    }
}

// ---- normals and colours ----

bool same_colour(const unsigned char* a, const unsigned char* b) { return std::memcmp(a, b, 4) == 0; }

void save_normal(SaveWork& work, int32_t id, const Point& point, int line) {
    const auto lines =
        save_lines(work, [&](whole::WholeWriter& writer) { put_normal(writer, laid(id, point, false)); });
    if (line != NO_LINE) {
        save_change(work, line, {lines[0], "IR", 4, false, nullptr}, of_point(id));
    } else {
        save_insert_data(work, LINE_MODE_NORMALS, "normals", work.available[id], lines);
    }
}

void save_colour(SaveWork& work, int32_t id, const Point& point, int line) {
    const auto lines =
        save_lines(work, [&](whole::WholeWriter& writer) { put_colour(writer, laid(id, point, false)); });
    if (line != NO_LINE) {
        save_change(work, line, {lines[0], "IB", 5, false, nullptr}, of_point(id));
    } else {
        save_insert_data(work, LINE_MODE_GOURAUD, "gouraud", work.available[id], lines);
    }
}

// What of a point stands in a section of its own: asks for a line where the point needs one, and tells whether any has.
template <typename Differs, typename Save>
bool save_section(SaveWork& work, int PointLines::*line_of, const Differs& differs, const Save& save) {
    bool any = false;
    const auto points = list_elements<Point>(work.model.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const auto lines = work.source.points.find(point.int_key());
        const int line = lines != work.source.points.end() ? lines->second.*line_of : NO_LINE;
        const Point* before = list_find<Point>(&work.source.model->points, point.int_key());
        const bool wanted = differs(before, *point);
        if (wanted) { save(work, point.int_key(), *point, line); }
        any = any || wanted || line != NO_LINE;
    }
    return any;
}

void save_normals_and_colours(SaveWork& work) {
    const bool any_normal = save_section(
        work, &PointLines::normal,
        [](const Point* before, const Point& now) {
            return !normals_match(before != nullptr ? before->normal : DEFAULT_NORMAL, now.normal);
        },
        save_normal);
    const bool any_colour = save_section(
        work, &PointLines::colour,
        [](const Point* before, const Point& now) {
            return !same_colour(before != nullptr ? before->gouraud : DEFAULT_COLOUR, now.gouraud);
        },
        save_colour);
    // What a model has stays with it when the last line that said so is gone.
    const auto first = list_elements<Point>(work.model.points).begin();
    if (first == std::default_sentinel) { return; }
    if (work.model.has_normals != 0 && !any_normal) { save_normal(work, first.int_key(), *first, NO_LINE); }
    if (work.model.has_gouraud != 0 && !any_colour) { save_colour(work, first.int_key(), *first, NO_LINE); }
}

}  // namespace

void save_skeleton_and_points(SaveWork& work) {
    Skeleton skeleton = match_skeleton(work);
    const Sorted sorted = sort_points(work, skeleton);
    sort_new_points(work, skeleton);
    save_runs(work, skeleton);
    delete_point_lines(work, sorted.deleted, sorted.moved);
    insert_points(work, skeleton, sorted);
    save_normals_and_colours(work);
}

}  // namespace pelt
