# The view: how it is turned, shifted and zoomed, and when it is drawn.
#
# The scene is turned as on a turntable: about its own upright axis (z) and then tilted towards the viewer, so that what
# stands upright stays so. Or freely, about the axes of the screen. The library holds the matrix in both: its own free
# rotation is always on. Movements are summed and sent with the next picture, so that a hundred mouse events make one.
#
# Owns: turn, tilt, background, ended, draw_state, frames, listeners, moved
# Offers: create, end, wait_for_end, lives, take_keyboard, draw_soon, draw_now, is_idle, frames, listen, move, aim,
#     angles, turn_by, zoom, set_zoom, zoom_by, fit, centre, centre_at, start, background, set_background, fixed_size
# Calls: numbers, options, settings, scene

namespace eval viewer::view {
    namespace export create end wait_for_end lives take_keyboard draw_soon draw_now is_idle frames listen move aim \
        angles turn_by zoom set_zoom zoom_by fit centre centre_at start background set_background fixed_size
    namespace ensemble create
    variable turn 0.0
    variable tilt 0.0
    variable background {0 0 0}    ;# three numbers from 0 to 1
    variable ended 0           ;# 1 once the window is gone
    variable draw_state idle   ;# idle, asked, drawing, or again: asked for while drawing
    variable frames 0          ;# pictures drawn
    variable listeners {}      ;# commands to call after each picture
    variable moved             ;# what the mouse did since the last picture
    array set moved {turn_x 0 turn_y 0 pan_x 0 pan_y 0 zoom 1.0}
    variable DEGREES_PER_PIXEL 0.4
    variable ZOOM_PER_PIXEL 1.01
    variable ZOOM_LIMITS {0.001 100.0}
    variable SPARE 1.1         ;# so many times what the points take is shown: a curved surface stands out from them
    variable MOST_TURNS 72     ;# looked at for a turntable
    viewer::scene listen viewer::view::scene_changed
    viewer::settings listen free viewer::view::free_changed
}

# Shows the library's view inside the frame .view, which must be on the screen already.
proc viewer::view::create {rgb} {
    sorvel create window view .view
    set_background $rgb
    sorvel set freerotate on
}

proc viewer::view::background {} {
    variable background
    return $background
}

proc viewer::view::set_background {rgb} {
    variable background
    set background $rgb
    sorvel set background {*}[lmap part $rgb { viewer::numbers plain $part }]
    draw_soon
}

# Whether there is still a view. Every call of the library serves events, so any of them may have closed the window, and
# then Tk has no commands any more.
proc viewer::view::lives {} {
    variable ended
    return [expr {!$ended && [winfo exists .view]}]
}

# To be called when the window went.
proc viewer::view::end {} {
    variable ended
    set ended 1
}

proc viewer::view::wait_for_end {} {
    vwait ::viewer::view::ended
}

# The keys are those of the view again. What a field held is sent.
proc viewer::view::take_keyboard {} {
    if {[lives]} { focus .view }
}

# ---- drawing -------------------------------------------------------------------------------------------------------

# However many events ask for a picture, one is drawn when they have been served.
proc viewer::view::draw_soon {} {
    variable draw_state
    switch $draw_state {
        idle {
            set draw_state asked
            after idle viewer::view::draw_asked
        }
        drawing { set draw_state again }
    }
}

proc viewer::view::draw_asked {} {
    variable draw_state
    if {$draw_state eq "asked"} draw_now
}

# Draws at once. Every call of the library serves events first, so a picture can be asked for in the middle of one: that
# one is drawn afterwards.
proc viewer::view::draw_now {} {
    variable draw_state
    variable frames
    variable listeners
    if {![lives]} return
    if {$draw_state in {drawing again}} {
        set draw_state again
        return
    }
    set draw_state drawing
    try {
        apply_movement
        sorvel draw
        incr frames
        foreach command $listeners {
            if {[lives]} { {*}$command }
        }
    } finally {
        set again [expr {$draw_state eq "again"}]
        set draw_state idle
    }
    if {$again && [lives]} draw_soon
}

# From now on this command is called after each picture.
proc viewer::view::listen {command} {
    variable listeners
    lappend listeners $command
}

# Whether no picture is asked for and none is being made.
proc viewer::view::is_idle {} {
    variable draw_state
    return [expr {$draw_state eq "idle"}]
}

# How many pictures were drawn.
proc viewer::view::frames {} {
    variable frames
    return $frames
}

proc viewer::view::scene_changed {is_new} {
    draw_soon
}

# ---- turning -------------------------------------------------------------------------------------------------------

# A way of the mouse in pixels, which turns, shifts ("pan") or zooms with the next picture.
proc viewer::view::move {mode dx dy} {
    variable moved
    variable ZOOM_PER_PIXEL
    switch $mode {
        turn {
            incr moved(turn_x) $dx
            incr moved(turn_y) $dy
        }
        pan {
            incr moved(pan_x) $dx
            incr moved(pan_y) $dy
        }
        zoom { set moved(zoom) [expr {$moved(zoom) * pow($ZOOM_PER_PIXEL, $dy)}] }
    }
    draw_soon
}

# Sends what the mouse did since the last picture.
proc viewer::view::apply_movement {} {
    variable moved
    variable turn
    variable tilt
    variable DEGREES_PER_PIXEL
    array set now [array get moved]
    array set moved {turn_x 0 turn_y 0 pan_x 0 pan_y 0 zoom 1.0}
    if {$now(turn_x) != 0 || $now(turn_y) != 0} {
        set x [expr {$now(turn_x) * $DEGREES_PER_PIXEL}]
        set y [expr {$now(turn_y) * $DEGREES_PER_PIXEL}]
        if {[viewer::settings get free]} {
            sorvel set view rotate [viewer::numbers plain $x] [viewer::numbers plain $y]
        } else {
            set turn [expr {fmod($turn + $x, 360.0)}]
            set tilt [expr {min(90.0, max(-180.0, $tilt + $y))}]
            send_turn
        }
    }
    # "set view pan 0 0" would recentre.
    if {$now(pan_x) != 0 || $now(pan_y) != 0} { shift $now(pan_x) $now(pan_y) }
    if {$now(zoom) != 1.0} { set_zoom [expr {[zoom] * $now(zoom)}] }
}

# Looks from a named side, or by a turn and a tilt as in "24,-72".
proc viewer::view::aim {view} {
    variable turn
    variable tilt
    set named [viewer::options named_views]
    lassign [expr {[dict exists $named $view] ? [dict get $named $view] : [split $view ,]}] turn tilt
    send_turn
    draw_soon
}

# The turn and the tilt, in degrees.
proc viewer::view::angles {} {
    variable turn
    variable tilt
    return [list $turn $tilt]
}

proc viewer::view::turn_by {x y} {
    variable turn
    variable tilt
    set turn [expr {$turn + $x}]
    set tilt [expr {$tilt + $y}]
    send_turn
    draw_soon
}

proc viewer::view::send_turn {} {
    variable turn
    variable tilt
    sorvel set matrix view {*}[lmap number [matrix_of $turn $tilt] { viewer::numbers plain $number }]
}

# Row by row, for column vectors: the turn about z first, then the tilt about x.
proc viewer::view::matrix_of {turn tilt} {
    set a [expr {$turn * acos(-1.0) / 180}]
    set b [expr {$tilt * acos(-1.0) / 180}]
    lassign [list [expr {cos($a)}] [expr {sin($a)}] [expr {cos($b)}] [expr {sin($b)}]] ca sa cb sb
    return [list $ca [expr {-$sa}] 0 0 [expr {$cb * $sa}] [expr {$cb * $ca}] [expr {-$sb}] 0 \
        [expr {$sb * $sa}] [expr {$sb * $ca}] $cb 0 0 0 0 1]
}

# Goes from one way of turning to the other. The turntable takes over the turn and tilt that come nearest.
proc viewer::view::free_changed {} {
    variable turn
    variable tilt
    if {[viewer::settings get free]} return
    set matrix [dict get [sorvel scene view] matrix]
    set turn [expr {atan2(-[lindex $matrix 1], [lindex $matrix 0]) * 180 / acos(-1.0)}]
    set tilt [expr {atan2(-[lindex $matrix 6], [lindex $matrix 10]) * 180 / acos(-1.0)}]
    if {$tilt > 90} { set tilt [expr {$tilt - 360}] }
    send_turn
    draw_soon
}

# ---- zoom and shift ------------------------------------------------------------------------------------------------

proc viewer::view::zoom {} {
    return [dict get [sorvel scene view] zoom]
}

proc viewer::view::set_zoom {value} {
    variable ZOOM_LIMITS
    lassign $ZOOM_LIMITS least most
    sorvel set view zoom [viewer::numbers plain [expr {max($least, min($most, $value))}]]
    draw_soon
}

# Takes the picture along by so many pixels.
proc viewer::view::shift {dx dy} {
    sorvel set view pan [viewer::numbers plain $dx] [viewer::numbers plain $dy]
}

# Zooms by a factor; larger shows more. Given a place in the view, what lies there stays there.
proc viewer::view::zoom_by {factor {x {}} {y {}}} {
    set before [zoom]
    set_zoom [expr {$before * $factor}]
    if {$x eq {}} return
    set real [expr {[zoom] / $before}]
    if {$real <= 0 || abs($real - 1) < 1e-6} return
    set dx [expr {($x - [winfo width .view] / 2.0) * ($real - 1) / $real}]
    set dy [expr {($y - [winfo height .view] / 2.0) * ($real - 1) / $real}]
    if {abs($dx) > 1e-3 || abs($dy) > 1e-3} { shift $dx $dy }
}

# The whole scene, in the middle; with a number of turns, so that it is whole in each of them once round. The zoom follows
# from what the view sees: the library's own fit takes the largest side of a model for what it shows of it.
proc viewer::view::fit {{turns 1}} {
    variable SPARE
    apply_movement
    set box [sorvel scene bounds]
    if {[dict get $box low] eq {}} {
        centre
        return
    }
    sorvel set focus {*}[lmap a [dict get $box low] b [dict get $box high] {
        viewer::numbers plain [expr {($a + $b) / 2}]
    }]
    lassign {0 0} x y
    if {$turns == 1} {
        lassign [dict get [sorvel scene bounds] seen] left bottom right top
        lassign [list [expr {($left + $right) / 2}] [expr {($bottom + $top) / 2}]] x y
    }
    sorvel set pan [viewer::numbers plain $x] [viewer::numbers plain $y]
    set wanted [needed_unit $x $y]
    for {set turn 1} {$turn < $turns} {incr turn} {
        turn_by [expr {360.0 / $turns}] 0
        set wanted [expr {max($wanted, [needed_unit $x $y])}]
    }
    if {$turns > 1} { turn_by [expr {360.0 / $turns}] 0 }
    set view [sorvel scene view]
    set unit [dict get $view unit]
    if {$wanted > 0 && $unit > 0} {
        set_zoom [expr {[dict get $view zoom] * $wanted * $SPARE / $unit}]
    } else {
        set_zoom 1.0
    }
}

# Units of the world that a pixel has to show for all of the scene to be seen about a place of the view's plane.
proc viewer::view::needed_unit {x y} {
    lassign [dict get [sorvel scene view] size] width height
    lassign [dict get [sorvel scene bounds] seen] left bottom right top
    if {$top eq {}} { return 0 }
    return [expr {max(2.0 * max(abs($left - $x), abs($right - $x)) / max(1, $width),
        2.0 * max(abs($bottom - $y), abs($top - $y)) / max(1, $height))}]
}

proc viewer::view::centre {} {
    sorvel set view centre
    sorvel set pan 0 0
    draw_soon
}

# Shifts the picture so that this place of the view comes to the middle.
proc viewer::view::centre_at {x y} {
    set dx [expr {[winfo width .view] / 2.0 - $x}]
    set dy [expr {[winfo height .view] / 2.0 - $y}]
    if {abs($dx) >= 0.5 || abs($dy) >= 0.5} { shift $dx $dy }
    draw_soon
}

# The view of a scene just opened: as the command line wants it.
proc viewer::view::start {} {
    variable MOST_TURNS
    aim [viewer::options get view]
    turn_by {*}[split [viewer::options get rotate] ,]
    set pictures [viewer::options get turntable]
    fit [expr {$pictures eq {} ? 1 : min([scan $pictures %d], $MOST_TURNS)}]
    set_zoom [expr {[zoom] * [viewer::options get zoom]}]
}

# ---- size ----------------------------------------------------------------------------------------------------------

# A picture of a size of its own inside the window, or with two noughts one that follows the window again.
proc viewer::view::fixed_size {width height} {
    if {$width == 0 && $height == 0} {
        sorvel set view size 0 0
        # The library makes its window small and waits for a change of size.
        update
    } else {
        sorvel set view size $width $height
    }
    draw_soon
}
