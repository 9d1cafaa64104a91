// Results of the verb "scene": Tcl's lists and dictionaries. A dictionary is a list of keys and values by turns, so
// that a Tcl without dictionaries can read it too.
#pragma once

#include <cstdint>
#include <string>

#include "foundation/math3d.h"

struct Tcl_Obj;

namespace pelt {

// The shortest decimals that are read back as the same value.
std::string real_text(float value);

// A value in the making, whose owner is whoever it is handed to: a list that takes it, or the interpreter.
Tcl_Obj* reply_text(const std::string& text);  // in the system's encoding
Tcl_Obj* reply_int(int64_t value);
Tcl_Obj* reply_flag(bool value);
Tcl_Obj* reply_real(float value);
Tcl_Obj* reply_vec(const Vec3& v);
Tcl_Obj* reply_matrix(const Mat4& m);  // 16 numbers, row by row

class ReplyList {
public:
    ReplyList();
    ReplyList& add(Tcl_Obj* value);
    ReplyList& add(const char* key, Tcl_Obj* value);  // an entry of a dictionary
    Tcl_Obj* value() const { return list_; }          // to be handed on

private:
    Tcl_Obj* list_;
};

}  // namespace pelt
