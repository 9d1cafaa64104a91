# What the tests of the forms of "scene" that change models share: calls, what a scene says, taking back.

proc scene {args} { return [sorvel scene {*}$args] }

# The text and the kind of a call that fails.
proc refused {args} {
    if {![catch { sorvel scene {*}$args } text]} { return [list succeeded $text] }
    return [list [lindex $::errorCode 1] $text]
}

# Opens a model of this text; gives its id.
proc open_text {text {name ship.mod}} {
    return [lindex [dict get [scene open [write_file $name $text]] ids] 0]
}

# All that can be asked of a model and what is below it.
proc told_of_model {id entry} {
    set told [list [scene joints $id] [scene images $id]]
    foreach n [scene points $id] { lappend told [scene point $id $n] }
    foreach layer [dict get $entry layers] {
        set name [dict get $layer name]
        lappend told [scene layer $id $name] [scene image $id $name]
        foreach n [scene points $id -layer $name] { lappend told [scene uvee $id $name $n] }
    }
    foreach child [dict get $entry children] {
        lappend told [scene placement [dict get $child id]]
        if {[dict exists $child layers]} { lappend told {*}[told_of_model [dict get $child id] $child] }
    }
    return $told
}

# All that can be asked of the scene. The counts of changes are told for themselves.
proc told_of_scene {} {
    set told [list [scene bounds]]
    foreach root [scene tree] {
        lappend told [dict remove $root changes] [scene placement [dict get $root id]]
        lappend told {*}[told_of_model [dict get $root id] $root]
    }
    return $told
}

# What is wrong with a call that is to be one step: it must change what the scene says, and be taken back and done
# again as a whole. Empty when all is right.
proc step_trouble {args} {
    set before [told_of_scene]
    scene {*}$args
    set after [told_of_scene]
    if {$before eq $after} { return "it changed nothing" }
    if {[scene undo] eq {}} { return "there is nothing to take back" }
    if {[told_of_scene] ne $before} { return "it is not taken back whole" }
    if {[scene redo] eq {}} { return "there is nothing to do again" }
    if {[told_of_scene] ne $after} { return "it is not done again whole" }
    return {}
}

# What is wrong with a call that is to be refused: it must leave everything as it was. Its kind and text.
proc refusal_trouble {args} {
    set before [list [told_of_scene] [scene tree]]
    set said [refused {*}$args]
    if {[list [told_of_scene] [scene tree]] ne $before} { return "it changed something: $said" }
    return $said
}
