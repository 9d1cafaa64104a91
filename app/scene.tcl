# What is in the scene, how it is loaded, and its time. The library knows all of it; the tree is kept here as it said it
# after the last change, because the panels go through it often.

namespace eval viewer {
    variable scene {}            ;# the models, as "scene tree" tells them
    variable scene_list {}       ;# the scene list that is open, or nothing
    variable scene_size 0.0      ;# largest extent of all that is shown
    variable failure {}          ;# the latest failed load: title, text, file, line, source, path (what was asked for)
    variable anim_time 0.0       ;# as the library's clock stood when it was asked last
    variable anim_end 0.0
    variable anim_step 1.0
    variable anim_rate 30
}

# ---- loading -------------------------------------------------------------------------------------------------------

# Opens, adds ("open", "add") or reloads ("reload"). The dictionary that the library gives, or nothing with "failure"
# set and the scene as it was.
proc viewer::load_scene {verb {path {}}} {
    variable anim_rate
    variable failure
    variable scene_list
    set words [expr {$verb eq "reload" ? {-force} : [list [file nativename [whole_path $path]]]}]
    if {[catch { sorvel scene $verb {*}$words } result options]} {
        set_failure [whole_path $path] [dict get $options -errorcode] $result
        return {}
    }
    set failure {}
    read_scene
    # The library's clock goes on from where it stood.
    if {$verb eq "open"} { time_seek 0 }
    if {$verb ne "reload" && $scene_list ne {}} { time_rate $anim_rate }
    return $result
}

# Takes over what is in the scene now.
proc viewer::read_scene {} {
    variable scene
    variable scene_list
    set scene [sorvel scene tree]
    set scene_list {}
    foreach entry [sorvel scene files] {
        if {[dict get $entry kind] eq "scene list"} { set scene_list [dict get $entry path] }
    }
    measure_scene
    time_read
}

proc viewer::measure_scene {} {
    variable scene_size
    set box [sorvel scene bounds]
    set scene_size 0.0
    foreach a [dict get $box low] b [dict get $box high] { set scene_size [expr {max($scene_size, $b - $a)}] }
}

proc viewer::set_failure {path code text} {
    variable failure
    lassign $code pelt kind file line source
    if {$pelt eq "PELT"} {
        set text [dict get [sorvel scene problem] text]
    } else {
        lassign {} file line source
    }
    if {$file eq {}} { set file $path }
    if {$path eq {}} { set path $file }
    set why [expr {$pelt eq "PELT" && $kind eq "FILE" && $file ne {} ? [why_unreadable $file] : {}}]
    if {$why ne {}} { set text $why }
    set failure [dict create title "[file tail $path] could not be loaded" text $text file $file \
        line [expr {[string is integer -strict $line] ? $line : 0}] source $source path $path]
}

# One line for standard error, in the form in which compilers tell theirs.
proc viewer::failure_line {} {
    variable failure
    set place [file nativename [dict get $failure file]]
    if {[dict get $failure line] > 0} { append place : [dict get $failure line] }
    return "$place: [regsub -all {\s+} [dict get $failure text] { }]"
}

# ---- asking --------------------------------------------------------------------------------------------------------

# The model of the scene with that id; nothing for a child.
proc viewer::model_of_id {id} {
    variable scene
    foreach model $scene {
        if {[dict get $model id] eq $id} { return $model }
    }
    return {}
}

# A model or a child by its id, wherever in the tree it stands.
proc viewer::part_of_id {id {parts {}}} {
    variable scene
    if {$parts eq {}} { set parts $scene }
    foreach part $parts {
        if {[dict get $part id] eq $id} { return $part }
        if {[dict exists $part children] && [dict get $part children] ne {}} {
            set found [part_of_id $id [dict get $part children]]
            if {$found ne {}} { return $found }
        }
    }
    return {}
}

proc viewer::layers_of {id} {
    set part [part_of_id $id]
    if {![dict exists $part layers]} { return {} }
    return [lmap layer [dict get $part layers] { dict get $layer name }]
}

# How many edits a load would lose.
proc viewer::unsaved_changes {} {
    set changes 0
    foreach model [sorvel scene tree] { incr changes [dict get $model changes] }
    return $changes
}

# ---- the time ------------------------------------------------------------------------------------------------------

proc viewer::time_read {} {
    set clock [sorvel scene clock]
    foreach {name key} {anim_time time anim_end end anim_step step} { set ::viewer::$name [dict get $clock $key] }
}

# One step forward (1) or back (-1).
proc viewer::time_step {direction} {
    sorvel animate [expr {$direction > 0 ? "next" : "prev"}]
    time_read
}

# Steps for each second. The library puts its clock on a multiple of the step.
proc viewer::time_rate {rate} {
    variable anim_rate
    if {![string is integer -strict $rate] || $rate < 1 || $rate > 60} return
    sorvel animate step $rate
    set anim_rate $rate
    time_read
}

proc viewer::time_seek {time} {
    variable anim_end
    time_read
    sorvel scene clock [expr {max(0.0, min($time, $anim_end))}]
    time_read
}
