# The time of the animation. No command of the library tells it, so it is reckoned here as the library does: in 32 bits,
# with one wrap by the length. A status text, which has two decimals, only corrects it where the two have parted.

namespace eval viewer {
    variable anim_time 0.0
    variable anim_end 0.0
    variable anim_step 1.0
    variable anim_rate 30
    variable TEXT_PRECISION 0.006   ;# half of the last decimal of a status text, and a little
}

# Moves the library's clock one step forward (1) or back (-1), and ours with it.
proc viewer::time_step {direction} {
    variable anim_time
    variable anim_end
    variable anim_step
    sorvel animate [expr {$direction > 0 ? "next" : "prev"}]
    if {$anim_end <= 0} return
    set anim_time [float32 [expr {$anim_time + $direction * $anim_step}]]
    if {$direction > 0 && $anim_time > $anim_end} {
        set anim_time [float32 [expr {$anim_time - $anim_end}]]
    } elseif {$direction < 0 && $anim_time < 0} {
        set anim_time [float32 [expr {$anim_time + $anim_end}]]
    }
}

# Steps for each second. The library puts its clock on a multiple of the step.
proc viewer::time_rate {rate} {
    variable anim_time
    variable anim_end
    variable anim_step
    variable anim_rate
    if {![string is integer -strict $rate] || $rate < 1 || $rate > 60} return
    sorvel animate step $rate
    set anim_rate $rate
    set anim_step [float32 [expr {1.0 / $rate}]]
    set steps [float32 [expr {double($anim_time) / $anim_step}]]
    set anim_time [float32 [expr {int($steps) * $anim_step}]]
    set anim_time [expr {max(0.0, min($anim_time, $anim_end))}]
}

# Moves the clock to a time, as near as the rate allows: seconds first, then steps.
proc viewer::time_seek {time} {
    variable anim_time
    variable anim_end
    variable anim_step
    variable anim_rate
    set time [expr {max(0.0, min($time, $anim_end))}]
    if {abs($time - $anim_time) > 2.0} {
        set rate $anim_rate
        time_rate 1
        # One second less than there is, so that neither clock wraps.
        set whole [expr {int(min($time, $anim_end - 0.001))}]
        for {set steps [expr {round($whole - $anim_time)}]} {$steps != 0} {incr steps [expr {$steps > 0 ? -1 : 1}]} {
            time_step [expr {$steps > 0 ? 1 : -1}]
        }
        time_rate $rate
    }
    for {set steps [expr {round(($time - $anim_time) / $anim_step)}]} {$steps != 0} {} {
        set direction [expr {$steps > 0 ? 1 : -1}]
        if {$direction > 0 && $anim_time + $anim_step > $anim_end + 1e-6} break
        if {$direction < 0 && $anim_time - $anim_step < -1e-6} break
        time_step $direction
        incr steps [expr {-$direction}]
    }
}

# Takes what a status text says, where it differs by more than its decimals leave open.
proc viewer::time_heard {time end} {
    variable anim_time
    variable anim_end
    variable TEXT_PRECISION
    foreach {name value} [list anim_time $time anim_end $end] {
        if {![string is double -strict $value] || $value != $value} continue
        if {abs([set $name] - $value) > $TEXT_PRECISION} { set $name [float32 $value] }
    }
}
