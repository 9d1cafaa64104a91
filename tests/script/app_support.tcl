# What the tests of the viewer share: they source this behind support.tcl. The viewer runs in the wish of the test, or
# in a process of its own.

set root [file normalize [file join [file dirname [file normalize [info script]]] .. ..]]
set app [file join $root app viewer.tcl]
set ::env(XDG_CONFIG_HOME) [work_path config]
set ::env(APPDATA) [work_path config]
set ::env(XDG_RUNTIME_DIR) [work_path runtime]
file mkdir $::env(XDG_RUNTIME_DIR)

# The front door, which Windows starts by a name of its own.
set front_door [file nativename [file join $root [expr {$tcl_platform(platform) eq "windows" ? "viewer.cmd" : "viewer"}]]]

# A path as the viewer tells it.
proc as_told {path} { file nativename [file normalize $path] }

# Starts the viewer in this process with that command line.
proc start_app {args} {
    set ::argv $args
    uplevel #0 [list source $::app]
    # The tests give the answers of these.
    foreach name {tk_getOpenFile tk_getSaveFile tk_chooseColor} {
        if {[llength [info commands ::$name]] > 0} { catch { auto_load $name } }
        proc ::$name {args} "set ::asked_of_user \[list $name {*}\$args\]; return \$::answer"
    }
    serve 300
}
set answer {}
set asked_of_user {}    ;# the latest of them, with its options

# The folder of the test goes before the viewer does, which is not to make it anew for its settings.
rename finish finish_test
proc finish {} {
    namespace eval ::viewer::settings { variable kept 0 }
    finish_test
}

# Until nothing is left to draw.
proc settle {{milliseconds 80}} {
    serve $milliseconds
    serve_until {[viewer::view is_idle]}
}

# Presses a button in the view, moves by a way in so many steps, and releases.
proc drag {button x y dx dy {steps 5}} {
    point_at $x $y
    xdotool mousedown $button
    serve 40
    for {set step 1} {$step <= $steps} {incr step} {
        point_at [expr {$x + $dx * $step / $steps}] [expr {$y + $dy * $step / $steps}]
    }
    serve 40
    xdotool mouseup $button
    settle
}

# Presses a key of the main window.
proc press_key {key} {
    focus -force .
    update
    event generate . $key
    settle 30
}

# The picture's middle.
proc middle {} {
    settle 30
    return [pixel_at [take_picture] 0.5 0.5]
}

# Whether two colours are nearly one.
proc near {a b {tolerance 12}} {
    foreach x $a y $b {
        if {abs($x - $y) > $tolerance} { return 0 }
    }
    return 1
}

# red, green, blue or other: which of the three is by far the largest.
proc tint {colour} {
    lassign $colour red green blue
    if {$red > 2 * $green && $red > 2 * $blue && $red > 40} { return red }
    if {$green > 2 * $red && $green > 2 * $blue && $green > 40} { return green }
    if {$blue > 2 * $red && $blue > 2 * $green && $blue > 40} { return blue }
    return other
}

# A square in a folder, with the image skin.tga on it.
proc write_textured_square {name} {
    return [write_file $name \
        "[square_points 1 5]layer face 127 127 127 doublesided\n[square_quad 1]image skin.tga x y\n"]
}

# A model with nothing of its own but a child.
proc write_parent {name child} {
    return [write_file $name "points\n1 0 0 0\nlayer none 0 0 0 singlesided\nchild $child 0 0 0 1.0 1.0 1.0 0 0 0\n"]
}

# What the viewer keeps under these names.
proc kept {args} { lmap name $args { viewer::settings get $name } }

proc scene_names {} { lmap model [viewer::scene models] { dict get $model name } }

# Runs the viewer in a process of its own, on this display: status, standard output, standard error.
proc run_viewer {args} {
    return [run_command [list {*}[preloaded_environment] timeout 100 $::env(PELT_TCLSH) $::app {*}$args]]
}

proc run_command {command} {
    set errors [work_path stderr.txt]
    set status 0
    if {[catch { exec_program -ignorestderr {*}$command 2>$errors } output options]} {
        set code [dict get $options -errorcode]
        set status [expr {[lindex $code 0] eq "CHILDSTATUS" ? [lindex $code 2] : "signal"}]
        set output [string map [list "\nchild process exited abnormally" {}] $output]
        if {$output eq "child process exited abnormally"} { set output {} }
    }
    set channel [open $errors]
    set text [string trim [read $channel]]
    close $channel
    return [list $status $output $text]
}

# {red green blue} of a picture file at a fraction of it from the upper left.
proc file_pixel {path {fx 0.5} {fy 0.5}} {
    if {[string match *.tga $path]} {
        set picture [read_picture $path]
        return [pixel_at $picture $fx [expr {1 - $fy}]]
    }
    set photo [image create photo -file $path]
    set x [expr {int($fx * ([image width $photo] - 1))}]
    set y [expr {int($fy * ([image height $photo] - 1))}]
    set colour [$photo get $x $y]
    image delete $photo
    return $colour
}

proc file_size {path} {
    set photo [image create photo -file $path]
    set size [list [image width $photo] [image height $photo]]
    image delete $photo
    return $size
}

proc read_text {path} {
    set channel [open $path]
    set text [read $channel]
    close $channel
    return $text
}

# ---- a person at the keyboard ------------------------------------------------------------------------------------

# Clicks into the middle of a widget, or at a place in it.
proc click_on {widget {x {}} {y {}}} {
    update
    if {$x eq {}} { lassign [list [expr {[winfo width $widget] / 2}] [expr {[winfo height $widget] / 2}]] x y }
    xdotool mousemove [expr {[winfo rootx $widget] + $x}] [expr {[winfo rooty $widget] + $y}]
    serve 40
    xdotool click 1
    settle 60
}

# Clicks on a row of a tree or table.
# A page that was just chosen is filled, and takes room from others, in several rounds of events. Never twice at the same
# place: on a quick machine two clicks there are a double click.
proc click_row {tree row} {
    set end [expr {[clock milliseconds] + 5000}]
    set now {}
    set before none
    while {$now ne $before && [clock milliseconds] < $end} {
        set before $now
        if {[$tree exists $row]} { $tree see $row }
        serve 40
        if {[$tree exists $row]} { set now [list [winfo geometry $tree] [$tree bbox $row]] }
    }
    lassign [$tree bbox $row] x y width height
    set sixth [expr {2 + [incr ::rows_clicked] % 3}]
    click_on $tree [expr {$x + $width * $sixth / 6}] [expr {$y + $height / 2}]
}

# Presses keys as X names them, one after the other, wherever the keyboard is.
proc type_keys {args} {
    foreach key $args { xdotool key $key }
    settle 60
}

# Types into a field in the place of what it holds, and sends nothing.
proc type_into {field text} {
    click_on $field
    xdotool key ctrl+a
    xdotool type $text
    settle 60
}

# Does something that asks a question, which is answered with these keys. The text of the question, or nothing.
proc answering {keys script} {
    set ::question {}
    set ::answers_left 40
    after 200 [list answer_question $keys]
    uplevel 1 $script
    serve_until {![winfo exists .ask]}
    after cancel [list answer_question $keys]
    settle
    return $::question
}

# Presses keys that ask a question, and waits until it was asked: the keys are on their way.
proc type_to_be_asked {args} {
    type_keys {*}$args
    serve_until {$::question ne {}}
}

# Waits for the question. One that the keys do not answer is closed in the end, for the test to fail and not to hang.
proc answer_question {keys} {
    after 50 [list answer_question $keys]
    if {![winfo exists .ask.hint] || ![winfo viewable .ask]} return
    if {$::question eq {}} {
        set ::question [.ask.hint cget -text]
        # Without a window manager the keyboard is where the pointer is.
        xdotool mousemove [expr {[winfo rootx .ask] + 5}] [expr {[winfo rooty .ask] + 5}]
        after 100 [list type_answer $keys]
    } elseif {[incr ::answers_left -1] < 0} {
        set ::question "not answered: $::question"
        destroy .ask
    }
}
# Not before the keyboard has come, or the first key would go elsewhere.
proc type_answer {keys} {
    if {![winfo exists .ask]} return
    if {![string match .ask* [focus]]} {
        after 50 [list type_answer $keys]
        return
    }
    foreach key $keys { xdotool key $key }
}
