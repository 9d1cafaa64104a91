# Playing the animation: the library has no timer, so each step is asked for, by the clock.
#
# A step that comes late is made up for without its picture, a few at most, and each round waits for the window to be
# idle first: so the rate is kept where it can be, and the interface answers where it cannot.
#
# Owns: playing, play_due, play_timer, range, slider_time, rate_entry, play_text, range_text
# Offers: build, start, stop, play_or_pause, step, to_start, mark_range, clear_range
# Calls: scene, settings, status, theme, timeline, view

namespace eval viewer::playback {
    namespace export build start stop play_or_pause step to_start mark_range clear_range
    namespace ensemble create
    namespace import ::viewer::theme::px
    variable playing 0
    variable play_due 0          ;# milliseconds: when the next step is due
    variable play_timer {}
    variable range {}            ;# first and last second, or nothing for all of it
    variable slider_time 0.0
    variable rate_entry {}       ;# what stands in the field of the rate
    variable play_text Play
    variable range_text {}
    variable MOST_LATE 4         ;# steps made at once
    viewer::scene listen viewer::playback::show_player
    viewer::settings listen rate viewer::playback::rate_changed
}

proc viewer::playback::build {} {
    ttk::frame .player -padding [list [px 6] [px 3]]
    foreach {name text command} {first Start viewer::playback::to_start prev Back {viewer::playback::step -1}
        play {} viewer::playback::play_or_pause next Next {viewer::playback::step 1}} {
        ttk::button .player.$name -text $text -style Toolbutton -command $command -takefocus 0
        pack .player.$name -side left
    }
    .player.play configure -textvariable ::viewer::playback::play_text -width 6
    foreach {name text command} {all All viewer::playback::clear_range out "To here" {viewer::playback::mark_range last}
        in "From here" {viewer::playback::mark_range first}} {
        ttk::button .player.$name -text $text -style Toolbutton -command $command -takefocus 0
        pack .player.$name -side right
    }
    ttk::label .player.range -textvariable ::viewer::playback::range_text -style Dim.TLabel
    ttk::checkbutton .player.loop -text Loop -variable [viewer::settings name_of loop] \
        -command {viewer::settings changed loop} -takefocus 0
    ttk::spinbox .player.rate -from 1 -to 60 -width 3 -textvariable ::viewer::playback::rate_entry \
        -command viewer::playback::rate_entered
    bind .player.rate <Return> viewer::playback::rate_entered
    bind .player.rate <FocusOut> viewer::playback::rate_entered
    bind .player.rate <Escape> { viewer::playback::rate_dropped; break }
    ttk::label .player.unit -text "/ s" -style Dim.TLabel
    pack .player.range .player.loop .player.unit .player.rate -side right -padx [px 4]
    ttk::scale .player.slider -from 0 -to 1 -variable ::viewer::playback::slider_time \
        -command viewer::playback::slider_moved
    pack .player.slider -side left -fill x -expand 1 -padx [px 8]
}

# Shown while there is something to play.
proc viewer::playback::show_player {is_new} {
    variable rate_entry
    if {[can_play]} {
        .player.slider configure -to [viewer::timeline end]
        set rate_entry [viewer::timeline rate]
        grid .player -row 3 -column 0 -sticky ew
        show_clock
    } else {
        grid remove .player
        stop
    }
}

proc viewer::playback::show_clock {} {
    variable slider_time
    set slider_time [viewer::timeline now]
    viewer::status show_time
}

# ---- stepping ------------------------------------------------------------------------------------------------------

proc viewer::playback::can_play {} {
    return [expr {[viewer::scene list_file] ne {} && [viewer::timeline end] > 0}]
}

proc viewer::playback::step {direction} {
    if {![can_play]} return
    stop
    viewer::timeline step $direction
    show_clock
    viewer::view draw_soon
}

proc viewer::playback::to_start {} {
    variable range
    if {![can_play]} return
    go_to_time [expr {[llength $range] == 2 ? [lindex $range 0] : 0}]
}

proc viewer::playback::go_to_time {time} {
    viewer::timeline seek $time
    show_clock
    viewer::view draw_soon
}

proc viewer::playback::slider_moved {value} {
    viewer::timeline seek $value
    viewer::status show_time
    viewer::view draw_soon
}

# ---- playing -------------------------------------------------------------------------------------------------------

proc viewer::playback::play_or_pause {} {
    variable playing
    if {$playing} stop else start
}

proc viewer::playback::start {} {
    variable playing
    variable play_due
    variable play_text
    if {$playing || ![can_play]} return
    set playing 1
    set play_text Pause
    set play_due [clock milliseconds]
    play_round
}

proc viewer::playback::stop {} {
    variable playing
    variable play_timer
    variable play_text
    set playing 0
    set play_text Play
    after cancel $play_timer
    after cancel viewer::playback::play_later
}

# Makes the steps that are due, shows the last, and asks for the next round.
proc viewer::playback::play_round {} {
    variable playing
    variable play_due
    variable play_timer
    variable MOST_LATE
    if {!$playing || ![viewer::view lives]} return
    set interval [expr {1000.0 / [viewer::timeline rate]}]
    set now [clock milliseconds]
    set steps [expr {min($MOST_LATE, int(($now - $play_due) / $interval) + 1)}]
    for {set index 0} {$index < $steps && $playing} {incr index} play_step
    set play_due [expr {$play_due + $steps * $interval}]
    # Too late to be made up for: count from here.
    if {$play_due < $now - $MOST_LATE * $interval} { set play_due $now }
    show_clock
    viewer::view draw_now
    after cancel viewer::playback::play_later
    after idle viewer::playback::play_later
}

proc viewer::playback::play_later {} {
    variable playing
    variable play_due
    variable play_timer
    if {!$playing} return
    after cancel $play_timer
    set play_timer [after [expr {max(1, int(ceil($play_due - [clock milliseconds])))}] viewer::playback::play_round]
}

# One step, within the range. At its end it goes back to its beginning, or stops.
proc viewer::playback::play_step {} {
    variable range
    lassign [list [viewer::timeline now] [viewer::timeline step_size]] now step
    lassign [expr {[llength $range] == 2 ? $range : [list 0 [viewer::timeline end]]}] first last
    if {$now + $step <= $last + 1e-4 && $now >= $first - $step} {
        viewer::timeline step 1
    } elseif {![viewer::settings get loop]} {
        stop
    } elseif {[llength $range] == 2} {
        viewer::timeline seek $first
    } else {
        viewer::timeline step 1
    }
}

# ---- rate and range ------------------------------------------------------------------------------------------------

proc viewer::playback::rate_changed {} {
    variable play_due
    variable rate_entry
    viewer::timeline set_rate [viewer::settings get rate]
    set rate_entry [viewer::timeline rate]
    set play_due [clock milliseconds]
    show_clock
    viewer::view draw_soon
}

# A rate that was typed, if it is one.
proc viewer::playback::rate_entered {} {
    variable rate_entry
    if {![viewer::settings is_good rate $rate_entry]} {
        set rate_entry [viewer::timeline rate]
    } elseif {$rate_entry != [viewer::timeline rate]} {
        viewer::settings keep rate $rate_entry
    }
}

# Drops what was typed.
proc viewer::playback::rate_dropped {} {
    variable rate_entry
    set rate_entry [viewer::timeline rate]
    viewer::view take_keyboard
}

# The time that shows becomes the first or the last of what is played.
proc viewer::playback::mark_range {end} {
    variable range
    if {![can_play]} return
    lassign [expr {[llength $range] == 2 ? $range : [list 0.0 [viewer::timeline end]]}] first last
    set now [viewer::timeline now]
    if {$end eq "first"} { set first $now } else { set last $now }
    if {$last <= $first} {
        viewer::status say "The range would end before it begins"
        return
    }
    set range [list $first $last]
    show_range
}

proc viewer::playback::clear_range {} {
    variable range
    set range {}
    show_range
}

proc viewer::playback::show_range {} {
    variable range
    variable range_text
    set range_text [expr {[llength $range] == 2 ? [format "%.2f to %.2f s" {*}$range] : {}}]
}
