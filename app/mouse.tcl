# The mouse in the view. The library calls on_mouse at every event: a drag comes with its movement, everything else with
# zeros, a press with its button alone. What is done here is only summed; the next picture takes it.

namespace eval viewer {
    variable mouse_mode turn       ;# what the left button does: turn, pan, zoom
    variable cursor_of             ;# id of the library's cursor for each mode
    variable pressed 0             ;# the button that is down
    variable last_press {0 0 0}    ;# time in milliseconds and place of the last press of the left button
    variable DOUBLE_TIME 400       ;# milliseconds between the presses of a double click
    variable DOUBLE_WAY 4          ;# pixels between them
    variable ZOOM_PER_PIXEL 1.01
    variable ZOOM_PER_NOTCH 0.9
    variable MODE_OF_BUTTON {2 zoom 3 pan}
    variable CURSOR_NAMES {turn rotate pan pan zoom zoom}
    array set cursor_of {}
}

proc viewer::on_mouse {button x y dx dy} {
    variable pressed
    if {$dx == 0 && $dy == 0} {
        if {$button != $pressed} {
            set pressed $button
            if {$button != 0} { after idle viewer::focus_view }
            if {$button == 1} press_left
            after idle viewer::show_cursor
        }
        return
    }
    move_mode [mode_of_button $button] $dx $dy
}

proc viewer::mode_of_button {button} {
    variable mouse_mode
    variable MODE_OF_BUTTON
    if {[dict exists $MODE_OF_BUTTON $button]} { return [dict get $MODE_OF_BUTTON $button] }
    return $mouse_mode
}

proc viewer::move_mode {mode dx dy} {
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

# A second press soon after the first and near it is a double click. The press tells no place.
proc viewer::press_left {} {
    variable last_press
    variable DOUBLE_TIME
    variable DOUBLE_WAY
    lassign [numbers [sorvel get pointer]] x y
    if {$y eq {}} return
    lassign $last_press time old_x old_y
    set now [clock milliseconds]
    set last_press [list $now $x $y]
    if {$now - $time > $DOUBLE_TIME || abs($x - $old_x) > $DOUBLE_WAY || abs($y - $old_y) > $DOUBLE_WAY} return
    set last_press {0 0 0}
    after idle [list viewer::centre_at [expr {$x - [winfo rootx .view]}] [expr {$y - [winfo rooty .view]}]]
}

# The wheel, at the pointer, by its place on the screen. Buttons 4 and 5 of X, or the wheel event of other systems with its 120 a notch.
proc viewer::wheel {notches x y} {
    variable ZOOM_PER_NOTCH
    zoom_by [expr {pow($ZOOM_PER_NOTCH, $notches)}] [expr {$x - [winfo rootx .view]}] [expr {$y - [winfo rooty .view]}]
}

# The keys are those of the view again. What a field held is sent.
proc viewer::focus_view {} {
    if {[view_lives]} { focus .view }
}

proc viewer::bind_wheel {widget} {
    bind $widget <Button-4> {viewer::wheel 1 %X %Y}
    bind $widget <Button-5> {viewer::wheel -1 %X %Y}
    bind $widget <MouseWheel> {viewer::wheel [expr {%D / 120.0}] %X %Y}
}

# ---- modes and cursors ---------------------------------------------------------------------------------------------

proc viewer::create_cursors {} {
    variable cursor_of
    variable CURSOR_NAMES
    foreach {mode name} $CURSOR_NAMES {
        set id [ask create cursor $name]
        set cursor_of($mode) [expr {[string is integer -strict $id] ? $id : 0}]
    }
    show_cursor
}

proc viewer::set_mouse_mode {mode} {
    variable mouse_mode
    set mouse_mode $mode
    show_cursor
}

# The cursor of the button that is down, or of the left one.
proc viewer::show_cursor {} {
    variable pressed
    variable cursor_of
    if {![view_lives]} return
    set mode [mode_of_button $pressed]
    if {[info exists cursor_of($mode)]} { sorvel set cursor $cursor_of($mode) }
}
