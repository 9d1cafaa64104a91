# The panels beside the view: the tree of the scene above, what is selected in it below. The tree's selection is the
# library's selection. Nothing else changes that one, and while an edit is on its way not even the tree does: each call of
# the library may serve the event that selects something else.

namespace eval viewer {
    variable node                ;# what each row of the tree stands for: a dict with kind, id, layer
    variable current_id 0        ;# the current model or child, 0 when nothing is selected
    variable current_layer {}
    variable can_edit 0          ;# 1 when the library's other verbs reach it
    variable shown_layers 0      ;# layers that are selected
    variable filling 0           ;# 1 while the tree is made
    variable editing 0           ;# depth of edits on their way
    variable selection_waits 0   ;# 1 when the tree's selection changed meanwhile
    array set node {}
}

proc viewer::build_panels {} {
    ttk::panedwindow .side.split -orient vertical
    pack .side.split -fill both -expand 1
    ttk::frame .side.scene
    ttk::label .side.scene.title -text "Scene" -style Bold.TLabel -padding [list [px 8] [px 4]]
    ttk::treeview .side.tree -show tree -selectmode extended -height 6 -yscrollcommand {.side.treebar set}
    .side.tree column #0 -width 100 -stretch 1
    ttk::scrollbar .side.treebar -orient vertical -command {.side.tree yview}
    grid .side.scene.title -columnspan 2 -sticky ew
    grid .side.tree .side.treebar -in .side.scene -sticky nsew
    grid rowconfigure .side.scene 1 -weight 1
    grid columnconfigure .side.scene 0 -weight 1
    ttk::notebook .side.tabs
    foreach {name text} {layer Layer points Points place Place} {
        ttk::frame .side.$name -padding [px 8] -style Panel.TFrame
        .side.tabs add .side.$name -text $text -sticky nsew
    }
    .side.split add .side.scene -weight 1
    .side.split add .side.tabs -weight 1
    foreach widget {.side.tree .side.treebar .side.layer .side.points .side.place} { raise $widget }
    build_layer_panel .side.layer
    build_points_panel .side.points
    build_place_panel .side.place
    bind .side.tree <<TreeviewSelect>> viewer::tree_selected
    bind .side.tabs <<NotebookTabChanged>> viewer::refresh_tab
}

# ---- the tree ------------------------------------------------------------------------------------------------------

# Makes the tree anew from what is in the scene. Rows that stood there before stay open and selected.
proc viewer::refresh_panels {{is_new 0}} {
    variable scene
    variable node
    variable filling
    if {![winfo exists .side.tree]} return
    set selected [lmap row [.side.tree selection] { set node($row) }]
    set open {}
    foreach row [array names node] {
        if {[dict get $node($row) layer] eq {}} { dict set open [dict get $node($row) id] [.side.tree item $row -open] }
    }
    set filling 1
    .side.tree delete [.side.tree children {}]
    array unset node
    foreach model $scene {
        set id [dict get $model id]
        set row [add_part {} [dict get $model name] model $model]
        if {$is_new || ![dict exists $open $id]} { .side.tree item $row -open [expr {[llength $scene] < 4}] }
    }
    if {!$is_new} {
        foreach row [array names node] {
            if {[dict get $node($row) layer] eq {} && [dict exists $open [dict get $node($row) id]]} {
                .side.tree item $row -open [dict get $open [dict get $node($row) id]]
            }
        }
        .side.tree selection set [lmap row [array names node] { expr {$node($row) in $selected ? $row : [continue]} }]
    } elseif {[llength $scene] > 0} {
        .side.tree selection set [list [lindex [.side.tree children {}] 0]]
    }
    set filling 0
    tree_selected
}

proc viewer::add_row {parent text what} {
    variable node
    set row [.side.tree insert $parent end -text $text]
    set node($row) $what
    return $row
}

# A model or a child with its layers and children. A lent child has none: it stands in the scene as a model of its own.
proc viewer::add_part {parent text kind part} {
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

# The tree's selection becomes the library's. What was typed meanwhile goes to what was selected before.
proc viewer::tree_selected {} {
    variable filling
    variable editing
    variable selection_waits
    if {$filling} return
    if {$editing} {
        set selection_waits 1
        return
    }
    commit_fields
    edit_alone viewer::take_selection
    refresh_tab
}

# Runs a script that works on the library's selection. A selection that changes meanwhile is taken over afterwards.
proc viewer::edit_alone {args} {
    variable editing
    variable selection_waits
    incr editing
    try {
        set result [{*}$args]
    } finally {
        incr editing -1
    }
    if {!$editing && $selection_waits} {
        set selection_waits 0
        after idle viewer::tree_selected
    }
    return $result
}

# An edit of what is selected.
proc viewer::edit {args} {
    return [edit_alone sorvel {*}$args]
}

proc viewer::take_selection {} {
    variable node
    variable current_id
    variable current_layer
    variable can_edit
    variable shown_layers
    sorvel select clear
    lassign {0 {} 0 0} current_id current_layer can_edit shown_layers
    foreach row [.side.tree selection] {
        set id [dict get $node($row) id]
        set selects [select_part $id]
        if {[dict get $node($row) layer] ne {}} { incr shown_layers }
        if {$current_id ne "0"} continue
        set current_id $id
        set current_layer [dict get $node($row) layer]
        set can_edit $selects
    }
    # A name that the library's other verbs cannot be told: it has a blank, or is too long.
    if {$can_edit && $current_layer ne {} && [ask select layer $current_layer] ne "1"} { set can_edit 0 }
}

# Selects a model, or a child whose number no model has: the verb that selects finds the model first. 1 when it did.
proc viewer::select_part {id} {
    set number [string trimleft $id c]
    if {$number ne $id && [model_of_id $number] ne {}} { return 0 }
    return [expr {[lindex [quietly sorvel select model $number] 1] eq {}}]
}

# Sends what stands in the fields and has not been sent yet.
proc viewer::commit_fields {} {
    if {![winfo exists .side.tree]} return
    rename_layer
    commit_point
    commit_place
}

proc viewer::refresh_tab {} {
    switch [.side.tabs select] {
        .side.layer refresh_layer
        .side.points refresh_points
        .side.place refresh_place
    }
}

# The row of a model, a child or one of its layers; empty when there is none.
proc viewer::row_of {id {layer {}}} {
    variable node
    foreach row [array names node] {
        if {[dict get $node($row) id] eq $id && [dict get $node($row) layer] eq $layer} { return $row }
    }
    return {}
}

proc viewer::select_row {row} {
    if {$row eq {}} return
    .side.tree see $row
    .side.tree selection set [list $row]
    tree_selected
}

# ---- the menu Select -----------------------------------------------------------------------------------------------

proc viewer::select_all {} {
    make_sure_of_side
    .side.tree selection set [.side.tree children {}]
    tree_selected
}

proc viewer::select_none {} {
    hide_notice
    if {![winfo exists .side.tree]} return
    .side.tree selection set {}
    tree_selected
}

proc viewer::show_place {} {
    make_sure_of_side
    .side.tabs select .side.place
}

proc viewer::make_sure_of_side {} {
    variable shows_side
    if {$shows_side} return
    set shows_side 1
    side_changed
}

# The models that are selected: ids of those that stand in the scene itself.
proc viewer::selected_models {} {
    variable node
    set ids {}
    foreach row [.side.tree selection] {
        set id [dict get $node($row) id]
        if {[model_of_id $id] ne {} && $id ni $ids} { lappend ids $id }
    }
    return $ids
}

proc viewer::pancake {} {
    if {[llength [selected_models]] == 0} {
        say_status "Nothing is selected"
        return
    }
    edit select pancake
    refresh_tab
    redraw_edited
}

# Removes what is selected in the tree: layers, or whole models of the scene. A child goes with its model's file.
proc viewer::delete_selected {} {
    variable node
    set rows [lmap row [.side.tree selection] { set node($row) }]
    set layers [lmap what $rows { expr {[dict get $what kind] eq "layer" ? $what : [continue]} }]
    set models [lmap what $rows { expr {[dict get $what kind] eq "model" ? [dict get $what id] : [continue]} }]
    if {[llength $layers] == 0 && [llength $models] == 0} {
        say_status [expr {[llength $rows] == 0 ? "Nothing is selected" : "A child belongs to the file of its model"}]
        return
    }
    set deleted [edit_alone viewer::delete_parts $layers $models]
    read_scene
    scene_changed
    say_status "$deleted deleted"
}

# How many went. Layers first: they may belong to the models.
proc viewer::delete_parts {layers models} {
    set deleted 0
    foreach what $layers {
        lassign [list [dict get $what id] [dict get $what layer]] id layer
        if {$id in $models} continue
        sorvel select clear
        if {![select_part $id] || [ask select layer $layer] ne "1"} continue
        sorvel delete layer $layer
        incr deleted
    }
    if {[llength $models] == 0} { return $deleted }
    sorvel select clear
    foreach id $models { sorvel select model $id }
    sorvel select delete
    return [expr {$deleted + [llength $models]}]
}

# What was edited shows at once. A model that is posed by an animation takes its points at an evaluation of the clock.
proc viewer::redraw_edited {} {
    variable scene_list
    variable anim_time
    if {$scene_list ne {}} { time_seek $anim_time }
    draw_soon
}
