# The panel of a layer: name, sides, mirror, colour, transparency. Every edit is sent at once.
#
# Owns: name, shown, mirror, transparency, colour
# Offers: build, refresh, commit
# Calls: edits, library, numbers, scene, selection, status, theme, tree, view

namespace eval viewer::layer_panel {
    namespace export build refresh commit
    namespace ensemble create
    namespace import ::viewer::theme::px
    variable name {}
    variable shown {}                ;# id and name of the layer that the panel was filled from
    variable mirror none
    variable transparency 0.0
    variable colour {127 127 127}    ;# as the library has it: 127 is full
    variable FULL_COLOUR 127
}

proc viewer::layer_panel::build {panel} {
    ttk::label $panel.hint -style Dim.TLabel -anchor w -justify left -background [viewer::theme colour panel]
    foreach {name text} {name Name sides Sides mirror Mirror colour Colour transparency Transparency} {
        ttk::label $panel.l$name -text $text -background [viewer::theme colour panel]
    }
    ttk::entry $panel.name -textvariable ::viewer::layer_panel::name -width 12
    bind $panel.name <Return> viewer::layer_panel::commit
    bind $panel.name <FocusOut> viewer::layer_panel::commit
    bind $panel.name <Escape> { viewer::layer_panel refresh; viewer::view take_keyboard; break }
    ttk::combobox $panel.sides -values {single double} -state readonly -width 8
    bind $panel.sides <<ComboboxSelected>> viewer::layer_panel::change_sides
    ttk::combobox $panel.mirror -values {none x y z} -state readonly -width 8 \
        -textvariable ::viewer::layer_panel::mirror
    bind $panel.mirror <<ComboboxSelected>> viewer::layer_panel::change_mirror
    frame $panel.colour -height [px 22] -cursor hand2 -highlightthickness 1 \
        -highlightbackground [viewer::theme colour line]
    bind $panel.colour <Button-1> viewer::layer_panel::choose_colour
    ttk::scale $panel.transparency -from 0 -to 1 -variable ::viewer::layer_panel::transparency \
        -command viewer::layer_panel::change_transparency
    ttk::frame $panel.buttons -style Panel.TFrame
    ttk::button $panel.new -text "New layer" -command viewer::layer_panel::new_layer
    ttk::button $panel.delete -text "Delete layer" -command viewer::layer_panel::delete_layer
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
proc viewer::layer_panel::refresh {} {
    variable name
    variable shown
    variable mirror
    variable colour
    variable transparency
    set panel .side.layer
    lassign [list [viewer::selection id] [viewer::selection layer] [viewer::selection can_edit]] id current can_edit
    # A script may have taken it away.
    if {$current eq {} || [catch { sorvel scene layer $id $current } layer]} { set layer {} }
    set on [expr {$can_edit && $layer ne {}}]
    foreach part {name delete} { $panel.$part state [expr {$on ? "!disabled" : "disabled"}] }
    foreach part {sides mirror} { $panel.$part state [expr {$on ? "!disabled readonly" : "disabled"}] }
    $panel.transparency state [expr {$on && [dict get $layer seen] ? "!disabled" : "disabled"}]
    $panel.new state [expr {$can_edit ? "!disabled" : "disabled"}]
    $panel.hint configure -text [hint $layer]
    if {$layer eq {}} {
        lassign {} name shown mirror
        $panel.sides set {}
        $panel.colour configure -background [viewer::theme colour panel]
        return
    }
    set name $current
    set shown [list $id $current]
    $panel.sides set [expr {[dict get $layer sides] == 1 ? "single" : "double"}]
    set mirror [expr {[dict get $layer mirror] eq {} ? "none" : [dict get $layer mirror]}]
    set colour [dict get $layer colour]
    $panel.colour configure -background [colour_name]
    set transparency [expr {max(0.0, min(1.0, [dict get $layer transparency]))}]
}

# What the panel shows, and why something in it is grey.
proc viewer::layer_panel::hint {layer} {
    if {[viewer::selection id] eq "0"} { return "Nothing is selected" }
    if {$layer eq {}} { return "Choose a layer in the tree" }
    set count [viewer::selection layer_count]
    set text [expr {$count > 1 ? "The first of $count layers, of" : "Layer of"}]
    append text " [dict get [viewer::scene part [viewer::selection id]] name]"
    if {![viewer::selection can_edit]} { return "$text. It cannot be edited: its name or its number is not its own." }
    if {![dict get $layer seen]} { append text ". Without a texture no transparency is seen." }
    return $text
}

proc viewer::layer_panel::colour_name {} {
    variable colour
    variable FULL_COLOUR
    return [format #%02x%02x%02x {*}[lmap part $colour {
        expr {max(0, min(255, round($part * 255.0 / $FULL_COLOUR)))}
    }]]
}

# Sends a name that was typed and not sent yet.
proc viewer::layer_panel::commit {} {
    variable name
    variable shown
    lassign [list [viewer::selection id] [viewer::selection layer]] id old
    if {$shown ne [list $id $old] || $name eq $old} return
    set new [viewer::library one_word $name]
    set name $old
    if {$new eq {} || $new eq $old} return
    if {$new in [viewer::scene layers $id]} {
        viewer::status say "There is a layer $new already"
        return
    }
    viewer::selection alone viewer::layer_panel::give_name $new
    viewer::scene look_again
    if {$new ni [viewer::scene layers $id]} return
    viewer::selection layer_renamed $new
    viewer::tree rename_layer $id $old $new
    set name $new
    set shown [list $id $new]
    viewer::view draw_soon
}

# The library's selection does not follow a layer that gets another name.
proc viewer::layer_panel::give_name {new} {
    sorvel set layer name $new
    viewer::library ask select layer $new
}

proc viewer::layer_panel::change_sides {} {
    viewer::selection edit set layer sides [expr {[.side.layer.sides get] eq "double" ? 2 : 1}]
    viewer::edits redraw
}

proc viewer::layer_panel::change_mirror {} {
    variable mirror
    viewer::selection edit set layer mirror $mirror
    viewer::edits redraw
}

proc viewer::layer_panel::choose_colour {} {
    variable colour
    variable FULL_COLOUR
    set current [viewer::selection layer]
    if {$current eq {} || ![viewer::selection can_edit]} return
    set layer [list [viewer::selection id] $current]
    set chosen [tk_chooseColor -title "Colour of $current" -initialcolor [colour_name]]
    # Another may be selected by now.
    if {$chosen eq {} || [list [viewer::selection id] [viewer::selection layer]] ne $layer} return
    set colour [lmap part [winfo rgb . $chosen] { expr {round($part / 65535.0 * $FULL_COLOUR)} }]
    viewer::selection edit set layer color {*}$colour
    .side.layer.colour configure -background [colour_name]
    viewer::edits redraw
}

proc viewer::layer_panel::change_transparency {value} {
    if {[viewer::selection layer] eq {} || ![viewer::selection can_edit]} return
    viewer::selection edit set layer transparency [viewer::numbers plain $value]
    viewer::view draw_soon
}

proc viewer::layer_panel::new_layer {} {
    if {![viewer::selection can_edit]} return
    set id [viewer::selection id]
    set names [viewer::scene layers $id]
    set new new
    for {set number 2} {$new in $names} {incr number} { set new new$number }
    viewer::selection edit add layer $new
    show_layers $id $new
    viewer::view draw_soon
}

proc viewer::layer_panel::delete_layer {} {
    if {[viewer::selection layer] eq {} || ![viewer::selection can_edit]} return
    set id [viewer::selection id]
    viewer::selection edit delete layer [viewer::selection layer]
    show_layers $id {}
    viewer::view draw_soon
}

# Shows the layers that a model has now and selects one of them, or the model.
proc viewer::layer_panel::show_layers {id layer} {
    viewer::scene look_again
    viewer::tree refresh
    viewer::tree select_row [viewer::tree row_of $id $layer]
}
