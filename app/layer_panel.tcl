# The panel of a layer: name, sides, mirror, colour, transparency. Every edit is sent at once.

namespace eval viewer {
    variable layer_name {}
    variable layer_shown {}                ;# id and name of the layer that the panel was filled from
    variable layer_sides 1
    variable layer_mirror none
    variable layer_transparency 0.0
    variable layer_colour {127 127 127}    ;# as the library has it: 127 is full
    variable FULL_COLOUR 127
}

proc viewer::build_layer_panel {panel} {
    ttk::label $panel.hint -style Dim.TLabel -anchor w -justify left -background $::viewer::COLOUR(panel)
    foreach {name text} {name Name sides Sides mirror Mirror colour Colour transparency Transparency} {
        ttk::label $panel.l$name -text $text -background $::viewer::COLOUR(panel)
    }
    ttk::entry $panel.name -textvariable ::viewer::layer_name -width 12
    bind $panel.name <Return> viewer::rename_layer
    bind $panel.name <FocusOut> viewer::rename_layer
    bind $panel.name <Escape> { viewer::drop_typed viewer::refresh_layer; break }
    ttk::combobox $panel.sides -values {single double} -state readonly -width 8
    bind $panel.sides <<ComboboxSelected>> viewer::change_sides
    ttk::combobox $panel.mirror -values {none x y z} -state readonly -width 8 -textvariable ::viewer::layer_mirror
    bind $panel.mirror <<ComboboxSelected>> viewer::change_mirror
    frame $panel.colour -height [px 22] -cursor hand2 -highlightthickness 1 \
        -highlightbackground $::viewer::COLOUR(line)
    bind $panel.colour <Button-1> viewer::choose_layer_colour
    ttk::scale $panel.transparency -from 0 -to 1 -variable ::viewer::layer_transparency \
        -command viewer::change_transparency
    ttk::frame $panel.buttons -style Panel.TFrame
    ttk::button $panel.new -text "New layer" -command viewer::new_layer
    ttk::button $panel.delete -text "Delete layer" -command viewer::delete_layer
    grid $panel.hint - -sticky ew -pady [list 0 [px 6]]
    foreach name {name sides mirror colour transparency} {
        grid $panel.l$name $panel.$name -sticky ew -pady [px 2]
        grid configure $panel.l$name -padx [list 0 [px 10]]
    }
    grid $panel.buttons - -sticky ew -pady [px 8]
    pack $panel.new $panel.delete -in $panel.buttons -side left -fill x -expand 1 -padx [px 2]
    grid columnconfigure $panel 1 -weight 1
    bind $panel <Configure> [list $panel.hint configure -wraplength %w]
}

# Fills the panel from the selected layer, or greys it out.
proc viewer::refresh_layer {} {
    variable current_id
    variable current_layer
    variable can_edit
    variable layer_name
    variable layer_shown
    variable layer_mirror
    variable layer_colour
    variable layer_transparency
    set panel .side.layer
    # A script may have taken it away.
    if {$current_layer eq {} || [catch { sorvel scene layer $current_id $current_layer } layer]} { set layer {} }
    set on [expr {$can_edit && $layer ne {}}]
    foreach name {name delete} { $panel.$name state [expr {$on ? "!disabled" : "disabled"}] }
    foreach name {sides mirror} { $panel.$name state [expr {$on ? "!disabled readonly" : "disabled"}] }
    $panel.transparency state [expr {$on && [dict get $layer seen] ? "!disabled" : "disabled"}]
    $panel.new state [expr {$can_edit ? "!disabled" : "disabled"}]
    $panel.hint configure -text [layer_hint $layer]
    if {$layer eq {}} {
        lassign {} layer_name layer_shown layer_mirror
        $panel.sides set {}
        $panel.colour configure -background $::viewer::COLOUR(panel)
        return
    }
    set layer_name $current_layer
    set layer_shown [list $current_id $current_layer]
    $panel.sides set [expr {[dict get $layer sides] == 1 ? "single" : "double"}]
    set layer_mirror [expr {[dict get $layer mirror] eq {} ? "none" : [dict get $layer mirror]}]
    set layer_colour [dict get $layer colour]
    $panel.colour configure -background [layer_colour_name]
    set layer_transparency [expr {max(0.0, min(1.0, [dict get $layer transparency]))}]
}

# What the panel shows, and why something in it is grey.
proc viewer::layer_hint {layer} {
    variable current_id
    variable can_edit
    variable shown_layers
    if {$current_id eq "0"} { return "Nothing is selected" }
    if {$layer eq {}} { return "Choose a layer in the tree" }
    set text [expr {$shown_layers > 1 ? "The first of $shown_layers layers, of" : "Layer of"}]
    append text " [dict get [part_of_id $current_id] name]"
    if {!$can_edit} { return "$text. It cannot be edited: its name or its number is not its own." }
    if {![dict get $layer seen]} { append text ". Without a texture no transparency is seen." }
    return $text
}

# What was typed into a field and not sent goes, and the keyboard is the view's again.
proc viewer::drop_typed {refresh} {
    {*}$refresh
    focus_view
}

# A name as the library can take it: one word.
proc viewer::one_word {text} {
    return [regsub -all {\s+} [string trim $text] _]
}

proc viewer::layer_colour_name {} {
    variable layer_colour
    variable FULL_COLOUR
    return [format #%02x%02x%02x {*}[lmap part $layer_colour {
        expr {max(0, min(255, round($part * 255.0 / $FULL_COLOUR)))}
    }]]
}

proc viewer::rename_layer {} {
    variable layer_name
    variable layer_shown
    variable current_layer
    variable current_id
    if {$layer_shown ne [list $current_id $current_layer] || $layer_name eq $current_layer} return
    set name [one_word $layer_name]
    set layer_name $current_layer
    if {$name eq {} || $name eq $current_layer} return
    if {$name in [layers_of $current_id]} {
        say_status "There is a layer $name already"
        return
    }
    set old $current_layer
    edit_alone viewer::give_layer_name $name
    set row [row_of $current_id $old]
    read_scene
    if {$name ni [layers_of $current_id]} return
    lassign [list $name $name [list $current_id $name]] current_layer layer_name layer_shown
    if {$row ne {}} {
        .side.tree item $row -text $name
        dict set ::viewer::node($row) layer $name
    }
    draw_soon
}

# The library's selection does not follow a layer that gets another name.
proc viewer::give_layer_name {name} {
    sorvel set layer name $name
    ask select layer $name
}

proc viewer::change_sides {} {
    edit set layer sides [expr {[.side.layer.sides get] eq "double" ? 2 : 1}]
    redraw_edited
}

proc viewer::change_mirror {} {
    variable layer_mirror
    edit set layer mirror $layer_mirror
    redraw_edited
}

proc viewer::choose_layer_colour {} {
    variable current_id
    variable current_layer
    variable can_edit
    variable layer_colour
    variable FULL_COLOUR
    if {$current_layer eq {} || !$can_edit} return
    set layer [list $current_id $current_layer]
    set chosen [tk_chooseColor -title "Colour of $current_layer" -initialcolor [layer_colour_name]]
    # Another may be selected by now.
    if {$chosen eq {} || [list $current_id $current_layer] ne $layer} return
    set layer_colour [lmap part [winfo rgb . $chosen] { expr {round($part / 65535.0 * $FULL_COLOUR)} }]
    edit set layer color {*}$layer_colour
    .side.layer.colour configure -background [layer_colour_name]
    redraw_edited
}

proc viewer::change_transparency {value} {
    variable current_layer
    variable can_edit
    if {$current_layer eq {} || !$can_edit} return
    edit set layer transparency [plain $value]
    draw_soon
}

proc viewer::new_layer {} {
    variable current_id
    variable can_edit
    if {!$can_edit} return
    set names [layers_of $current_id]
    set name new
    for {set number 2} {$name in $names} {incr number} { set name new$number }
    edit add layer $name
    refresh_model_rows $current_id $name
    draw_soon
}

proc viewer::delete_layer {} {
    variable current_id
    variable current_layer
    variable can_edit
    if {$current_layer eq {} || !$can_edit} return
    edit delete layer $current_layer
    refresh_model_rows $current_id {}
    draw_soon
}

# Shows the layers that a model has now and selects one of them, or the model.
proc viewer::refresh_model_rows {id layer} {
    read_scene
    refresh_panels
    select_row [row_of $id $layer]
}
