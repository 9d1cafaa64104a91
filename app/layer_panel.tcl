# The panel of a layer: name, sides, mirror, colour, transparency. Every edit is sent at once.

namespace eval viewer {
    variable layer_name {}
    variable layer_sides 1
    variable layer_mirror none
    variable layer_transparency 0.0
    variable layer_colour {127 127 127}    ;# as the library has it: 127 is full
    variable FULL_COLOUR 127
}

proc viewer::build_layer_panel {panel} {
    ttk::label $panel.hint -style Dim.TLabel -anchor w -background $::viewer::COLOUR(panel)
    foreach {name text} {name Name sides Sides mirror Mirror colour Colour transparency Transparency} {
        ttk::label $panel.l$name -text $text -background $::viewer::COLOUR(panel)
    }
    ttk::entry $panel.name -textvariable ::viewer::layer_name -width 12
    bind $panel.name <Return> viewer::rename_layer
    bind $panel.name <FocusOut> viewer::rename_layer
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
}

# Fills the panel from the selected layer, or greys it out.
proc viewer::refresh_layer {} {
    variable current_id
    variable current_layer
    variable layer_name
    variable layer_sides
    variable layer_mirror
    variable layer_colour
    variable layer_transparency
    set panel .side.layer
    set on [expr {$current_id != 0 && $current_layer ne {}}]
    foreach name {name transparency delete} { $panel.$name state [expr {$on ? "!disabled" : "disabled"}] }
    foreach name {sides mirror} { $panel.$name state [expr {$on ? "!disabled readonly" : "disabled"}] }
    $panel.new state [expr {$current_id != 0 ? "!disabled" : "disabled"}]
    if {!$on} {
        set layer_name {}
        $panel.sides set {}
        set layer_mirror {}
        $panel.colour configure -background $::viewer::COLOUR(panel)
        $panel.hint configure -text [expr {$current_id != 0 ? "Choose a layer in the tree" : "Nothing is selected"}]
        return
    }
    $panel.hint configure -text "Layer of [model_title $current_id]"
    set layer_name $current_layer
    $panel.sides set [string trim [ask get layer sides]]
    set layer_mirror [string trim [ask get layer mirror]]
    set colour [numbers [ask get layer color]]
    set layer_colour [expr {[llength $colour] == 3 ? $colour : {127 127 127}}]
    $panel.colour configure -background [layer_colour_name]
    set transparency [lindex [numbers [ask get layer transparency]] 0]
    set layer_transparency [expr {$transparency eq {} ? 0.0 : max(0.0, min(1.0, $transparency))}]
}

proc viewer::model_title {id} {
    set model [model_of_id $id]
    return [expr {$model eq {} ? "a child model" : [dict get $model name]}]
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
    variable current_layer
    variable current_id
    set name [one_word $layer_name]
    if {$current_layer eq {} || $name eq {} || $name eq $current_layer} {
        if {$current_layer ne {}} { set layer_name $current_layer }
        return
    }
    if {$name in [layers_of $current_id]} {
        say_status "There is a layer $name already"
        set layer_name $current_layer
        tree_selected
        return
    }
    # Asking for the layers has changed the library's selection.
    tree_selected
    sorvel set layer name $name
    refresh_model_rows $current_id $name
    draw_soon
}

proc viewer::change_sides {} {
    sorvel set layer sides [expr {[.side.layer.sides get] eq "double" ? 2 : 1}]
    redraw_edited
}

proc viewer::change_mirror {} {
    variable layer_mirror
    sorvel set layer mirror $layer_mirror
    redraw_edited
}

proc viewer::choose_layer_colour {} {
    variable current_layer
    variable layer_colour
    variable FULL_COLOUR
    if {$current_layer eq {}} return
    set chosen [tk_chooseColor -title "Colour of $current_layer" -initialcolor [layer_colour_name]]
    if {$chosen eq {}} return
    set layer_colour [lmap part [winfo rgb . $chosen] { expr {round($part / 65535.0 * $FULL_COLOUR)} }]
    sorvel set layer color {*}$layer_colour
    .side.layer.colour configure -background [layer_colour_name]
    redraw_edited
}

proc viewer::change_transparency {value} {
    variable current_layer
    if {$current_layer eq {}} return
    sorvel set layer transparency [plain $value]
    draw_soon
}

proc viewer::new_layer {} {
    variable current_id
    if {$current_id == 0} return
    set names [layers_of $current_id]
    set name new
    for {set number 2} {$name in $names} {incr number} { set name new$number }
    sorvel add layer $name
    refresh_model_rows $current_id $name
    draw_soon
}

proc viewer::delete_layer {} {
    variable current_id
    variable current_layer
    if {$current_layer eq {}} return
    sorvel delete layer $current_layer
    refresh_model_rows $current_id {}
    draw_soon
}

# Makes the rows of a model's layers anew and selects one of them, or the model.
proc viewer::refresh_model_rows {id layer} {
    variable node
    variable filling
    set filling 1
    set row [row_of $id]
    foreach child [.side.tree children $row] {
        if {[dict get $node($child) kind] eq "layer"} {
            .side.tree delete [list $child]
            unset node($child)
        }
    }
    set at 0
    foreach name [layers_of $id] {
        set child [.side.tree insert $row $at -text $name]
        set node($child) [dict create kind layer id $id layer $name]
        incr at
    }
    set filling 0
    select_row [row_of $id $layer]
}
