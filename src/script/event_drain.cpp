// Serving of the events that wait. What surprises: Tcl looks at its sources of events only when nothing in its queue
// can be served, and a script that queues as it serves never lets that be. So the end of the queue is marked, and
// timers and idle work, of which Tcl itself serves only what is due when it begins, are asked for by their kind.
#include "script/event_drain.h"

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "script/tcl_glue.h"

#include <tcl.h>
// Behind everything of ours, for the macros of Xlib.
#include <tk.h>

namespace pelt {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds ARRIVALS_LIMIT{250};
constexpr int EVERYTHING = -1;  // all kinds of events, never waiting

// Known by a number and not by a pointer: one that a drain has left behind may be served at any time later.
struct Marker {
    Tcl_Event event;
    int64_t number;
};
int64_t markers_put = 0;
int64_t markers_reached = 0;

int reach_marker(Tcl_Event* event, int) {
    markers_reached = std::max(markers_reached, reinterpret_cast<Marker*>(event)->number);
    return 1;
}

int64_t put_marker() {
    auto* marker = reinterpret_cast<Marker*>(Tcl_Alloc(sizeof(Marker)));
    marker->event.proc = reach_marker;
    marker->number = ++markers_put;
    Tcl_QueueEvent(&marker->event, TCL_QUEUE_TAIL);
    return marker->number;
}

struct QueueCount {
    int all;    // but for those that are being served just now, further out
    int marks;  // the markers among them, also of other drains
};

int count_event(Tcl_Event* event, ClientData data) {
    auto* count = static_cast<QueueCount*>(data);
    count->all += event->proc != nullptr ? 1 : 0;
    count->marks += event->proc == reach_marker ? 1 : 0;
    return 0;  // none is deleted
}

bool serve_one(int kinds) { return tcl_interp() != nullptr && Tcl_DoOneEvent(kinds) != 0; }

// Everything that stands in the queue now; whether there was anything. What handlers put in front of it comes on top,
// and is bounded like all that arrives.
bool serve_queue() {
    QueueCount waiting{0, 0};
    Tcl_DeleteEvents(count_event, &waiting);
    if (waiting.all == waiting.marks) { return false; }
    const int64_t marker = put_marker();
    Clock::time_point surplus_start{};
    for (int served = 0; markers_reached < marker; ++served) {
        if (served == waiting.all + 1) { surplus_start = Clock::now(); }
        if (served > waiting.all && Clock::now() - surplus_start >= ARRIVALS_LIMIT) { break; }
        if (!serve_one(EVERYTHING)) { break; }
    }
    return true;
}

// Lets Tcl take over what the connection to the display has read already. Nothing is served by that, so it is only
// done where the native layer keeps such events, and no script runs.
Tk_RestrictAction hold_back(ClientData, XEvent*) { return TK_DEFER_EVENT; }

void take_over_held_events() {
    Tcl_Interp* interp = tcl_interp();
    if (interp == nullptr || !tk_is_bound() || !gl_events_held(Tk_MainWindow(interp))) { return; }
    ClientData argument = nullptr;
    Tk_RestrictProc* before = Tk_RestrictEvents(hold_back, nullptr, &argument);
    serve_one(TCL_WINDOW_EVENTS | TCL_DONT_WAIT);
    Tk_RestrictEvents(before, argument, &argument);
}

// Whether anything waited. The look at the timers is one at the files too, the display among them.
bool serve_what_waits() {
    bool served = serve_queue();
    take_over_held_events();
    served |= serve_one(TCL_TIMER_EVENTS | TCL_DONT_WAIT);  // all that are due
    served |= serve_queue();
    served |= serve_queue();  // what the display had is there by now
    served |= serve_one(TCL_IDLE_EVENTS | TCL_DONT_WAIT);
    served |= serve_queue();  // moves of the pointer, which Tk holds back until it is idle
    return served;
}

}  // namespace

void drain_events() {
    if (tcl_interp() == nullptr || !serve_what_waits()) { return; }
    const Clock::time_point start = Clock::now();
    while (Clock::now() - start < ARRIVALS_LIMIT && serve_one(EVERYTHING)) {}
}

}  // namespace pelt
