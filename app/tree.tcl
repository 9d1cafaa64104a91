# The tree of the scene beside the view. What is selected in it is the selection.
#
# Owns: part_of, filling
# Offers: build, refresh, row_of, select_row, select_all, select_none, relabel, rename_layer
# Calls: notices, scene, selection, settings, theme

namespace eval viewer::tree {
    namespace export build refresh row_of select_row select_all select_none relabel rename_layer
    namespace ensemble create
    namespace import ::viewer::theme::px
    variable part_of        ;# by row: the part of the scene that it stands for, as the selection has it
    variable filling 0      ;# 1 while the tree is made
    array set part_of {}
    viewer::scene listen viewer::tree::refresh
}

# Puts the tree with its title into that frame.
proc viewer::tree::build {frame} {
    ttk::label $frame.title -text "Scene" -style Bold.TLabel -padding [list [px 8] [px 4]]
    ttk::treeview .side.tree -show tree -selectmode extended -height 6 -yscrollcommand {.side.treebar set}
    .side.tree column #0 -width 100 -stretch 1
    ttk::scrollbar .side.treebar -orient vertical -command {.side.tree yview}
    grid $frame.title -columnspan 2 -sticky ew
    grid .side.tree .side.treebar -in $frame -sticky nsew
    grid rowconfigure $frame 1 -weight 1
    grid columnconfigure $frame 0 -weight 1
    bind .side.tree <<TreeviewSelect>> viewer::tree::selected
}

# ---- the rows ------------------------------------------------------------------------------------------------------

# Makes the tree anew from what is in the scene. Rows that stood there before stay open and selected.
proc viewer::tree::refresh {{is_new 0}} {
    variable part_of
    variable filling
    if {![winfo exists .side.tree]} return
    set models [viewer::scene models]
    set chosen [lmap row [.side.tree selection] { set part_of($row) }]
    set open {}
    foreach row [array names part_of] {
        set part $part_of($row)
        if {[dict get $part layer] eq {}} { dict set open [dict get $part id] [.side.tree item $row -open] }
    }
    set filling 1
    .side.tree delete [.side.tree children {}]
    array unset part_of
    foreach model $models {
        set id [dict get $model id]
        set row [add_part {} [dict get $model name] model $model]
        if {$is_new || ![dict exists $open $id]} { .side.tree item $row -open [expr {[llength $models] < 4}] }
    }
    if {!$is_new} {
        foreach row [array names part_of] {
            set part $part_of($row)
            if {[dict get $part layer] eq {} && [dict exists $open [dict get $part id]]} {
                .side.tree item $row -open [dict get $open [dict get $part id]]
            }
        }
        .side.tree selection set [lmap row [array names part_of] {
            expr {$part_of($row) in $chosen ? $row : [continue]}
        }]
    } elseif {[llength $models] > 0} {
        .side.tree selection set [list [lindex [.side.tree children {}] 0]]
    }
    set filling 0
    selected
}

proc viewer::tree::add_row {parent text part} {
    variable part_of
    set row [.side.tree insert $parent end -text $text]
    set part_of($row) $part
    return $row
}

# A model or a child with its layers and children. A lent child has none: it stands in the scene as a model of its own.
proc viewer::tree::add_part {parent text kind part} {
    set id [dict get $part id]
    set row [add_row $parent $text [dict create kind $kind id $id layer {}]]
    if {![dict exists $part layers]} { return $row }
    foreach layer [dict get $part layers] {
        set name [dict get $layer name]
        add_row $row $name [dict create kind layer id $id layer $name]
    }
    foreach child [dict get $part children] { add_part $row "[dict get $child name]   (child)" child $child }
    return $row
}

# The row of a model, a child or one of its layers; empty when there is none.
proc viewer::tree::row_of {id {layer {}}} {
    variable part_of
    foreach row [array names part_of] {
        if {[dict get $part_of($row) id] eq $id && [dict get $part_of($row) layer] eq $layer} { return $row }
    }
    return {}
}

# The row of a model or child shows another name.
proc viewer::tree::relabel {id name} {
    set row [row_of $id]
    if {$row ne {}} { .side.tree item $row -text $name }
}

# The row of a layer belongs to the layer of another name.
proc viewer::tree::rename_layer {id old new} {
    variable part_of
    set row [row_of $id $old]
    if {$row eq {}} return
    .side.tree item $row -text $new
    dict set part_of($row) layer $new
}

# ---- selecting -----------------------------------------------------------------------------------------------------

proc viewer::tree::selected {} {
    variable part_of
    variable filling
    if {$filling} return
    viewer::selection choose [lmap row [.side.tree selection] { set part_of($row) }]
}

proc viewer::tree::select_row {row} {
    if {$row eq {}} return
    .side.tree see $row
    .side.tree selection set [list $row]
    selected
}

proc viewer::tree::select_all {} {
    viewer::settings keep side 1
    .side.tree selection set [.side.tree children {}]
    selected
}

proc viewer::tree::select_none {} {
    viewer::notices hide
    if {![winfo exists .side.tree]} return
    .side.tree selection set {}
    selected
}
