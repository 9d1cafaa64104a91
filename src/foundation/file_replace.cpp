// Writing a whole file so that neither a full disk nor a crash costs anything of the one that was there.
//
// The content goes to a file of its own beside the target, which takes the target's name when it is on the disk and is
// all that the target was but for its content. What surprises: that cannot always be, as in a directory that takes no
// new files, or for a file with several names. The target is then written in place, and what it held lies in a copy
// for as long as that takes, in another directory if need be.
#include "foundation/file_replace.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "foundation/file_find.h"

namespace pelt {

namespace {

constexpr mode_t PERMISSIONS = 0666;
constexpr mode_t PERMISSIONS_OF_OWNER = 0600;  // until a file is known to be for others too
constexpr mode_t PERMISSION_BITS = 07777;
constexpr int NAME_ATTEMPTS = 100;
constexpr int LINK_LIMIT = 40;  // as the system's own
constexpr size_t BLOCK_SIZE = 65536;

struct Content {
    const char* data;
    size_t size;
};

// The functions below return 0 or an error number, unless they say otherwise.

int last_error() { return errno != 0 ? errno : EIO; }

int write_at(int descriptor, off_t place, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t written = pwrite(descriptor, data, size, place);
        if (written < 0 && errno == EINTR) { continue; }
        if (written <= 0) { return written < 0 ? last_error() : ENOSPC; }
        place += written;
        data += written;
        size -= static_cast<size_t>(written);
    }
    return 0;
}

int write_from(int descriptor, Content content, size_t start, size_t end) {
    return write_at(descriptor, static_cast<off_t>(start), content.data + start, end - start);
}

// A pipe or a terminal has no places to write at.
int write_to_device(int descriptor, Content content) {
    while (content.size > 0) {
        const ssize_t written = write(descriptor, content.data, content.size);
        if (written <= 0) { return written < 0 ? last_error() : ENOSPC; }
        content.data += written;
        content.size -= static_cast<size_t>(written);
    }
    return 0;
}

int cut(int descriptor, off_t size) { return ftruncate(descriptor, size) == 0 ? 0 : last_error(); }

int bring_to_disk(int descriptor) {
    while (fsync(descriptor) != 0) {
        if (errno != EINTR) {
            // A file system that has no such thing is no failure.
            return errno == EINVAL || errno == ENOTSUP ? 0 : last_error();
        }
    }
    return 0;
}

// With its separator; empty for the current one.
std::string directory_of(const std::string& name) {
    const size_t slash = name.rfind('/');
    return slash == std::string::npos ? std::string() : name.substr(0, slash + 1);
}

// Names in a directory are no content: that they could not be brought to the disk makes nothing undone.
void bring_names_to_disk(const std::string& directory) {
    const int descriptor = open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        bring_to_disk(descriptor);
        close(descriptor);
    }
}

// A new file in the directory, and its name; -1 when none can be made.
int make_temporary(const std::string& directory, mode_t permissions, std::string* name) {
    for (int attempt = 0; attempt < NAME_ATTEMPTS; ++attempt) {
        *name = directory + ".pelt-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp";
        const int descriptor = open(name->c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
        if (descriptor >= 0 || errno != EEXIST) { return descriptor; }
    }
    return -1;
}

// ---- what a file is beside its content ----

bool take_owner_and_group(int descriptor, const struct stat& old) {
    struct stat own;
    if (fstat(descriptor, &own) != 0) { return false; }
    return (own.st_uid == old.st_uid && own.st_gid == old.st_gid) || fchown(descriptor, old.st_uid, old.st_gid) == 0;
}

using Attributes = std::map<std::string, std::string>;

// Extended attributes, of which the access list is one. False when they cannot be told.
bool read_attributes(int descriptor, Attributes* attributes) {
    const ssize_t size = flistxattr(descriptor, nullptr, 0);
    if (size <= 0) { return size == 0 || errno == ENOTSUP; }
    std::string names(static_cast<size_t>(size), '\0');
    if (flistxattr(descriptor, names.data(), names.size()) != size) { return false; }
    for (size_t start = 0; start < names.size(); start = names.find('\0', start) + 1) {
        const char* name = names.c_str() + start;
        const ssize_t length = fgetxattr(descriptor, name, nullptr, 0);
        if (length < 0) { return false; }
        std::string value(static_cast<size_t>(length), '\0');
        if (length > 0 && fgetxattr(descriptor, name, value.data(), value.size()) != length) { return false; }
        attributes->emplace(name, std::move(value));
    }
    return true;
}

// A new file may have got an access list of its directory's, which the old one need not have.
bool take_attributes(int from, int to) {
    Attributes wanted, own;
    if (!read_attributes(from, &wanted) || !read_attributes(to, &own)) { return false; }
    for (const auto& [name, value] : own) {
        if (wanted.count(name) == 0 && fremovexattr(to, name.c_str()) != 0) { return false; }
    }
    for (const auto& [name, value] : wanted) {
        const auto present = own.find(name);
        const bool same = present != own.end() && present->second == value;
        if (!same && fsetxattr(to, name.c_str(), value.data(), value.size(), 0) != 0) { return false; }
    }
    return true;
}

// The permissions last, because a new owner or access list changes them.
bool take_everything(int from, const struct stat& old, int to) {
    return take_owner_and_group(to, old) && take_attributes(from, to) && fchmod(to, old.st_mode & PERMISSION_BITS) == 0;
}

// ---- a new file that takes the name ----

int write_and_close(int descriptor, Content content) {
    int error = write_from(descriptor, content, 0, content.size);
    if (error == 0) { error = bring_to_disk(descriptor); }
    // Some file systems tell of a full disk only here.
    return close(descriptor) == 0 || error != 0 ? error : last_error();
}

// Whether the file has the name now; if not, it is gone.
bool take_name(const std::string& temporary, const std::string& name) {
    if (std::rename(temporary.c_str(), name.c_str()) != 0) {
        const int error = errno;
        unlink(temporary.c_str());
        errno = error;
        return false;
    }
    bring_names_to_disk(directory_of(name));
    return true;
}

FileReplacement not_opened() { return {false, last_error(), {}}; }

FileReplacement make_file(const std::string& name, Content content) {
    std::string temporary;
    const int descriptor = make_temporary(directory_of(name), PERMISSIONS, &temporary);
    if (descriptor < 0) { return not_opened(); }
    const int error = write_and_close(descriptor, content);
    if (error != 0) {
        unlink(temporary.c_str());
        return {true, error, {}};
    }
    return take_name(temporary, name) ? FileReplacement{true, 0, {}} : not_opened();
}

// False when no file beside the target can take its place, which is untouched then. True with an error number when the
// content could not be written.
bool write_beside(const std::string& target, int old_descriptor, const struct stat& old, Content content, int* error) {
    std::string temporary;
    const int descriptor = make_temporary(directory_of(target), PERMISSIONS_OF_OWNER, &temporary);
    if (descriptor < 0) { return false; }
    if (!take_everything(old_descriptor, old, descriptor)) {
        close(descriptor);
        unlink(temporary.c_str());
        return false;
    }
    *error = write_and_close(descriptor, content);
    if (*error != 0) {
        unlink(temporary.c_str());
        return true;
    }
    return take_name(temporary, target);
}

// ---- writing in place ----

// What a file held before it is written in place; closed and removed by drop_copy.
struct Copy {
    int descriptor;
    std::string name;
};

int copy_bytes(int from, int to) {
    std::vector<char> block(BLOCK_SIZE);
    for (off_t place = 0;;) {
        const ssize_t size = pread(from, block.data(), block.size(), place);
        if (size < 0 && errno == EINTR) { continue; }
        if (size <= 0) { return size == 0 ? 0 : last_error(); }
        const int error = write_at(to, place, block.data(), static_cast<size_t>(size));
        if (error != 0) { return error; }
        place += size;
    }
}

void drop_copy(const Copy& copy) {
    close(copy.descriptor);
    unlink(copy.name.c_str());
}

int make_copy_in(const std::string& directory, int descriptor, Copy* copy) {
    copy->descriptor = make_temporary(directory, PERMISSIONS_OF_OWNER, &copy->name);
    if (copy->descriptor < 0) { return last_error(); }
    int error = copy_bytes(descriptor, copy->descriptor);
    if (error == 0) { error = bring_to_disk(copy->descriptor); }
    if (error != 0) {
        drop_copy(*copy);
        return error;
    }
    bring_names_to_disk(directory);
    return 0;
}

// Beside the file, or where the system keeps what must not be lost when it starts anew, or at least for a while.
int make_copy(const std::string& target, int descriptor, Copy* copy) {
    const char* chosen = std::getenv("TMPDIR");
    int error = make_copy_in(directory_of(target), descriptor, copy);
    for (const char* directory : {chosen, "/var/tmp", "/tmp"}) {
        if (error != 0 && directory != nullptr && *directory != '\0') {
            error = make_copy_in(std::string(directory) + "/", descriptor, copy);
        }
    }
    return error;
}

int put_back(const Copy& copy, int descriptor, off_t old_size) {
    int error = copy_bytes(copy.descriptor, descriptor);
    if (error == 0) { error = cut(descriptor, old_size); }
    return error == 0 ? bring_to_disk(descriptor) : error;
}

int overwrite(int descriptor, Content content, size_t kept) {
    int error = write_from(descriptor, content, 0, kept);
    if (error == 0) { error = cut(descriptor, static_cast<off_t>(content.size)); }
    return error == 0 ? bring_to_disk(descriptor) : error;
}

FileReplacement write_in_place(const std::string& target, int descriptor, Content content, off_t old_size) {
    Copy copy{};
    int error = make_copy(target, descriptor, &copy);
    if (error != 0) { return {true, error, {}}; }
    // The new end first, because only that needs room: where there is none, what was there is not touched at all.
    const size_t kept = std::min(static_cast<size_t>(old_size), content.size);
    bool is_whole = true;
    error = write_from(descriptor, content, kept, content.size);
    if (error != 0) {
        is_whole = cut(descriptor, old_size) == 0;
    } else {
        error = overwrite(descriptor, content, kept);
        is_whole = error == 0;
    }
    if (is_whole || put_back(copy, descriptor, old_size) == 0) {
        drop_copy(copy);
        return {true, error, {}};
    }
    close(copy.descriptor);
    return {true, error, copy.name};
}

// ---- finding out which ----

// The name behind all links, so that the links stay; also where that file is still to be made.
std::string followed(std::string name) {
    for (int link = 0; link < LINK_LIMIT; ++link) {
        char target[PATH_MAX];
        const ssize_t length = readlink(name.c_str(), target, sizeof target);
        if (length <= 0 || static_cast<size_t>(length) == sizeof target) { break; }
        const std::string next(target, static_cast<size_t>(length));
        name = next.front() == '/' ? next : directory_of(name) + next;
    }
    return name;
}

bool is_name_of(const std::string& name, const struct stat& file) {
    struct stat named;
    return lstat(name.c_str(), &named) == 0 && named.st_dev == file.st_dev && named.st_ino == file.st_ino;
}

FileReplacement write_open_file(int descriptor, const std::string& name, Content content) {
    struct stat old;
    if (fstat(descriptor, &old) != 0) { return not_opened(); }
    if (S_ISCHR(old.st_mode)) { return {true, write_to_device(descriptor, content), {}}; }
    if (!S_ISREG(old.st_mode)) { return {false, EINVAL, {}}; }
    const std::string target = followed(name);
    int error = 0;
    // Another file in the place of one with several names would part it from the rest.
    if (old.st_nlink == 1 && is_name_of(target, old) && write_beside(target, descriptor, old, content, &error)) {
        return {true, error, {}};
    }
    return write_in_place(target, descriptor, content, old.st_size);
}

// Without emptying what is there, and readable where that is allowed, for the copy.
int open_old(const char* name) {
    constexpr int FLAGS = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const int descriptor = open(name, O_RDWR | FLAGS);
    return descriptor >= 0 ? descriptor : open(name, O_WRONLY | FLAGS);
}

}  // namespace

FileReplacement file_replace(const char* path, const void* data, size_t size) {
    const Content content{static_cast<const char*>(data), size};
    const std::string name = path != nullptr ? file_name_to_write(path) : std::string();
    struct stat old;
    if (stat(name.c_str(), &old) != 0) {
        return errno == ENOENT && !name.empty() ? make_file(followed(name), content) : not_opened();
    }
    const int descriptor = open_old(name.c_str());
    if (descriptor < 0) { return not_opened(); }
    FileReplacement result = write_open_file(descriptor, name, content);
    close(descriptor);
    return result;
}

}  // namespace pelt
