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

# Moves the clock to a time, as near as the rate allows, and never over an end. Going back, or far, it goes by whole
# seconds first: a rate of 1 puts the clock on one, where steps of the rate wanted would carry their rounding along.
proc viewer::time_seek {time} {
    variable anim_time
    variable anim_end
    variable anim_step
    variable anim_rate
    set time [expr {max(0.0, min($time, $anim_end))}]
    if {$time < $anim_time - $anim_step / 2 || $time > $anim_time + 2.0 || $anim_time < 0} {
        set rate $anim_rate
        time_rate 1
        while {$anim_time >= 1 && int($anim_time) > int($time)} { time_step -1 }
        while {int($anim_time) < int($time) && $anim_time + 1 <= $anim_end} { time_step 1 }
        time_rate $rate
    }
    for {set steps [expr {round(($time - $anim_time) / $anim_step)}]} {$steps > 0} {incr steps -1} {
        if {[float32 [expr {$anim_time + $anim_step}]] > $anim_end} break
        time_step 1
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
