// Clip files: the keys that move a model.
//
// What surprises: a clip file is read twice, so that all arrays have their size before they are filled, and the second
// pass reads further clip files from inside its line callback. After such a nested read the outer reader cannot be
// stopped until its next line. A file that is pulled in again is not read again: its clips share one set of keys, and
// only the times of its frames and its sub-clips, which depend on where it stands, are made for each.
#include "formats/clip_reader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "formats/line_reader.h"
#include "foundation/file_access.h"
#include "foundation/quat.h"
#include "foundation/text.h"
#include "scene/model.h"

namespace pelt {

namespace {

inline constexpr const char* COMMENT_CHARS = "#";
inline constexpr int32_t COMMENT_COUNT = 1;

inline constexpr int32_t NO_SLOT = -1;

inline constexpr int32_t TOKENS_PER_TRACK = 3;
inline constexpr int32_t SUBCLIP_TOKEN_LIMIT = 3;  // a line of more tokens is a frame
inline constexpr const char* BAD_DATA = "bad animation data";
inline constexpr const char* NO_MEMORY = "Out of memory";
inline constexpr const char* CHILD_PREFIX = "child";
inline constexpr size_t CHILD_PREFIX_SIZE = 5;
inline constexpr int32_t CHILD_OFFSET_LIMIT = 127;

// Without a track line the tracks are counted by the tokens of a line, which can never be more than have room.
static_assert((READER_TOKEN_LIMIT - 1) / TOKENS_PER_TRACK <= ANIMATION_NAME_LIMIT);

struct SubclipLine {
    float time;
    std::optional<std::string> file;
    float hold;
};

// What a clip file says, wherever in the tree it stands.
struct ClipFile {
    bool has_track_line = false;
    int32_t names_count = 0;
    int32_t slots[ANIMATION_NAME_LIMIT] = {};  // by column
    int32_t frame_count = 0;                   // lines of each kind, as the first pass counts them
    int32_t subclip_count = 0;
    int32_t last_tokens = 0;                                 // of the last frame line
    float latest = -std::numeric_limits<float>::infinity();  // highest time of a frame line
    std::string error;                                       // why the first pass broke off; empty when it did not
    bool complete = false;                                   // the second pass came to the end
    const AnimationClip* owner = nullptr;  // the clip that holds the keys; null until the file was read
    std::vector<float> times;              // of the frames that the second pass read
    std::vector<SubclipLine> subclips;     // the same
};

// What the reads of one clip and all its sub-clips share.
struct ClipTree {
    Model* model;
    std::string directory;
    int64_t* keys;                        // of the whole animation so far, see ANIMATION_KEY_LIMIT
    std::vector<std::string> open_files;  // those in their second pass, outermost first
    std::map<std::string, ClipFile> files;
    int32_t subclips = 0;
    bool failed = false;  // too many sub-clips or keys: every read of the tree is to end
};

// One clip on its way from a file.
struct ClipRead {
    ClipTree* tree;
    ClipFile* file;
    AnimationClip* clip;
    float start;
    float end = 0.0f;
    int32_t places[ANIMATION_NAME_LIMIT] = {};  // of the columns, among the tracks of the clip
    int32_t slot_count = 0;
};

// Track number of a name, whatever the model has room for; NO_SLOT with the error set.
int32_t find_slot(const Model* model, const char* name) {
    if (str_equal(name, "translate")) { return ANIMATION_TRANSLATE_SLOT; }
    if (str_equal(name, "rotate")) { return ANIMATION_ROTATE_SLOT; }
    const int32_t joint = model_joint_index(model, name);
    if (joint >= 0) { return joint + ANIMATION_FIRST_JOINT_SLOT; }
    const int32_t first_child_slot = model_count_joints(model) + ANIMATION_FIRST_JOINT_SLOT;
    if (std::strncmp(name, CHILD_PREFIX, CHILD_PREFIX_SIZE) == 0) {
        const int32_t offset = text_to_int(name + CHILD_PREFIX_SIZE);
        if (offset >= 0 && offset <= CHILD_OFFSET_LIMIT) { return first_child_slot + offset; }
        animation_set_error("Child offset out of range");
        return NO_SLOT;
    }
    const int32_t child = model_child_index(model, name);
    if (child >= 0) { return first_child_slot + child; }
    animation_set_error("Invalid animation name");
    return NO_SLOT;
}

// A slot equal to the count passes; intended. The frames have room for it and no sample asks for it.
int32_t resolve_name(const ClipRead* read, const char* name) {
    const int32_t slot = find_slot(read->tree->model, name);
    if (slot <= read->slot_count) { return slot; }
    animation_set_error("Slot overrun...");
    return NO_SLOT;
}

void read_track_line(ClipRead* read) {
    ClipFile* file = read->file;
    file->has_track_line = true;
    file->names_count = reader_token_count() - 1;
    if (file->names_count > ANIMATION_NAME_LIMIT) {
        animation_set_error("Too many names (memory buffer over-run)");
        reader_abort();
        return;
    }
    for (int32_t i = 0; i < file->names_count; ++i) {
        file->slots[i] = resolve_name(read, reader_text(i + 1));
        if (file->slots[i] == NO_SLOT) {
            reader_abort();
            return;
        }
    }
}

// Every clip of the tree is to end with this text.
void fail_tree(ClipTree* tree, const char* text) {
    tree->failed = true;
    animation_set_error(text);
}

void claim_subclips(ClipTree* tree, int32_t count) {
    tree->subclips += count;
    if (tree->subclips > ANIMATION_SUBCLIP_LIMIT) { fail_tree(tree, "Too many sub-clips"); }
}

void claim_keys(ClipTree* tree, int64_t count) {
    *tree->keys += count;
    if (*tree->keys > ANIMATION_KEY_LIMIT) { fail_tree(tree, "Too many keys"); }
}

void count_line(void* context) {
    ClipRead* read = static_cast<ClipRead*>(context);
    ClipFile* file = read->file;
    if (reader_token_equals("names", 0)) {
        read_track_line(read);
    } else if (reader_token_count() > SUBCLIP_TOKEN_LIMIT) {
        if (file->frame_count == std::numeric_limits<int32_t>::max()) { return reader_abort(); }
        ++file->frame_count;
        file->last_tokens = reader_token_count();
        file->latest = std::max(file->latest, reader_float(0));
    } else {
        ++file->subclip_count;
        claim_subclips(read->tree, 1);
        if (read->tree->failed) { reader_abort(); }
    }
}

// Without a track line column i fills slot i; columns that the model has no track for are passed over.
void number_columns(ClipFile* file, int32_t slot_count) {
    file->names_count = file->last_tokens > 0 ? (file->last_tokens - 1) / TOKENS_PER_TRACK : 0;
    for (int32_t i = 0; i < file->names_count; ++i) { file->slots[i] = i < slot_count ? i : NO_SLOT; }
}

// Keys are kept for the tracks that have columns alone: a table of all slots for each frame would be as large as the
// model times the file.
void list_tracks(ClipRead* read) {
    std::vector<int32_t> tracks;
    const ClipFile& file = *read->file;
    for (int32_t i = 0; i < file.names_count; ++i) {
        if (file.slots[i] != NO_SLOT) { tracks.push_back(file.slots[i]); }
    }
    std::sort(tracks.begin(), tracks.end());
    tracks.erase(std::unique(tracks.begin(), tracks.end()), tracks.end());
    if (!tracks.empty()) {
        AnimationClip* clip = read->clip;
        clip->tracks = new int32_t[tracks.size()];
        clip->track_count = static_cast<int32_t>(tracks.size());
        std::copy(tracks.begin(), tracks.end(), clip->tracks);
    }
    for (int32_t i = 0; i < file.names_count; ++i) { read->places[i] = animation_track(read->clip, file.slots[i]); }
}

// Zero-filled, for std::free. Null for none, and with the tree failed when there is no memory for them.
template <typename Element>
Element* new_elements(ClipTree* tree, int32_t count) {
    auto* elements =
        count < 1 ? nullptr : static_cast<Element*>(std::calloc(static_cast<size_t>(count), sizeof(Element)));
    if (elements == nullptr && count > 0) { fail_tree(tree, NO_MEMORY); }
    return elements;
}

void prepare_clip(ClipRead* read, const std::string& path, float hold) {
    AnimationClip* clip = read->clip;
    const float latest = read->file->latest + read->start;
    if (latest > read->end) { read->end = latest; }
    clip->name = str_dup(path.c_str());
    clip->start_time = read->start;
    clip->end_time = read->end;
    clip->hold_time = hold;
    clip->slot_count = read->slot_count;
    clip->subclips = new_elements<AnimationClip>(read->tree, read->file->subclip_count);
    clip->subclip_count = clip->subclips != nullptr ? read->file->subclip_count : 0;
    clip->frames = new_elements<AnimationFrame>(read->tree, read->file->frame_count);
    clip->frame_count = clip->frames != nullptr ? read->file->frame_count : 0;
    list_tracks(read);
}

bool is_finite(const AnimationKey& key) {
    return std::isfinite(key.x) && std::isfinite(key.y) && std::isfinite(key.z) && std::isfinite(key.w);
}

// A text that is no rotation leaves what was built before it. Angles too large to have a sine give no rotation at all.
AnimationKey rotation_key(int32_t token) {
    static constexpr AnimationKey NO_ROTATION{0.0f, 0.0f, 0.0f, 1.0f};
    Mat4 turn;
    mat_rotate_text(&turn, reader_text(token), reader_text(token + 1), reader_text(token + 2));
    AnimationKey key;
    quat_from_matrix(&turn, &key.x, &key.y, &key.z, &key.w);
    return is_finite(key) ? key : NO_ROTATION;
}

AnimationKey translation_key(int32_t token) {
    return {reader_float(token), reader_float(token + 1), reader_float(token + 2), 1.0f};
}

// The table of a frame and the keys that it points at lie in one block, so that a key that a later column of the same
// track replaces goes with the rest.
void fill_frame(ClipRead* read, AnimationFrame* frame) {
    const size_t table_size = std::max<size_t>(static_cast<size_t>(read->clip->track_count), 1);
    const ClipFile& file = *read->file;
    const size_t key_count = static_cast<size_t>(file.names_count);
    void* block = std::calloc(1, table_size * sizeof(AnimationKey*) + key_count * sizeof(AnimationKey));
    if (block == nullptr) {
        fail_tree(read->tree, NO_MEMORY);
        return;
    }
    frame->time = reader_float(0) + read->start;
    frame->keys = static_cast<AnimationKey**>(block);
    AnimationKey* key = reinterpret_cast<AnimationKey*>(frame->keys + table_size);
    for (int32_t column = 0; column < file.names_count; ++column) {
        const int32_t place = read->places[column];
        if (place == NO_SLOT) { continue; }
        const int32_t token = TOKENS_PER_TRACK * column + 1;
        *key = file.slots[column] == ANIMATION_TRANSLATE_SLOT ? translation_key(token) : rotation_key(token);
        frame->keys[place] = key++;
    }
}

void read_frame_line(ClipRead* read) {
    ClipFile* file = read->file;
    // More frames than the first pass counted: the file was written to in between.
    const auto frame = static_cast<int32_t>(file->times.size());
    if (frame >= read->clip->frame_count || reader_token_count() != TOKENS_PER_TRACK * file->names_count + 1) {
        animation_set_error(BAD_DATA);
        reader_abort();
        return;
    }
    fill_frame(read, &read->clip->frames[frame]);
    file->times.push_back(reader_float(0));
}

float read_clip(ClipTree* tree, AnimationClip* clip, const char* file, float start, float hold);

// The shift of the enclosing clip is not added to that of a sub-clip; intended. Its failure does not end this read.
void read_subclip(ClipRead* read, const SubclipLine& line, AnimationClip* subclip) {
    if (!line.file) { return; }
    const float length = read_clip(read->tree, subclip, line.file->c_str(), line.time, line.hold);
    if (line.hold == HOLD_NONE && length > read->end) { read->end = length; }
}

void read_subclip_line(ClipRead* read) {
    std::vector<SubclipLine>& lines = read->file->subclips;
    if (lines.size() >= static_cast<size_t>(read->clip->subclip_count)) {
        animation_set_error(BAD_DATA);
        reader_abort();
        return;
    }
    const float hold = reader_token_count() == SUBCLIP_TOKEN_LIMIT ? reader_float(2) : HOLD_NONE;
    lines.push_back({reader_float(0), reader_text_if_any(1), hold});
    read_subclip(read, lines.back(), &read->clip->subclips[lines.size() - 1]);
}

void fill_line(void* context) {
    ClipRead* read = static_cast<ClipRead*>(context);
    if (read->tree->failed) {
        reader_abort();
    } else if (reader_token_equals("names", 0)) {
        return;
    } else if (reader_token_count() > SUBCLIP_TOKEN_LIMIT) {
        read_frame_line(read);
    } else {
        read_subclip_line(read);
    }
}

// One name for one file, however the path to it is written. Where the system has no such name, or one that these bytes
// cannot hold, the path under which the file was found has to do: the table of open files bounds the depth anyway.
std::string file_identity(const std::string& path) {
    const std::string found = file_resolve(path.c_str());
    try {
        return std::filesystem::canonical(found).string();
    } catch (const std::exception&) { return found; }
}

void fill_from_file(ClipRead* read, const std::string& path) {
    ClipFile* file = read->file;
    file->owner = read->clip;
    file->complete = reader_run_file(path.c_str(), COMMENT_CHARS, COMMENT_COUNT, fill_line, read) != 0;
}

// What the second pass over the file would do once more.
void fill_from_owner(ClipRead* read) {
    const ClipFile& file = *read->file;
    AnimationClip* clip = read->clip;
    clip->shares_keys = 1;
    const auto frame_count = std::min(file.times.size(), static_cast<size_t>(clip->frame_count));
    for (size_t i = 0; i < frame_count; ++i) {
        clip->frames[i].time = file.times[i] + read->start;
        clip->frames[i].keys = file.owner->frames[i].keys;
    }
    const auto subclip_count = std::min(file.subclips.size(), static_cast<size_t>(clip->subclip_count));
    for (size_t i = 0; i < subclip_count && !read->tree->failed; ++i) {
        read_subclip(read, file.subclips[i], &clip->subclips[i]);
    }
    if (!file.complete && !read->tree->failed) { animation_set_error(BAD_DATA); }
}

bool fill_clip(ClipRead* read, const std::string& path, const std::string& identity) {
    read->tree->open_files.push_back(identity);
    if (read->file->owner == nullptr) {
        fill_from_file(read, path);
    } else {
        fill_from_owner(read);
    }
    read->tree->open_files.pop_back();
    animation_index_frames(read->clip);
    return read->file->complete && !read->tree->failed;
}

// The first pass over a file, or what it came to when it was made before. False when the clip is to stay as it is.
bool count_file(ClipRead* read, const std::string& path, const std::string& identity) {
    ClipTree* tree = read->tree;
    const auto known = tree->files.find(identity);
    if (known != tree->files.end()) {
        read->file = &known->second;
        if (!read->file->error.empty()) {
            animation_set_error(read->file->error.c_str());
            return false;
        }
        claim_subclips(tree, read->file->subclip_count);
        claim_keys(tree, read->file->frame_count);
        return !tree->failed;
    }
    ClipFile counted;
    read->file = &counted;
    const int complete = reader_run_file(path.c_str(), COMMENT_CHARS, COMMENT_COUNT, count_line, read);
    read->file = nullptr;  // its record outlives this call only further down
    // Without a text the file is not there, which may be so for the moment, or the tree has failed as a whole.
    if (complete == 0 && (animation_error() == nullptr || tree->failed)) { return false; }
    if (complete == 0) { counted.error = animation_error(); }
    if (!counted.has_track_line) { number_columns(&counted, read->slot_count); }
    read->file = &tree->files.emplace(identity, std::move(counted)).first->second;
    if (complete != 0) { claim_keys(tree, int64_t{read->file->frame_count} * (1 + read->file->names_count)); }
    return complete != 0 && !tree->failed;
}

// Before the clip has a name: what was looked for stays known.
float leave_unread(AnimationClip* clip, const std::string& path) {
    str_free(clip->unread_path);
    clip->unread_path = str_dup(path.c_str());
    return 0.0f;
}

float read_clip(ClipTree* tree, AnimationClip* clip, const char* file, float start, float hold) {
    animation_set_error(nullptr);
    ClipRead read{
        .tree = tree, .file = nullptr, .clip = clip, .start = start, .slot_count = animation_slot_count(tree->model)};
    const std::string path = path_join(tree->directory.c_str(), file);
    const std::string identity = file_identity(path);
    const std::vector<std::string>& open = tree->open_files;
    if (std::find(open.begin(), open.end(), identity) != open.end()) {
        return leave_unread(clip, path);  // a clip inside itself
    }
    // As deep as the table of open files lets a tree be, whether its files are read or known.
    if (open.size() >= FILE_TABLE_SIZE || !count_file(&read, path, identity)) { return leave_unread(clip, path); }
    prepare_clip(&read, path, hold);
    if (!fill_clip(&read, path, identity)) { return 0.0f; }
    if (read.end > clip->end_time) { clip->end_time = read.end; }
    if (hold != HOLD_NONE) { clip->end_time = hold; }
    return clip->end_time;
}

}  // namespace

float animation_read_clip(Model* model, AnimationClip* clip, const char* directory, const char* file, float start,
                          float hold, int64_t* keys) {
    if (model == nullptr || clip == nullptr || directory == nullptr || file == nullptr) { return 0.0f; }
    int64_t own_keys = 0;
    ClipTree tree{.model = model,
                  .directory = directory,
                  .keys = keys != nullptr ? keys : &own_keys,
                  .open_files = {},
                  .files = {}};
    return read_clip(&tree, clip, file, start, hold);
}

}  // namespace pelt
