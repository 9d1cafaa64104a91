# Playing the animation: the library has no timer, so each step is asked for, by the clock.
#
# A step that comes late is made up for without its picture, a few at most, and each round waits for the window to be
# idle first: so the rate is kept where it can be, and the interface answers where it cannot.

namespace eval viewer {
    variable playing 0
    variable play_due 0          ;# milliseconds: when the next step is due
    variable play_timer {}
    variable MOST_LATE 4         ;# steps made at once
    variable range {}            ;# first and last second, or nothing for all of it
    variable slider_time 0.0
    variable play_text Play
    variable range_text {}
}

proc viewer::build_player {} {
    ttk::frame .player -padding [list [px 6] [px 3]]
    foreach {name text command} {first Start viewer::to_start prev Back {viewer::step -1}
        play {} viewer::play_or_pause next Next {viewer::step 1}} {
        ttk::button .player.$name -text $text -style Toolbutton -command $command -takefocus 0
        pack .player.$name -side left
    }
    .player.play configure -textvariable ::viewer::play_text -width 6
    foreach {name text command} {all All viewer::clear_range out "To here" {viewer::mark_range last}
        in "From here" {viewer::mark_range first}} {
        ttk::button .player.$name -text $text -style Toolbutton -command $command -takefocus 0
        pack .player.$name -side right
    }
    ttk::label .player.range -textvariable ::viewer::range_text -style Dim.TLabel
    ttk::checkbutton .player.loop -text Loop -variable ::viewer::loops -command viewer::loop_changed -takefocus 0
    ttk::spinbox .player.rate -from 1 -to 60 -width 3 -textvariable ::viewer::rate_entry -command viewer::rate_entered
    bind .player.rate <Return> viewer::rate_entered
    bind .player.rate <FocusOut> viewer::rate_entered
    bind .player.rate <Escape> { set ::viewer::rate_entry $::viewer::anim_rate; viewer::focus_view; break }
    ttk::label .player.unit -text "/ s" -style Dim.TLabel
    pack .player.range .player.loop .player.unit .player.rate -side right -padx [px 4]
    ttk::scale .player.slider -from 0 -to 1 -variable ::viewer::slider_time -command viewer::slider_moved
    pack .player.slider -side left -fill x -expand 1 -padx [px 8]
}

# Shown while there is something to play.
proc viewer::show_player {} {
    variable anim_end
    variable anim_rate
    variable scene_list
    if {$scene_list ne {} && $anim_end > 0} {
        .player.slider configure -to $anim_end
        set ::viewer::rate_entry $anim_rate
        grid .player -row 3 -column 0 -sticky ew
        show_clock
    } else {
        grid remove .player
        stop_playing
    }
}

proc viewer::show_clock {} {
    variable anim_time
    variable slider_time
    set slider_time $anim_time
    show_time
}

# ---- stepping ------------------------------------------------------------------------------------------------------

proc viewer::can_play {} {
    variable scene_list
    variable anim_end
    return [expr {$scene_list ne {} && $anim_end > 0}]
}

proc viewer::step {direction} {
    if {![can_play]} return
    stop_playing
    time_step $direction
    show_clock
    draw_soon
}

proc viewer::to_start {} {
    variable range
    if {![can_play]} return
    go_to_time [expr {[llength $range] == 2 ? [lindex $range 0] : 0}]
}

proc viewer::go_to_time {time} {
    time_seek $time
    show_clock
    draw_soon
}

proc viewer::slider_moved {value} {
    time_seek $value
    show_time
    draw_soon
}

# ---- playing -------------------------------------------------------------------------------------------------------

proc viewer::play_or_pause {} {
    variable playing
    if {$playing} stop_playing else start_playing
}

proc viewer::start_playing {} {
    variable playing
    variable play_due
    variable play_text
    if {$playing || ![can_play]} return
    set playing 1
    set play_text Pause
    set play_due [clock milliseconds]
    play_round
}

proc viewer::stop_playing {} {
    variable playing
    variable play_timer
    variable play_text
    set playing 0
    set play_text Play
    after cancel $play_timer
    after cancel viewer::play_later
}

# Makes the steps that are due, shows the last, and asks for the next round.
proc viewer::play_round {} {
    variable playing
    variable play_due
    variable play_timer
    variable anim_rate
    variable MOST_LATE
    if {!$playing || ![view_lives]} return
    set interval [expr {1000.0 / $anim_rate}]
    set now [clock milliseconds]
    set steps [expr {min($MOST_LATE, int(($now - $play_due) / $interval) + 1)}]
    for {set index 0} {$index < $steps && $playing} {incr index} play_step
    set play_due [expr {$play_due + $steps * $interval}]
    # Too late to be made up for: count from here.
    if {$play_due < $now - $MOST_LATE * $interval} { set play_due $now }
    show_clock
    draw_now
    after cancel viewer::play_later
    after idle viewer::play_later
}

proc viewer::play_later {} {
    variable playing
    variable play_due
    variable play_timer
    if {!$playing} return
    after cancel $play_timer
    set play_timer [after [expr {max(1, int(ceil($play_due - [clock milliseconds])))}] viewer::play_round]
}

# One step, within the range. At its end it goes back to its beginning, or stops.
proc viewer::play_step {} {
    variable anim_time
    variable anim_end
    variable anim_step
    variable range
    variable loops
    lassign [expr {[llength $range] == 2 ? $range : [list 0 $anim_end]}] first last
    if {$anim_time + $anim_step <= $last + 1e-4 && $anim_time >= $first - $anim_step} {
        time_step 1
    } elseif {!$loops} {
        stop_playing
    } elseif {[llength $range] == 2} {
        time_seek $first
    } else {
        time_step 1
    }
}

# ---- rate, loop, range ---------------------------------------------------------------------------------------------

proc viewer::rate_changed {} {
    variable anim_rate
    variable play_due
    time_rate $anim_rate
    keep rate $anim_rate
    set ::viewer::rate_entry $anim_rate
    set play_due [clock milliseconds]
    show_clock
    draw_soon
}

proc viewer::rate_entered {} {
    variable anim_rate
    variable rate_entry
    if {![is_rate $rate_entry]} {
        set rate_entry $anim_rate
        return
    }
    if {$rate_entry == $anim_rate} return
    set anim_rate $rate_entry
    rate_changed
}

proc viewer::loop_changed {} {
    variable loops
    keep loop $loops
}

# The time that shows becomes the first or the last of what is played.
proc viewer::mark_range {end} {
    variable range
    variable anim_time
    variable anim_end
    if {![can_play]} return
    lassign [expr {[llength $range] == 2 ? $range : [list 0.0 $anim_end]}] first last
    if {$end eq "first"} { set first $anim_time } else { set last $anim_time }
    if {$last <= $first} {
        say_status "The range would end before it begins"
        return
    }
    set range [list $first $last]
    show_range
}

proc viewer::clear_range {} {
    variable range
    set range {}
    show_range
}

proc viewer::show_range {} {
    variable range
    variable range_text
    set range_text [expr {[llength $range] == 2 ? [format "%.2f to %.2f s" {*}$range] : {}}]
}
