# Small questions: a window with a few fields.

# Asks for some values: pairs of a label and a value to begin with. A list of the answers, or nothing when it was
# closed.
proc viewer::ask_values {title hint fields} {
    set entries [build_question $title $hint $fields OK]
    set first [lindex $entries 0]
    focus $first
    $first selection range 0 end
    set values {}
    if {[wait_for_answer]} { set values [lmap entry $entries { string trim [$entry get] }] }
    if {!$::viewer::ended} { destroy .ask }
    return $values
}

# A question whose yes has a name of its own. The other answer lies nearer: the keyboard is on it.
proc viewer::ask_yes {title text yes} {
    build_question $title $text {} $yes
    focus .ask.cancel
    set answer [wait_for_answer]
    if {!$::viewer::ended} { destroy .ask }
    return $answer
}

# The window of a question; its fields.
proc viewer::build_question {title hint fields yes} {
    destroy .ask
    toplevel .ask -padx [px 14] -pady [px 12] -highlightthickness 1 -highlightbackground $::viewer::COLOUR(line)
    wm title .ask $title
    wm transient .ask .
    wm resizable .ask 0 0
    ttk::label .ask.hint -text $hint -style Dim.TLabel -justify left -wraplength [px 320]
    grid .ask.hint - -sticky w -pady [list 0 [px 8]]
    set number 0
    set entries {}
    foreach {label value} $fields {
        ttk::label .ask.l$number -text $label
        ttk::entry .ask.e$number -width 24
        .ask.e$number insert 0 $value
        grid .ask.l$number .ask.e$number -sticky ew -pady [px 2]
        grid configure .ask.l$number -padx [list 0 [px 10]]
        lappend entries .ask.e$number
        incr number
    }
    ttk::frame .ask.buttons
    ttk::button .ask.ok -text $yes -command { set ::viewer::asked ok }
    ttk::button .ask.cancel -text Cancel -command { set ::viewer::asked cancel }
    pack .ask.cancel .ask.ok -in .ask.buttons -side right -padx [px 3]
    grid .ask.buttons - -sticky e -pady [list [px 10] 0]
    foreach button {ok cancel} { bind .ask.$button <Return> { %W invoke; break } }
    bind .ask <Return> { set ::viewer::asked ok }
    bind .ask <Escape> { set ::viewer::asked cancel }
    wm protocol .ask WM_DELETE_WINDOW { set ::viewer::asked cancel }
    # The program ends with this window open too: nobody else would end the wait.
    bind .ask <Destroy> { set ::viewer::asked cancel }
    centre_over .ask
    return $entries
}

# 1 for yes.
proc viewer::wait_for_answer {} {
    variable asked
    set asked {}
    vwait ::viewer::asked
    return [expr {$asked eq "ok" && !$::viewer::ended && [winfo exists .ask]}]
}

proc viewer::centre_over {window} {
    update idletasks
    set x [expr {[winfo rootx .] + ([winfo width .] - [winfo reqwidth $window]) / 2}]
    set y [expr {[winfo rooty .] + ([winfo height .] - [winfo reqheight $window]) / 3}]
    wm geometry $window +[expr {max(0, $x)}]+[expr {max(0, $y)}]
}

proc viewer::ask_angles {} {
    variable turn
    variable tilt
    set answer [ask_values "View by angles" "Degrees about the upright axis, and tilt: 0 from above, -90 level." \
        [list Turn [short_number $turn] Tilt [short_number $tilt]]]
    if {[llength $answer] != 2} return
    if {![is_numbers [join $answer ,] 2]} {
        say_status "Two numbers are wanted"
        return
    }
    aim [decimals [join $answer ,]]
}

# A picture of a size of its own inside the window, or one that follows the window again.
proc viewer::ask_size {} {
    lassign $::viewer::SIZE_LIMITS least most
    set hint "Width and height of the picture, $least to $most. Both 0: as large as the window."
    set answer [ask_values "Fixed size" $hint [list Width [winfo width .view] Height [winfo height .view]]]
    if {[llength $answer] != 2} return
    fixed_size {*}$answer
}

proc viewer::fixed_size {width height} {
    lassign $::viewer::SIZE_LIMITS least most
    if {![regexp {^[0-9]{1,4}$} $width] || ![regexp {^[0-9]{1,4}$} $height]} {
        say_status "Two whole numbers are wanted"
        return
    }
    lassign [scan "$width $height" "%d %d"] width height
    if {$width == 0 && $height == 0} {
        sorvel set view size 0 0
        # The library makes its window small and waits for a change of size.
        nudge_view
    } elseif {$width < $least || $height < $least || $width > $most || $height > $most} {
        say_status "Width and height must be $least to $most"
        return
    } else {
        sorvel set view size $width $height
    }
    draw_soon
}

proc viewer::nudge_view {} {
    update
    draw_soon
}

proc viewer::choose_background {} {
    variable option
    set now [format #%02x%02x%02x {*}[lmap part [split $option(background) ,] { expr {round($part * 255)} }]]
    set chosen [tk_chooseColor -title "Background" -initialcolor $now]
    if {$chosen eq {}} return
    set rgb [lmap part [winfo rgb . $chosen] { format %.4f [expr {$part / 65535.0}] }]
    set option(background) [join $rgb ,]
    keep background $rgb
    set_background $rgb
}

proc viewer::ask_rename {} {
    set ids [selected_models]
    if {[llength $ids] == 0} {
        say_status "Nothing is selected"
        return
    }
    set id [lindex $ids 0]
    set name [dict get [model_of_id $id] name]
    set answer [ask_values "Rename model" "The model's name in the scene; its file stays as it is." [list Name $name]]
    if {[llength $answer] == 1} { rename_model $id [lindex $answer 0] }
}

proc viewer::rename_model {id name} {
    set name [string tolower [one_word $name]]
    if {$name eq {}} return
    sorvel file rename $id $name
    read_scene
    set row [row_of $id]
    if {$row ne {}} { .side.tree item $row -text $name }
    say_status "Renamed to $name"
}
