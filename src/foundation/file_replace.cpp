// Writing a whole file so that a full disk costs nothing of the one that was there.
//
// The content goes to a file of its own beside the target, which takes the target's name when it is complete. What
// surprises: a file can be writable in a directory that is not. It is then written in place, its new end first: only
// that needs room on the disk, and where there is none it is cut off again before the old content is touched.
#include "foundation/file_replace.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/file_find.h"

namespace pelt {

namespace {

constexpr mode_t PERMISSIONS = 0666;
constexpr mode_t PERMISSION_BITS = 07777;
constexpr int NAME_ATTEMPTS = 100;

struct Content {
    const char* data;
    size_t size;
};

bool write_from(int descriptor, Content content, size_t start, size_t end) {
    while (start < end) {
        const ssize_t written = pwrite(descriptor, content.data + start, end - start, static_cast<off_t>(start));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        start += static_cast<size_t>(written);
    }
    return true;
}

// A pipe or a terminal has no places to write at.
void write_to_device(int descriptor, Content content) {
    while (content.size > 0) {
        const ssize_t written = write(descriptor, content.data, content.size);
        if (written <= 0) {
            return;
        }
        content.data += written;
        content.size -= static_cast<size_t>(written);
    }
}

void write_in_place(int descriptor, Content content, off_t old_size) {
    const size_t kept = static_cast<size_t>(old_size) < content.size ? static_cast<size_t>(old_size) : content.size;
    if (!write_from(descriptor, content, kept, content.size)) {
        // Whether the cut succeeds is not looked at: there is nothing else to be done.
        [[maybe_unused]] const int cut = ftruncate(descriptor, old_size);
        return;
    }
    if (write_from(descriptor, content, 0, kept)) {
        [[maybe_unused]] const int cut = ftruncate(descriptor, static_cast<off_t>(content.size));
    }
}

// A new file in the directory of the target, and its name; -1 when none can be made.
int make_temporary(const std::string& target, std::string* name) {
    const size_t slash = target.rfind('/');
    const std::string directory = slash == std::string::npos ? std::string() : target.substr(0, slash + 1);
    for (int attempt = 0; attempt < NAME_ATTEMPTS; ++attempt) {
        *name = directory + ".pelt-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp";
        const int descriptor = open(name->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, PERMISSIONS);
        if (descriptor >= 0 || errno != EEXIST) {
            return descriptor;
        }
    }
    return -1;
}

// False when no file beside the target can take its place; the target is untouched then, and when the disk is full.
bool write_beside(const std::string& target, Content content, const struct stat* old) {
    std::string name;
    const int descriptor = make_temporary(target, &name);
    if (descriptor < 0) {
        return false;
    }
    bool complete = write_from(descriptor, content, 0, content.size);
    if (old != nullptr && fchmod(descriptor, old->st_mode & PERMISSION_BITS) != 0) {
        complete = false;
    }
    // Some file systems tell of a full disk only here.
    complete = close(descriptor) == 0 && complete;
    const bool renamed = complete && std::rename(name.c_str(), target.c_str()) == 0;
    if (!renamed) {
        unlink(name.c_str());
    }
    return renamed || !complete;
}

// The file that a link leads to, so that the link stays one.
std::string real_name(const std::string& name) {
    char* resolved = realpath(name.c_str(), nullptr);
    const std::string result = resolved != nullptr ? resolved : name;
    std::free(resolved);
    return result;
}

// One name alone leads to the file, and it is the user's own; another file in its place would part it from the rest.
bool may_be_replaced(const struct stat& old) { return old.st_nlink == 1 && old.st_uid == geteuid(); }

}  // namespace

int file_replace(const char* path, const void* data, size_t size) {
    const Content content{static_cast<const char*>(data), size};
    const std::string name = file_name_to_write(path);
    if (name.empty()) {
        return 0;
    }
    struct stat old;
    // Without emptying what is there. A link that leads nowhere makes the file it names, as opening does.
    const bool existed = stat(name.c_str(), &old) == 0;
    if (!existed && errno == ENOENT && faccessat(AT_FDCWD, name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) != 0 &&
        write_beside(name, content, nullptr)) {
        return 1;
    }
    const int flags = O_WRONLY | O_NONBLOCK | O_CLOEXEC | (existed ? 0 : O_CREAT);
    const int descriptor = open(name.c_str(), flags, PERMISSIONS);
    if (descriptor < 0) {
        return 0;
    }
    int result = fstat(descriptor, &old) == 0 ? 1 : 0;
    if (result == 1 && S_ISCHR(old.st_mode)) {
        write_to_device(descriptor, content);
    } else if (result == 1 && S_ISREG(old.st_mode)) {
        if (!existed || !may_be_replaced(old) || !write_beside(real_name(name), content, &old)) {
            write_in_place(descriptor, content, old.st_size);
        }
    } else {
        result = 0;
    }
    close(descriptor);
    return result;
}

}  // namespace pelt
