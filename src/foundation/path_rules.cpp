// How a path is cut into the directory and the name that a model keeps.
//
// What surprises: an extension is exactly a dot and three characters, and the search for the separator stops before
// them, so that a separator among the last four characters is not seen. A model's name is lower case everywhere;
// whether its directory is, and what separates, are the rules handed in.
#include "foundation/file_access.h"

#include <algorithm>
#include <cstring>

#include "foundation/text.h"

namespace pelt {

namespace {

constexpr size_t EXTENSION_SIZE = 4;  // the dot and three characters

char path_buffer[PATH_BUFFER_SIZE];  // of path_base_name and path_directory
char file_name_buffer[PATH_BUFFER_SIZE];
char file_dir_buffer[PATH_BUFFER_SIZE];
char extension_buffer[PATH_BUFFER_SIZE];

bool is_separator(char c, PathRules rules) { return c == '\\' || (c == '/' && rules.slash_separates); }

// Length of the text up to and with its last separator among the first length bytes; 0 without one.
size_t directory_length(const char* path, size_t length, PathRules rules) {
    while (length > 0 && !is_separator(path[length - 1], rules)) { --length; }
    return length;
}

bool copy_whole(const char* path, char (&buffer)[PATH_BUFFER_SIZE]) {
    return path != nullptr && *path != '\0' && str_copy(path, buffer);
}

// Cuts the extension off the text, lower-cases its name and returns where that begins.
char* cut_name(char* path, PathRules rules) {
    const size_t length = std::strlen(path);
    const size_t extension = length < EXTENSION_SIZE ? 0 : length - EXTENSION_SIZE;
    if (length >= EXTENSION_SIZE && path[extension] == '.') { path[extension] = '\0'; }
    return str_lower(path + directory_length(path, extension, rules));
}

char* lower_if(bool lower, char* path) { return lower ? str_lower(path) : path; }

}  // namespace

std::string path_join(const char* directory, const char* file) {
    std::string path = directory != nullptr ? directory : "";
    if (!path.empty() && path.back() != '/' && path.back() != '\\') { path += PATH_SEPARATOR; }
    return path + (file != nullptr ? file : "");
}

const char* path_base_name(const char* path, PathRules rules) {
    if (!copy_whole(path, path_buffer) || std::strlen(path_buffer) <= EXTENSION_SIZE) {
        return nullptr;  // no name in four characters, with or without a dot: intended
    }
    return cut_name(path_buffer, rules);
}

const char* path_directory(const char* path, PathRules rules) {
    if (!copy_whole(path, path_buffer)) { return nullptr; }
    path_buffer[directory_length(path_buffer, std::strlen(path_buffer), rules)] = '\0';
    return lower_if(rules.lower_directory, path_buffer);
}

bool path_fits(const char* path, PathRules rules) {
    const size_t length = path != nullptr ? std::strlen(path) : PATH_BUFFER_SIZE;
    return length < PATH_BUFFER_SIZE && directory_length(path, length, rules) < DIRECTORY_BUFFER_SIZE;
}

size_t path_directory_length(const char* path, PathRules rules) {
    return path != nullptr ? directory_length(path, std::strlen(path), rules) : 0;
}

std::string path_with_separators(const char* path, PathRules rules) {
    std::string text = path != nullptr ? path : "";
    if (!rules.slash_separates) { std::replace(text.begin(), text.end(), '/', '\\'); }
    return text;
}

std::string path_from(const char* base, const char* path, PathRules rules) {
    const std::string text = path != nullptr ? path : "";
    const bool has_drive = !rules.slash_separates && text.size() > 1 && text[1] == ':';
    const bool is_absolute = has_drive || (!text.empty() && (text[0] == '/' || text[0] == '\\'));
    return is_absolute || base == nullptr || *base == '\0' ? text : path_join(base, text.c_str());
}

const char* path_set_extension(const char* path, const char* extension) {
    str_copy(path, extension_buffer);
    const size_t length = std::strlen(extension_buffer);
    size_t kept = length;
    for (size_t i = length > EXTENSION_SIZE ? length - EXTENSION_SIZE : 0; i > 0; --i) {
        if (extension_buffer[i] == '.') {
            kept = i + 1;
            break;
        }
    }
    str_copy(extension, extension_buffer + kept, PATH_BUFFER_SIZE - kept);
    return extension_buffer;
}

const char* path_file_name(const char* path, PathRules rules) {
    str_copy(path, file_name_buffer);
    return cut_name(file_name_buffer, rules);
}

const char* path_file_dir(const char* path, PathRules rules) {
    str_copy(path, file_dir_buffer);
    const size_t length = directory_length(file_dir_buffer, std::strlen(file_dir_buffer), rules);
    file_dir_buffer[length == 0 ? 0 : length - 1] = '\0';
    return lower_if(rules.lower_directory, file_dir_buffer);
}

}  // namespace pelt
