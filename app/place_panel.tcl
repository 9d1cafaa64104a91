# The panel of a model's place: where it was moved, scaled and turned to; all of it absolute, from where the model's file
# puts it. What it was turned about, and by which words, only this panel knows.
#
# Owns: place_value, place_shown, place_ids, turns_of
# Offers: build, refresh, commit
# Calls: library, numbers, scene, selection, theme, view

namespace eval viewer::place_panel {
    namespace export build refresh commit
    namespace ensemble create
    namespace import ::viewer::theme::px
    variable place_value
    variable place_shown          ;# the same as they were shown
    variable place_ids {}         ;# of the models that it shows
    variable turns_of             ;# of a model: the rows turn, pivot and axis as they were given last
    array set place_shown {}
    array set turns_of {}
    variable PLACE_ROWS {
        move   Move   {0 0 0}  {where the model stands}
        scale  Scale  {1 1 1}  {1 is its own size}
        turn   Turn   {0 0 0}  {degrees about x, y, z, or words such as z30 in the order wanted}
        pivot  Centre {0 0 0}  {the point to turn about; 0 0 0 is the model's own}
        axis   Axis   {0 0 0}  {a second point of the axis to turn about; needs a centre}
    }
    variable ANGLE {[xyz]?-?(?:\d+\.?\d*|\.\d+)}
}

proc viewer::place_panel::build {panel} {
    variable PLACE_ROWS
    ttk::label $panel.hint -style Dim.TLabel -background [viewer::theme colour panel]
    grid $panel.hint -columnspan 4 -sticky w -pady [list 0 [px 6]]
    foreach {row text rest help} $PLACE_ROWS {
        ttk::label $panel.l$row -text $text -background [viewer::theme colour panel]
        set fields {}
        foreach part {0 1 2} {
            set field $panel.$row$part
            ttk::entry $field -width 6 -textvariable ::viewer::place_panel::place_value($row,$part) -justify right
            bind $field <Return> viewer::place_panel::commit
            bind $field <FocusOut> viewer::place_panel::commit
            bind $field <Escape> { viewer::place_panel refresh; viewer::view take_keyboard; break }
            bind $field <FocusIn> [list $panel.help configure -text "$text: $help"]
            lappend fields $field
        }
        grid $panel.l$row {*}$fields -sticky ew -pady [px 2] -padx 1
        grid configure $panel.l$row -padx [list 0 [px 8]]
    }
    ttk::frame $panel.buttons -style Panel.TFrame
    ttk::button $panel.middle -text "Turn about middle" -command viewer::place_panel::turn_about_middle
    ttk::button $panel.reset -text "Back" -command viewer::place_panel::reset_place
    pack $panel.middle $panel.reset -in $panel.buttons -side left -fill x -expand 1 -padx [px 2]
    grid $panel.buttons -columnspan 4 -sticky ew -pady [px 6]
    ttk::label $panel.help -style Dim.TLabel -background [viewer::theme colour panel] -justify left
    grid $panel.help -columnspan 4 -sticky ew
    bind $panel <Configure> [list $panel.help configure -wraplength %w]
    foreach column {1 2 3} { grid columnconfigure $panel $column -weight 1 -uniform value }
}

proc viewer::place_panel::refresh {} {
    variable place_ids
    variable place_value
    variable place_shown
    variable PLACE_ROWS
    set place_ids [viewer::selection models]
    set model [viewer::scene model [lindex $place_ids 0]]
    set placement [expr {$model eq {} ? {} : [placement_of [dict get $model id]]}]
    foreach {row text rest help} $PLACE_ROWS {
        set values [expr {[dict exists $placement $row] ? [dict get $placement $row] : $rest}]
        foreach part {0 1 2} value $values {
            if {[string is double -strict $value]} { set value [viewer::numbers short $value] }
            set place_value($row,$part) $value
            set place_shown($row,$part) $value
            .side.place.$row$part state [expr {$model eq {} ? "disabled" : "!disabled"}]
        }
    }
    foreach name {middle reset} { .side.place.$name state [expr {$model eq {} ? "disabled" : "!disabled"}] }
    .side.place.hint configure -text [expr {$model eq {} ? "Choose a model in the tree"
        : ([llength $place_ids] > 1 ? "[llength $place_ids] models" : "Place of [dict get $model name]")}]
}

# The rows of a model. Its rotation is as it was typed while that is what it still stands in.
proc viewer::place_panel::placement_of {id} {
    variable turns_of
    set told [sorvel scene placement $id]
    set rows [dict create move [dict get $told translation] scale [dict get $told scale] \
        turn [dict get $told rotation] pivot {0 0 0} axis {0 0 0}]
    if {[info exists turns_of($id)] && [dict get $turns_of($id) rotation] eq [dict get $told rotation]} {
        set rows [dict merge $rows [dict remove $turns_of($id) rotation]]
    }
    return $rows
}

# Sends the rows that were changed to the models that the panel shows. A row with what is no number goes back.
proc viewer::place_panel::commit {} {
    variable place_ids
    variable place_value
    variable place_shown
    variable PLACE_ROWS
    if {[llength $place_ids] == 0} return
    set changed {}
    foreach {row text rest help} $PLACE_ROWS {
        set values [lmap part {0 1 2} { string trim $place_value($row,$part) }]
        if {$values eq [lmap part {0 1 2} { set place_shown($row,$part) }]} continue
        if {[is_place_row $row $values]} { dict set changed $row $values }
        foreach part {0 1 2} {
            if {![dict exists $changed $row]} { set place_value($row,$part) $place_shown($row,$part) }
            set place_shown($row,$part) $place_value($row,$part)
        }
    }
    if {[dict size $changed] == 0} return
    viewer::selection alone viewer::place_panel::put_models $place_ids $changed
}

proc viewer::place_panel::is_place_row {row values} {
    variable ANGLE
    foreach value $values {
        if {$row eq "turn" ? ![regexp "^$ANGLE\$" $value] : ![viewer::numbers is_one $value]} { return 0 }
    }
    return 1
}

# Gives models these rows of their places, each beside its own other ones.
proc viewer::place_panel::put_models {ids changed} {
    foreach id $ids {
        if {[viewer::scene model $id] ne {}} { put_model $id [dict merge [placement_of $id] $changed] }
    }
    # Each was selected by itself meanwhile.
    viewer::selection take_again
    viewer::scene measure
    viewer::view draw_soon
}

# The centre and the axis belong to the selection, which forgets them when it is cleared.
proc viewer::place_panel::put_model {id placement} {
    variable turns_of
    sorvel select clear
    sorvel select model $id
    foreach {row word} {move translate scale scale} {
        # What the library told may have an exponent, which its older verbs do not read. What a person typed goes as it is.
        sorvel select $word {*}[lmap value [dict get $placement $row] {
            if {[string match *e* $value]} { viewer::numbers plain $value } else { set value }
        }]
    }
    foreach {row word} {pivot centre axis axis} {
        if {[dict get $placement $row] ne {0 0 0}} { sorvel select rotate $word {*}[dict get $placement $row] }
    }
    sorvel select rotate {*}[dict get $placement turn]
    set turns_of($id) [dict create rotation [dict get [sorvel scene placement $id] rotation] \
        turn [dict get $placement turn] pivot [dict get $placement pivot] axis [dict get $placement axis]]
}

proc viewer::place_panel::turn_about_middle {} {
    variable place_value
    set middle [viewer::numbers of [viewer::library ask select centre]]
    if {[llength $middle] != 3} return
    foreach part {0 1 2} value $middle { set place_value(pivot,$part) [viewer::numbers short $value] }
    commit
}

proc viewer::place_panel::reset_place {} {
    variable place_ids
    variable PLACE_ROWS
    set rest {}
    foreach {row text values help} $PLACE_ROWS { dict set rest $row $values }
    viewer::selection alone viewer::place_panel::put_models $place_ids $rest
}
