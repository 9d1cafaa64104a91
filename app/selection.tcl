# What is selected. The parts that a person chose become the library's selection, and nothing else changes that one.
# While an edit is on its way not even a person does: each call of the library may serve the event that selects something
# else, which is taken over afterwards.
#
# A part is a dict with kind (model, child, layer), id, and layer, which is empty for a model or a child.
#
# Owns: parts, current_id, current_layer, can_edit, layer_count, editing, waits, listeners
# Offers: choose, commit, listen, announce, parts, models, id, layer, can_edit, layer_count, layer_renamed, alone, edit,
#     take_again, reach
# Calls: library, scene

namespace eval viewer::selection {
    namespace export choose commit listen announce parts models id layer can_edit layer_count layer_renamed alone edit \
        take_again reach
    namespace ensemble create
    variable parts {}
    variable current_id 0        ;# the first model or child among them, 0 when nothing is selected
    variable current_layer {}
    variable can_edit 0          ;# 1 when the library's other verbs reach it
    variable layer_count 0       ;# layers that are selected
    variable editing 0           ;# depth of edits on their way
    variable waits 0             ;# 1 when another selection was chosen meanwhile
    variable listeners {leaving {} chosen {}}
}

# ---- choosing ------------------------------------------------------------------------------------------------------

# Selects these parts and nothing else.
proc viewer::selection::choose {wanted} {
    variable parts
    set parts $wanted
    take
}

# The parts become the library's selection. What was typed meanwhile goes to what was selected before.
proc viewer::selection::take {} {
    variable editing
    variable waits
    if {$editing} {
        set waits 1
        return
    }
    commit
    alone viewer::selection::send
    announce chosen
}

# Before it is left: whoever holds something that was typed for the selection sends it now.
proc viewer::selection::commit {} {
    announce leaving
}

# From now on this command is called when the selection is about to be left ("leaving") or was taken over ("chosen").
proc viewer::selection::listen {event command} {
    variable listeners
    dict lappend listeners $event $command
}

# Those who show the selection are told anew: "chosen" after an edit that changed it.
proc viewer::selection::announce {event} {
    variable listeners
    foreach command [dict get $listeners $event] { {*}$command }
}

proc viewer::selection::send {} {
    variable parts
    variable current_id
    variable current_layer
    variable can_edit
    variable layer_count
    sorvel select clear
    lassign {0 {} 0 0} current_id current_layer can_edit layer_count
    foreach part $parts {
        set id [dict get $part id]
        set selects [reach $id]
        if {[dict get $part layer] ne {}} { incr layer_count }
        if {$current_id ne "0"} continue
        set current_id $id
        set current_layer [dict get $part layer]
        set can_edit $selects
    }
    # A name that the library's other verbs cannot be told: it has a blank, or is too long.
    if {$can_edit && $current_layer ne {}} {
        set can_edit [expr {[viewer::library ask select layer $current_layer] eq "1"}]
    }
}

# Selects a model, or a child whose number no model has: the verb that selects finds the model first. 1 when it did.
proc viewer::selection::reach {id} {
    set number [string trimleft $id c]
    if {$number ne $id && [viewer::scene model $number] ne {}} { return 0 }
    return [expr {[lindex [viewer::library quietly sorvel select model $number] 1] eq {}}]
}

# ---- asking --------------------------------------------------------------------------------------------------------

proc viewer::selection::parts {} {
    variable parts
    return $parts
}

# Ids of the models that are selected, of those that stand in the scene itself.
proc viewer::selection::models {} {
    variable parts
    set ids {}
    foreach part $parts {
        set id [dict get $part id]
        if {[viewer::scene model $id] ne {} && $id ni $ids} { lappend ids $id }
    }
    return $ids
}

# The current model or child, 0 when nothing is selected.
proc viewer::selection::id {} {
    variable current_id
    return $current_id
}

# The name of the current layer, or nothing.
proc viewer::selection::layer {} {
    variable current_layer
    return $current_layer
}

# Whether the library's other verbs reach what is current.
proc viewer::selection::can_edit {} {
    variable can_edit
    return $can_edit
}

proc viewer::selection::layer_count {} {
    variable layer_count
    return $layer_count
}

# ---- editing -------------------------------------------------------------------------------------------------------

# Runs a command that works on the library's selection. A selection that is chosen meanwhile is taken over afterwards.
proc viewer::selection::alone {args} {
    variable editing
    variable waits
    incr editing
    try {
        set result [{*}$args]
    } finally {
        incr editing -1
    }
    if {!$editing && $waits} {
        set waits 0
        after idle viewer::selection::take
    }
    return $result
}

# An edit of what is selected, in the words of the library.
proc viewer::selection::edit {args} {
    return [alone sorvel {*}$args]
}

# To be called by an edit that selected something else for itself.
proc viewer::selection::take_again {} {
    variable waits
    set waits 1
}

# The current layer has another name now.
proc viewer::selection::layer_renamed {name} {
    variable parts
    variable current_id
    variable current_layer
    set parts [lmap part $parts {
        set is_current [expr {[dict get $part id] eq $current_id && [dict get $part layer] eq $current_layer}]
        expr {$is_current ? [dict replace $part layer $name] : $part}
    }]
    set current_layer $name
}
