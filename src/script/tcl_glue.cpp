// The connection to Tcl. What surprises: the interpreter can end at any moment in which scripts run, also inside a
// call of this library, so that it is looked up afresh by every operation and held while a script runs in it. And Tk
// need not be there: the command works in a plain Tcl, and a window is what needs more.
#include "script/tcl_glue.h"

#include <cstring>

#include "foundation/file_access.h"
#include "foundation/text.h"

#include <tcl.h>
// Behind everything of ours, for the macros of Xlib.
#include <tk.h>
#ifdef _WIN32
#include <windows.h>

#include <tkPlatDecls.h>
#endif

namespace pelt {

namespace {

constexpr char STUBS_VERSION[] = "8.4";
TclGlue glue;
bool tk_bound = false;
bool words_kept = false;  // a word that the system's encoding cannot hold has come in

void interpreter_deleted(void*, Tcl_Interp* interp) {
    if (glue.interp == interp) { glue.interp = nullptr; }
}

bool is_ascii(const char* text, size_t length) {
    for (size_t i = 0; i < length; ++i) {
        if (static_cast<unsigned char>(text[i]) >= 0x80) { return false; }
    }
    return true;
}

// The encoding of texts inside the library; null is Tcl's own word for that of the system.
Tcl_Encoding text_encoding() {
    static Tcl_Encoding encoding = SYSTEM_TEXT_IS_UTF8 ? Tcl_GetEncoding(nullptr, "utf-8") : nullptr;
    return encoding;
}

// Whether every character beyond ASCII is a whole sequence of two or three bytes, as Tcl writes them.
bool is_tcl_form(const char* text) {
    while (*text != '\0') {
        const auto lead = static_cast<unsigned char>(*text++);
        if (lead < 0x80) { continue; }
        if (lead < 0xC2 || lead > 0xEF) { return false; }
        for (int more = lead < 0xE0 ? 1 : 2; more > 0; --more, ++text) {
            if ((static_cast<unsigned char>(*text) & 0xC0) != 0x80) { return false; }
        }
    }
    return true;
}

// Appends a text of Tcl's in the system's encoding, and tells whether that can hold it; appends nothing if not.
bool append_external(const char* word, size_t length, std::string* out) {
    Tcl_DString external;
    Tcl_DString back;
    Tcl_UtfToExternalDString(text_encoding(), word, static_cast<int>(length), &external);
    Tcl_ExternalToUtfDString(text_encoding(), Tcl_DStringValue(&external), Tcl_DStringLength(&external), &back);
    const bool whole = static_cast<size_t>(Tcl_DStringLength(&back)) == length &&
                       std::memcmp(Tcl_DStringValue(&back), word, length) == 0 &&
                       std::strlen(Tcl_DStringValue(&external)) == static_cast<size_t>(Tcl_DStringLength(&external));
    if (whole) { out->append(Tcl_DStringValue(&external)); }
    Tcl_DStringFree(&back);
    Tcl_DStringFree(&external);
    return whole;
}

}  // namespace

int tcl_glue_init(Tcl_Interp* interp) {
    glue = TclGlue{};
    tk_bound = false;
    if (Tcl_InitStubs(interp, STUBS_VERSION, 0) == nullptr) { return 1; }
    glue.interp = interp;
    tk_bind();
    Tcl_CallWhenDeleted(interp, interpreter_deleted, nullptr);
    return 0;
}

TclGlue* tcl_glue() { return &glue; }

Tcl_Interp* tcl_interp() {
    if (glue.interp == nullptr || Tcl_InterpDeleted(glue.interp)) { return nullptr; }
    return glue.interp;
}

// Taking the stubs alone would ask for the package, and so load it.
bool tk_bind() {
    Tcl_Interp* interp = tcl_interp();
    if (tk_bound || interp == nullptr) { return tk_bound; }
    Tcl_SavedResult saved;
    Tcl_SaveResult(interp, &saved);
    const bool is_present = Tcl_PkgPresent(interp, "Tk", STUBS_VERSION, 0) != nullptr;
    tk_bound = is_present && Tk_InitStubs(interp, STUBS_VERSION, 0) != nullptr;
    Tcl_RestoreResult(interp, &saved);
    return tk_bound;
}

bool tk_is_bound() { return tk_bound; }

std::uintptr_t tk_instance() {
    if (!tk_bound) { return 0; }
#ifdef _WIN32
    return reinterpret_cast<std::uintptr_t>(Tk_GetHINSTANCE());
#else
    return reinterpret_cast<std::uintptr_t>(tcl_interp());
#endif
}

int tcl_add_command(const char* name, TclCommandProc procedure, void* client_data) {
    Tcl_Interp* interp = tcl_interp();
    if (name == nullptr || procedure == nullptr || interp == nullptr) { return 0; }
    Tcl_CreateCommand(interp, name, procedure, client_data, nullptr);
    return 1;
}

int tcl_add_obj_command(const char* name, TclObjectProc procedure, void* client_data) {
    Tcl_Interp* interp = tcl_interp();
    if (name == nullptr || procedure == nullptr || interp == nullptr) { return 0; }
    Tcl_CreateObjCommand(interp, name, procedure, client_data, nullptr);
    return 1;
}

int tcl_eval(const char* script) {
    Tcl_Interp* interp = tcl_interp();
    if (script == nullptr || interp == nullptr) { return 0; }
    Tcl_Preserve(interp);
    const int code = Tcl_GlobalEval(interp, script);
    Tcl_Release(interp);
    return code != TCL_ERROR;
}

int tcl_eval_aside(const char* script) {
    Tcl_Interp* interp = tcl_interp();
    if (script == nullptr || interp == nullptr) { return 0; }
    Tcl_Preserve(interp);
    Tcl_SavedResult saved;
    Tcl_SaveResult(interp, &saved);
    const int code = Tcl_GlobalEval(interp, script);
    Tcl_RestoreResult(interp, &saved);
    Tcl_Release(interp);
    return code != TCL_ERROR;
}

void tcl_result_text(const char* text) {
    Tcl_Interp* interp = tcl_interp();
    if (text == nullptr || text[0] == '\0' || interp == nullptr) { return; }
    const std::string result = system_to_tcl(text);
    char* copy = Tcl_Alloc(static_cast<unsigned>(result.size() + 1));
    std::memcpy(copy, result.c_str(), result.size() + 1);
    Tcl_SetResult(interp, copy, TCL_DYNAMIC);
}

void tcl_result_reset() {
    Tcl_Interp* interp = tcl_interp();
    if (interp != nullptr) { Tcl_ResetResult(interp); }
}

bool tcl_has_command(const char* name) {
    Tcl_Interp* interp = tcl_interp();
    Tcl_CmdInfo about;
    return interp != nullptr && Tcl_GetCommandInfo(interp, (std::string("::") + name).c_str(), &about) != 0;
}

void tcl_error_line(const std::string& text) {
    Tcl_Channel channel = tcl_interp() != nullptr ? Tcl_GetStdChannel(TCL_STDERR) : nullptr;
    if (channel == nullptr) { return; }
    const std::string line = text + "\n";
    Tcl_WriteChars(channel, line.c_str(), static_cast<int>(line.size()));
    Tcl_Flush(channel);
}

WindowHandle tk_native_window(const char* path) {
    Tcl_Interp* interp = tcl_interp();
    if (path == nullptr || interp == nullptr || !tk_bound) { return 0; }
    Tk_Window main_window = Tk_MainWindow(interp);
    if (main_window == nullptr) { return 0; }
    const std::string name = system_to_tcl(path);
    Tk_Window window = Tk_NameToWindow(interp, name.c_str(), main_window);
    return window != nullptr ? gl_window_of_tk(window) : 0;
}

void tcl_to_system(const char* word, size_t length, std::string* out) {
    if (is_ascii(word, length)) {
        out->append(word, length);
    } else if (!append_external(word, length, out)) {
        out->append(word, length);
        words_kept = true;
    }
}

std::string system_to_tcl(const char* text) {
    const size_t length = std::strlen(text);
    if (is_ascii(text, length)) { return std::string(text, length); }
    // What the encoding cannot hold, and is in Tcl's form, is taken for what came in from Tcl and was kept that way.
    std::string unused;
    if (words_kept && is_tcl_form(text) && !append_external(text, length, &unused)) {
        return std::string(text, length);
    }
    Tcl_DString utf;
    Tcl_ExternalToUtfDString(text_encoding(), text, static_cast<int>(length), &utf);
    std::string result(Tcl_DStringValue(&utf), static_cast<size_t>(Tcl_DStringLength(&utf)));
    Tcl_DStringFree(&utf);
    return result;
}

std::string tcl_resolve_backslashes(const std::string& text) {
    std::string result;
    const char* at = text.c_str();
    while (*at != '\0') {
        const char* backslash = std::strchr(at, '\\');
        if (backslash == nullptr) {
            result.append(at);
            break;
        }
        result.append(at, backslash);
        char resolved[16];
        int read = 0;
        const int written = Tcl_UtfBackslash(backslash, &read, resolved);
        result.append(resolved, static_cast<size_t>(written));
        at = backslash + read;
    }
    return result;
}

}  // namespace pelt
