// The one thread beside that of the interpreter. What surprises: it shares nothing with it but the queue below. A
// picture is handed over whole, and what is written says so by its outcome; nothing of the scene, of Tcl or of OpenGL
// is touched here. The thread ends whenever nothing is left to do, so that a program never ends with it running.
#include "application/picture_queue.h"

#include <deque>
#include <mutex>
#include <system_error>
#include <thread>

#include "application/problem.h"
#include "foundation/file_replace.h"
#include "images/picture_files.h"

namespace pelt {

namespace {

constexpr size_t WAITING_MAX = 3;  // pictures, beside the one in hand

struct Queue {
    std::mutex mutex;
    std::deque<PictureOrder> waiting;
    bool running = false;  // the thread may still look at the queue
    PictureOutcome first_failure;
    int32_t written = 0;
};

// Neither is ever destroyed: the program may end in the middle of all.
Queue& queue() {
    static auto* made = new Queue;
    return *made;
}
std::thread& worker() {
    static auto* made = new std::thread;
    return *made;
}

PictureOutcome failed(const char* kind, const std::string& path, const std::string& text) {
    PictureOutcome outcome;
    outcome.kind = kind;
    outcome.failure.text = text;
    outcome.failure.file = path;
    return outcome;
}

PictureOutcome write_order(const PictureOrder& order) {
    PictureFile file;
    std::string failure;
    const bool made = order.png ? picture_to_png(order.picture, order.dpi, &file, &failure)
                                : picture_to_tga(order.picture, &file, &failure);
    if (!made) { return failed(PROBLEM_SYSTEM, order.path, failure); }
    const FileReplacement replaced = file_replace(order.path.c_str(), file.bytes.get(), file.size);
    if (replaced.error != 0 || !replaced.opened) {
        const std::string reason = std::generic_category().message(replaced.error);
        return failed(PROBLEM_FILE, order.path, "cannot write " + order.path + ": " + reason);
    }
    PictureOutcome outcome;
    outcome.size = file.size;
    return outcome;
}

void note(Queue* to, const PictureOutcome& outcome) {
    if (outcome.kind.empty()) {
        ++to->written;
    } else if (to->first_failure.kind.empty()) {
        to->first_failure = outcome;
    }
}

void work() {
    Queue& shared = queue();
    for (;;) {
        PictureOrder order;
        {
            const std::lock_guard lock(shared.mutex);
            if (shared.waiting.empty()) {
                shared.running = false;
                return;
            }
            order = std::move(shared.waiting.front());
            shared.waiting.pop_front();
        }
        const PictureOutcome outcome = write_order(order);
        const std::lock_guard lock(shared.mutex);
        note(&shared, outcome);
    }
}

void wait_for_worker() {
    if (worker().joinable()) { worker().join(); }
}

}  // namespace

PictureOutcome picture_write(const PictureOrder& order) {
    wait_for_worker();
    return write_order(order);
}

void picture_write_later(PictureOrder&& order) {
    Queue& shared = queue();
    bool full = false;
    {
        const std::lock_guard lock(shared.mutex);
        full = shared.waiting.size() >= WAITING_MAX;
    }
    if (full) { wait_for_worker(); }
    const std::lock_guard lock(shared.mutex);
    shared.waiting.push_back(std::move(order));
    if (shared.running) { return; }
    wait_for_worker();  // it has returned already
    try {
        worker() = std::thread(work);
        shared.running = true;
    } catch (const std::system_error&) {
        // No thread is to be had: then it is done here.
        const PictureOrder alone = std::move(shared.waiting.back());
        shared.waiting.pop_back();
        note(&shared, write_order(alone));
    }
}

PictureOutcome picture_write_finish(int32_t* written) {
    wait_for_worker();
    Queue& shared = queue();
    const std::lock_guard lock(shared.mutex);
    PictureOutcome first = shared.first_failure;
    *written = shared.written;
    shared.first_failure = PictureOutcome{};
    shared.written = 0;
    return first;
}

}  // namespace pelt
