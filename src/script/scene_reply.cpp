// Results of the verb "scene".
#include "script/scene_reply.h"

#include <charconv>
#include <cmath>

#include "script/tcl_glue.h"

#include <tcl.h>

namespace pelt {

namespace {

// Between these a number is written without an exponent.
constexpr float PLAIN_LEAST = 1e-6f;
constexpr float PLAIN_MOST = 1e9f;

}  // namespace

std::string real_text(float value) {
    char text[64];
    const float size = std::fabs(value);
    const bool plain = size < PLAIN_MOST && (size >= PLAIN_LEAST || size == 0.0f);
    const float told = value == 0.0f ? 0.0f : value;  // no zero has a sign
    const auto end = plain ? std::to_chars(text, text + sizeof text, told, std::chars_format::fixed)
                           : std::to_chars(text, text + sizeof text, told);
    return std::string(text, end.ptr);
}

Tcl_Obj* reply_text(const std::string& text) {
    const std::string utf = system_to_tcl(text.c_str());
    return Tcl_NewStringObj(utf.data(), static_cast<int>(utf.size()));
}

Tcl_Obj* reply_int(int64_t value) { return Tcl_NewWideIntObj(static_cast<Tcl_WideInt>(value)); }

Tcl_Obj* reply_flag(bool value) { return Tcl_NewIntObj(value ? 1 : 0); }

Tcl_Obj* reply_real(float value) { return reply_text(real_text(value)); }

Tcl_Obj* reply_vec(const Vec3& v) {
    return ReplyList().add(reply_real(v.x)).add(reply_real(v.y)).add(reply_real(v.z)).value();
}

Tcl_Obj* reply_matrix(const Mat4& m) {
    ReplyList list;
    for (const float value : m.m) { list.add(reply_real(value)); }
    return list.value();
}

ReplyList::ReplyList() : list_(Tcl_NewListObj(0, nullptr)) {}

ReplyList& ReplyList::add(Tcl_Obj* value) {
    Tcl_ListObjAppendElement(nullptr, list_, value);
    return *this;
}

ReplyList& ReplyList::add(const char* key, Tcl_Obj* value) { return add(Tcl_NewStringObj(key, -1)).add(value); }

}  // namespace pelt
