# How long it takes from nothing to the first frame of an empty scene, against what cannot be done without: an empty
# wish
# with a frame, and the shortest program that opens a window with OpenGL and swaps once. Medians of rounds in which the
# three take turns.
#   tclsh8.6 bench/start.tcl libpelt.so glx_floor          on a display
lassign $argv library glx_floor
set rounds 11

set channel [file tempfile empty .tcl]
puts $channel {
    frame .view -width 400 -height 300
    pack .view
    update
    exit 0
}
close $channel
set channel [file tempfile full .tcl]
puts $channel [format {
    load %s Sorvel
    frame .view -width 400 -height 300
    pack .view
    update
    sorvel create window view .view
    sorvel draw
    exit 0
} [list [file normalize $library]]]
close $channel

# Milliseconds of one run of a program.
proc cost {args} {
    set start [clock microseconds]
    exec {*}$args </dev/null
    return [expr {([clock microseconds] - $start) / 1000.0}]
}

proc median {values} { lindex [lsort -real $values] [expr {[llength $values] / 2}] }

for {set i 0} {$i < $rounds} {incr i} {
    lappend ours [cost wish8.6 $full]
    lappend empties [cost wish8.6 $empty]
    lappend windows [cost $glx_floor]
}
file delete $empty $full
puts [join [list row "start: wish, library, window, first frame" "empty wish, shortest GLX program" \
    [format %.4g [median $ours]] [format %.4g [expr {[median $empties] + [median $windows]}]] ms 1.2] \t]
