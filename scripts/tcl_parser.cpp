// Tcl's own parser as two commands, for check-tcl beside this. What they give back has the place of everything as a
// line, counted from the first line of the text that was handed in.
//
//   parse_script TEXT   a list of commands, each a list of words; a word is {KIND TEXT LINE REFERENCES}, KIND one of
//                       braced, plain (no substitution), mixed, and expand for what {*} stands in front of
//   parse_expr TEXT     the references of an expression
//
// A reference is {variable NAME LINE} or {script TEXT LINE}, in the order in which they stand, those in an index of an
// array too. A text that cannot be parsed is an error, with the line in front of what Tcl says.
#include <algorithm>
#include <cstring>

#include <tcl.h>

namespace {

int line_of(const char* text, const char* place) { return static_cast<int>(std::count(text, place, '\n')); }

Tcl_Obj* text_of(const char* start, int length) { return Tcl_NewStringObj(start, length); }

void append(Tcl_Obj* list, Tcl_Obj* element) { Tcl_ListObjAppendElement(nullptr, list, element); }

Tcl_Obj* reference(const char* kind, Tcl_Obj* text, int line) {
    Tcl_Obj* words[] = {Tcl_NewStringObj(kind, -1), text, Tcl_NewIntObj(line)};
    return Tcl_NewListObj(3, words);
}

// What is referred to anywhere in these tokens: inner ones follow their outer one in the same row.
Tcl_Obj* references(const char* text, const Tcl_Token* tokens, int count) {
    Tcl_Obj* list = Tcl_NewListObj(0, nullptr);
    for (int i = 0; i < count; ++i) {
        const Tcl_Token& token = tokens[i];
        const int line = line_of(text, token.start);
        if (token.type == TCL_TOKEN_VARIABLE) {
            append(list, reference("variable", text_of(tokens[i + 1].start, tokens[i + 1].size), line));
        } else if (token.type == TCL_TOKEN_COMMAND) {
            append(list, reference("script", text_of(token.start + 1, token.size - 2), line));
        }
    }
    return list;
}

Tcl_Obj* word_of(const char* text, const Tcl_Token* word) {
    const char* kind = "mixed";
    Tcl_Obj* value = text_of(word->start, word->size);
    if (word->type == TCL_TOKEN_EXPAND_WORD) {
        kind = "expand";
    } else if (*word->start == '{') {
        // As it was written: a line that goes on behind a backslash makes several tokens of it.
        kind = "braced";
        value = text_of(word->start + 1, word->size - 2);
    } else if (word->type == TCL_TOKEN_SIMPLE_WORD) {
        kind = "plain";
        value = text_of(word[1].start, word[1].size);
    }
    Tcl_Obj* words[] = {Tcl_NewStringObj(kind, -1), value, Tcl_NewIntObj(line_of(text, word[1].start)),
                        references(text, word + 1, word->numComponents)};
    return Tcl_NewListObj(4, words);
}

int refuse(Tcl_Interp* interp, const char* text, const char* place) {
    Tcl_Obj* message = Tcl_NewIntObj(line_of(text, place));
    Tcl_AppendStringsToObj(message, " ", Tcl_GetStringResult(interp), nullptr);
    Tcl_SetObjResult(interp, message);
    return TCL_ERROR;
}

int parse_script(ClientData, Tcl_Interp* interp, int count, Tcl_Obj* const words[]) {
    if (count != 2) {
        Tcl_WrongNumArgs(interp, 1, words, "text");
        return TCL_ERROR;
    }
    int length = 0;
    const char* text = Tcl_GetStringFromObj(words[1], &length);
    const char* end = text + length;
    Tcl_Obj* commands = Tcl_NewListObj(0, nullptr);
    for (const char* at = text; at < end;) {
        Tcl_Parse parse;
        if (Tcl_ParseCommand(interp, at, static_cast<int>(end - at), 0, &parse) != TCL_OK) {
            return refuse(interp, text, parse.term != nullptr ? parse.term : at);
        }
        if (parse.numWords > 0) {
            Tcl_Obj* command = Tcl_NewListObj(0, nullptr);
            const Tcl_Token* word = parse.tokenPtr;
            for (int i = 0; i < parse.numWords; ++i, word += word->numComponents + 1) {
                append(command, word_of(text, word));
            }
            append(commands, command);
        }
        at = parse.commandStart + parse.commandSize;
        Tcl_FreeParse(&parse);
    }
    Tcl_SetObjResult(interp, commands);
    return TCL_OK;
}

int parse_expr(ClientData, Tcl_Interp* interp, int count, Tcl_Obj* const words[]) {
    if (count != 2) {
        Tcl_WrongNumArgs(interp, 1, words, "text");
        return TCL_ERROR;
    }
    int length = 0;
    const char* text = Tcl_GetStringFromObj(words[1], &length);
    Tcl_Parse parse;
    if (Tcl_ParseExpr(interp, text, length, &parse) != TCL_OK) { return refuse(interp, text, text); }
    Tcl_SetObjResult(interp, references(text, parse.tokenPtr, parse.numTokens));
    Tcl_FreeParse(&parse);
    return TCL_OK;
}

}  // namespace

extern "C" int Tclparser_Init(Tcl_Interp* interp) {
    if (Tcl_InitStubs(interp, "8.6", 0) == nullptr) { return TCL_ERROR; }
    Tcl_CreateObjCommand(interp, "parse_script", parse_script, nullptr, nullptr);
    Tcl_CreateObjCommand(interp, "parse_expr", parse_expr, nullptr, nullptr);
    return TCL_OK;
}
