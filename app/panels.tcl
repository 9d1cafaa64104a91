# The panels beside the view: the tree of the scene above, what is selected in it below. The tree's selection is the
# library's selection; the library forgets its own at every load, the tree is made anew then.

namespace eval viewer {
    variable node                ;# what each row of the tree stands for: a dict with kind, id, layer
    variable current_id 0        ;# the current model, 0 when nothing is selected
    variable current_layer {}
    variable filling 0           ;# 1 while the tree is made
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
    set ::viewer::selection_hook viewer::tree_selected
    bind .side.tree <<TreeviewSelect>> viewer::tree_selected
    bind .side.tabs <<NotebookTabChanged>> viewer::refresh_tab
}

# ---- the tree ------------------------------------------------------------------------------------------------------

# Makes the tree anew from what is in the scene.
proc viewer::refresh_panels {} {
    variable scene
    variable node
    variable filling
    if {![winfo exists .side.tree] || ".side" ni [.panes panes]} return
    set filling 1
    .side.tree delete [.side.tree children {}]
    array unset node
    set roots [lmap model $scene { dict get $model id }]
    foreach model $scene {
        set id [dict get $model id]
        set row [add_row {} [dict get $model name] [dict create kind model id $id layer {}]]
        .side.tree item $row -open [expr {[llength $scene] < 4}]
        add_layers $row $id
        add_children $row [dict get $model path] $roots
    }
    set filling 0
    set first [lindex [.side.tree children {}] 0]
    if {$first ne {}} { .side.tree selection set [list $first] }
    tree_selected
}

proc viewer::add_row {parent text what} {
    variable node
    set row [.side.tree insert $parent end -text $text]
    set node($row) $what
    return $row
}

proc viewer::add_layers {row id} {
    foreach layer [layers_of $id] { add_row $row $layer [dict create kind layer id $id layer $layer] }
}

# Child models are found by name only, and ids of children and of models may be equal: a child with the id of a model of
# the scene cannot be selected, so that it shows without layers.
proc viewer::add_children {row path roots} {
    foreach name [children_of $path] {
        set id [string trim [ask find model [string tolower $name]]]
        set reachable [expr {[string is integer -strict $id] && $id > 0 && $id ni $roots}]
        set text "[string tolower $name]   (child)"
        set child [add_row $row $text [dict create kind child id [expr {$reachable ? $id : 0}] layer {}]]
        if {$reachable} { add_layers $child $id }
    }
}

# The tree's selection becomes the library's.
proc viewer::tree_selected {} {
    variable node
    variable filling
    variable current_id
    variable current_layer
    if {$filling} return
    sorvel select clear
    set current_id 0
    set current_layer {}
    foreach row [.side.tree selection] {
        set id [dict get $node($row) id]
        if {$id == 0} continue
        sorvel select model $id
        if {$current_id == 0} {
            set current_id $id
            set current_layer [dict get $node($row) layer]
        }
    }
    # A layer whose name the library cannot be told (it has a blank, or is too long) stays unselected.
    if {$current_layer ne {} && [ask select layer $current_layer] ne "1"} { set current_layer {} }
    refresh_tab
}

proc viewer::refresh_tab {} {
    switch [.side.tabs select] {
        .side.layer refresh_layer
        .side.points refresh_points
        .side.place refresh_place
    }
}

# The row of a model or of one of its layers; empty when there is none.
proc viewer::row_of {id {layer {}}} {
    variable node
    foreach row [array names node] {
        if {[dict get $node($row) id] == $id && [dict get $node($row) layer] eq $layer} { return $row }
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
    sorvel select pancake
    redraw_edited
}

# Takes the selected models out of the scene. The library would stop at a selected child model.
proc viewer::delete_selected {} {
    variable scene
    variable wanted
    set ids [selected_models]
    if {[llength $ids] == 0} {
        say_status "Nothing is selected"
        return
    }
    sorvel select clear
    foreach id $ids { sorvel select model $id }
    sorvel select delete
    set kept {}
    foreach model $scene {
        if {[dict get $model id] ni $ids} {
            lappend kept $model
            continue
        }
        set index [lsearch -exact [lmap entry $wanted { dict get $entry path }] [dict get $model path]]
        if {$index >= 0} { set wanted [lreplace $wanted $index $index] }
    }
    set scene $kept
    scene_changed
    say_status "[llength $ids] deleted"
}

# What was edited shows at once. A model that is posed by an animation takes its points at an evaluation of the clock.
proc viewer::redraw_edited {} {
    variable scene_list
    variable anim_rate
    if {$scene_list ne {}} { time_rate $anim_rate }
    draw_soon
}
