#include "script/scene_call.h"
namespace pelt {
std::span<const SceneForm> scene_mark_forms() { return {}; }
}
