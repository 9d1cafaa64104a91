# The panel of a model's place: where it was moved, scaled and turned to. The library does not tell these values, so
# they are remembered; all of them are absolute, from where the model's file puts it.

namespace eval viewer {
    variable place_value
    variable PLACE_ROWS {
        move   Move   {0 0 0}  {where the model stands}
        scale  Scale  {1 1 1}  {1 is its own size}
        turn   Turn   {0 0 0}  {degrees about x, y, z, or words such as z30 in the order wanted}
        pivot  Centre {0 0 0}  {the point to turn about; 0 0 0 is the model's own}
        axis   Axis   {0 0 0}  {a second point of the axis to turn about; needs a centre}
    }
    variable ANGLE {[xyz]?-?(?:\d+\.?\d*|\.\d+)}
}

proc viewer::build_place_panel {panel} {
    variable PLACE_ROWS
    ttk::label $panel.hint -style Dim.TLabel -background $::viewer::COLOUR(panel)
    grid $panel.hint -columnspan 4 -sticky w -pady [list 0 [px 6]]
    foreach {row text rest help} $PLACE_ROWS {
        ttk::label $panel.l$row -text $text -background $::viewer::COLOUR(panel)
        set fields {}
        foreach part {0 1 2} {
            set field $panel.$row$part
            ttk::entry $field -width 6 -textvariable ::viewer::place_value($row,$part) -justify right
            bind $field <Return> [list viewer::apply_place $row]
            bind $field <FocusOut> [list viewer::apply_place $row]
            bind $field <FocusIn> [list $panel.help configure -text "$text: $help"]
            lappend fields $field
        }
        grid $panel.l$row {*}$fields -sticky ew -pady [px 2] -padx 1
        grid configure $panel.l$row -padx [list 0 [px 8]]
    }
    ttk::frame $panel.buttons -style Panel.TFrame
    ttk::button $panel.middle -text "Turn about middle" -command viewer::turn_about_middle
    ttk::button $panel.reset -text "Back" -command viewer::reset_place
    pack $panel.middle $panel.reset -in $panel.buttons -side left -fill x -expand 1 -padx [px 2]
    grid $panel.buttons -columnspan 4 -sticky ew -pady [px 6]
    ttk::label $panel.help -style Dim.TLabel -background $::viewer::COLOUR(panel) -justify left
    grid $panel.help -columnspan 4 -sticky ew
    bind $panel <Configure> [list $panel.help configure -wraplength %w]
    foreach column {1 2 3} { grid columnconfigure $panel $column -weight 1 -uniform value }
}

proc viewer::refresh_place {} {
    variable current_id
    variable place_value
    variable PLACE_ROWS
    set ids [selected_models]
    set model [model_of_id [lindex $ids 0]]
    set placement [expr {$model eq {} ? {} : [dict get $model placement]}]
    foreach {row text rest help} $PLACE_ROWS {
        set values [expr {[dict exists $placement $row] ? [dict get $placement $row] : $rest}]
        foreach part {0 1 2} {
            set place_value($row,$part) [lindex $values $part]
            .side.place.$row$part state [expr {$model eq {} ? "disabled" : "!disabled"}]
        }
    }
    foreach name {middle reset} { .side.place.$name state [expr {$model eq {} ? "disabled" : "!disabled"}] }
    .side.place.hint configure -text [expr {$model eq {} ? "Choose a model in the tree"
        : ([llength $ids] > 1 ? "[llength $ids] models" : "Place of [dict get $model name]")}]
}

# Sends a row of the panel to the selected models. A row that is not three numbers goes back to what it was.
proc viewer::apply_place {row} {
    variable place_value
    variable NUMBER
    variable ANGLE
    set ids [selected_models]
    if {[llength $ids] == 0} return
    set values {}
    foreach part {0 1 2} {
        set value [string trim $place_value($row,$part)]
        if {![regexp "^[expr {$row eq "turn" ? $ANGLE : $NUMBER}]\$" $value]} {
            refresh_place
            return
        }
        lappend values $value
    }
    set old [dict get [model_of_id [lindex $ids 0]] placement]
    if {[dict exists $old $row] && [dict get $old $row] eq $values} return
    foreach id $ids {
        set placement [dict get [model_of_id $id] placement]
        dict set placement $row $values
        put_model $id $placement
    }
    tree_selected
    measure_view
    draw_soon
}

# Gives a model its place. The centre and the axis belong to the selection, which forgets them when it is cleared.
proc viewer::put_model {id placement} {
    set_model $id placement $placement
    select_only $id
    sorvel select translate {*}[dict get $placement move]
    sorvel select scale {*}[dict get $placement scale]
    foreach {row word} {pivot centre axis axis} {
        if {[dict exists $placement $row] && [dict get $placement $row] ne {0 0 0}} {
            sorvel select rotate $word {*}[dict get $placement $row]
        }
    }
    sorvel select rotate {*}[dict get $placement turn]
}

proc viewer::turn_about_middle {} {
    variable place_value
    set middle [numbers [ask select centre]]
    if {[llength $middle] != 3} return
    foreach part {0 1 2} value $middle { set place_value(pivot,$part) [short_number $value] }
    apply_place pivot
}

proc viewer::reset_place {} {
    variable REST_PLACE
    foreach id [selected_models] { put_model $id $REST_PLACE }
    tree_selected
    draw_soon
}
