# The mouse in the view. The library calls "happened" at every event: a drag comes with its movement, everything else
# with zeros, a press with its button alone. What is done here is only summed; the next picture takes it.
#
# Owns: cursor_of, pressed, last_press
# Offers: connect, create_cursors, happened, bind_wheel
# Calls: library, numbers, settings, view

namespace eval viewer::mouse {
    namespace export connect create_cursors happened bind_wheel
    namespace ensemble create
    variable cursor_of             ;# id of the library's cursor for each mode
    variable pressed 0             ;# the button that is down
    variable last_press {0 0 0}    ;# time in milliseconds and place of the last press of the left button
    variable DOUBLE_TIME 400       ;# milliseconds between the presses of a double click
    variable DOUBLE_WAY 4          ;# pixels between them
    variable ZOOM_PER_NOTCH 0.9
    variable MODE_OF_BUTTON {2 zoom 3 pan}
    variable CURSOR_NAMES {turn rotate pan pan zoom zoom}
    array set cursor_of {}
    viewer::settings listen mode viewer::mouse::show_cursor
}

# From now on the library tells of the mouse.
proc viewer::mouse::connect {} {
    sorvel callback mouse viewer::mouse::happened
}

proc viewer::mouse::happened {button x y dx dy} {
    variable pressed
    if {$dx == 0 && $dy == 0} {
        if {$button != $pressed} {
            set pressed $button
            if {$button != 0} { after idle viewer::view take_keyboard }
            if {$button == 1} press_left
            after idle viewer::mouse::show_cursor
        }
        return
    }
    viewer::view move [mode_of_button $button] $dx $dy
}

# What a button does: the left one what a person chose.
proc viewer::mouse::mode_of_button {button} {
    variable MODE_OF_BUTTON
    if {[dict exists $MODE_OF_BUTTON $button]} { return [dict get $MODE_OF_BUTTON $button] }
    return [viewer::settings get mode]
}

# A second press soon after the first and near it is a double click. The press tells no place.
proc viewer::mouse::press_left {} {
    variable last_press
    variable DOUBLE_TIME
    variable DOUBLE_WAY
    lassign [viewer::numbers of [sorvel get pointer]] x y
    if {$y eq {}} return
    lassign $last_press time old_x old_y
    set now [clock milliseconds]
    set last_press [list $now $x $y]
    if {$now - $time > $DOUBLE_TIME || abs($x - $old_x) > $DOUBLE_WAY || abs($y - $old_y) > $DOUBLE_WAY} return
    set last_press {0 0 0}
    after idle [list viewer::view centre_at [expr {$x - [winfo rootx .view]}] [expr {$y - [winfo rooty .view]}]]
}

# The wheel, at the pointer, by its place on the screen. Buttons 4 and 5 of X, or the wheel event of other systems with its
# 120 a notch.
proc viewer::mouse::wheel {notches x y} {
    variable ZOOM_PER_NOTCH
    viewer::view zoom_by [expr {pow($ZOOM_PER_NOTCH, $notches)}] [expr {$x - [winfo rootx .view]}] \
        [expr {$y - [winfo rooty .view]}]
}

proc viewer::mouse::bind_wheel {widget} {
    bind $widget <Button-4> {viewer::mouse::wheel 1 %X %Y}
    bind $widget <Button-5> {viewer::mouse::wheel -1 %X %Y}
    bind $widget <MouseWheel> {viewer::mouse::wheel [expr {%D / 120.0}] %X %Y}
}

# ---- cursors -------------------------------------------------------------------------------------------------------

proc viewer::mouse::create_cursors {} {
    variable cursor_of
    variable CURSOR_NAMES
    foreach {mode name} $CURSOR_NAMES {
        set id [viewer::library ask create cursor $name]
        set cursor_of($mode) [expr {[string is integer -strict $id] ? $id : 0}]
    }
    show_cursor
}

# The cursor of the button that is down, or of the left one.
proc viewer::mouse::show_cursor {} {
    variable pressed
    variable cursor_of
    if {![viewer::view lives]} return
    set mode [mode_of_button $pressed]
    if {[info exists cursor_of($mode)]} { sorvel set cursor $cursor_of($mode) }
}
