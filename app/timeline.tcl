# The time of an animation: the library's clock, as it stood when it was asked last.
#
# Owns: now, end, step_size, rate
# Offers: now, end, step_size, rate, read_clock, step, set_rate, seek
# Calls: nothing

namespace eval viewer::timeline {
    namespace export now end step_size rate read_clock step set_rate seek
    namespace ensemble create
    variable now 0.0          ;# seconds
    variable end 0.0          ;# of the longest clip; 0 when there is none
    variable step_size 1.0    ;# seconds
    variable rate 30          ;# steps for each second
}

proc viewer::timeline::now {} {
    variable now
    return $now
}

proc viewer::timeline::end {} {
    variable end
    return $end
}

proc viewer::timeline::step_size {} {
    variable step_size
    return $step_size
}

proc viewer::timeline::rate {} {
    variable rate
    return $rate
}

# Takes over what the library's clock says.
proc viewer::timeline::read_clock {} {
    variable now
    variable end
    variable step_size
    set clock [sorvel scene clock]
    lassign [list [dict get $clock time] [dict get $clock end] [dict get $clock step]] now end step_size
}

# One step forward (1) or back (-1).
proc viewer::timeline::step {direction} {
    sorvel animate [expr {$direction > 0 ? "next" : "prev"}]
    read_clock
}

# Steps for each second. The library puts its clock on a multiple of the step.
proc viewer::timeline::set_rate {wanted} {
    variable rate
    if {![string is integer -strict $wanted] || $wanted < 1 || $wanted > 60} return
    sorvel animate step $wanted
    set rate $wanted
    read_clock
}

proc viewer::timeline::seek {time} {
    variable end
    read_clock
    sorvel scene clock [expr {max(0.0, min($time, $end))}]
    read_clock
}
