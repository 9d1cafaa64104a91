# What a person does to what is selected, as the menus offer it. What the panels change they send themselves.
#
# Owns: nothing
# Offers: pancake, delete_selected, rename_model, redraw
# Calls: library, scene, selection, status, timeline, tree, view

namespace eval viewer::edits {
    namespace export pancake delete_selected rename_model redraw
    namespace ensemble create
}

proc viewer::edits::pancake {} {
    if {[llength [viewer::selection models]] == 0} {
        viewer::status say "Nothing is selected"
        return
    }
    viewer::selection edit select pancake
    viewer::selection announce chosen
    redraw
}

# Removes what is selected: layers, or whole models of the scene. A child goes with its model's file.
proc viewer::edits::delete_selected {} {
    set parts [viewer::selection parts]
    set layers [lmap part $parts { expr {[dict get $part kind] eq "layer" ? $part : [continue]} }]
    set models [lmap part $parts { expr {[dict get $part kind] eq "model" ? [dict get $part id] : [continue]} }]
    if {[llength $layers] == 0 && [llength $models] == 0} {
        viewer::status say \
            [expr {[llength $parts] == 0 ? "Nothing is selected" : "A child belongs to the file of its model"}]
        return
    }
    set deleted [viewer::selection alone viewer::edits::delete_parts $layers $models]
    viewer::scene look_again
    viewer::scene changed
    viewer::status say "$deleted deleted"
}

# How many went. Layers first: they may belong to the models.
proc viewer::edits::delete_parts {layers models} {
    set deleted 0
    foreach what $layers {
        lassign [list [dict get $what id] [dict get $what layer]] id layer
        if {$id in $models} continue
        sorvel select clear
        if {![viewer::selection reach $id] || [viewer::library ask select layer $layer] ne "1"} continue
        sorvel delete layer $layer
        incr deleted
    }
    if {[llength $models] == 0} { return $deleted }
    sorvel select clear
    foreach id $models { sorvel select model $id }
    sorvel select delete
    return [expr {$deleted + [llength $models]}]
}

proc viewer::edits::rename_model {id name} {
    set name [string tolower [viewer::library one_word $name]]
    if {$name eq {}} return
    sorvel file rename $id $name
    viewer::scene look_again
    viewer::tree relabel $id $name
    viewer::status say "Renamed to $name"
}

# What was edited shows at once. A model that is posed by an animation takes its points at an evaluation of the clock.
proc viewer::edits::redraw {} {
    if {[viewer::scene list_file] ne {}} { viewer::timeline seek [viewer::timeline now] }
    viewer::view draw_soon
}
