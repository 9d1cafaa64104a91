# What is in the scene and how it is loaded. The library knows all of it; the tree is kept here as it said it after the
# last change, because the panels go through it often.
#
# Owns: models, list_file, size, failure, listeners
# Offers: bring, look_again, changed, listen, models, list_file, size, failure, failure_line, model, part, layers,
#     measure, unsaved_changes
# Calls: files, timeline

namespace eval viewer::scene {
    namespace export bring look_again changed listen models list_file size failure failure_line model part layers \
        measure unsaved_changes
    namespace ensemble create
    variable models {}       ;# as "scene tree" tells them
    variable list_file {}    ;# the scene list that is open, or nothing
    variable size 0.0        ;# largest extent of all that is shown
    variable failure {}      ;# the latest failed load: title, text, file, line, source, path (what was asked for)
    variable listeners {}    ;# commands to call when what is in the scene was changed
}

# ---- loading -------------------------------------------------------------------------------------------------------

# Opens, adds ("open", "add") or reloads ("reload"). The dictionary that the library gives, or nothing with "failure"
# set and the scene as it was.
proc viewer::scene::bring {verb {path {}}} {
    variable failure
    variable list_file
    set words [expr {$verb eq "reload" ? {-force} : [list [file nativename [viewer::files whole_path $path]]]}]
    if {[catch { sorvel scene $verb {*}$words } result options]} {
        set_failure [viewer::files whole_path $path] [dict get $options -errorcode] $result
        return {}
    }
    set failure {}
    look_again
    # The library's clock goes on from where it stood.
    if {$verb eq "open"} { viewer::timeline seek 0 }
    if {$verb ne "reload" && $list_file ne {}} { viewer::timeline set_rate [viewer::timeline rate] }
    return $result
}

# Takes over what is in the scene now.
proc viewer::scene::look_again {} {
    variable models
    variable list_file
    set models [sorvel scene tree]
    set list_file {}
    foreach entry [sorvel scene files] {
        if {[dict get $entry kind] eq "scene list"} { set list_file [dict get $entry path] }
    }
    measure
    viewer::timeline read_clock
}

proc viewer::scene::measure {} {
    variable size
    set box [sorvel scene bounds]
    set size 0.0
    foreach a [dict get $box low] b [dict get $box high] { set size [expr {max($size, $b - $a)}] }
}

proc viewer::scene::set_failure {path code text} {
    variable failure
    lassign $code pelt kind file line source
    if {$pelt eq "PELT"} {
        set text [dict get [sorvel scene problem] text]
    } else {
        lassign {} file line source
    }
    if {$file eq {}} { set file $path }
    if {$path eq {}} { set path $file }
    set why [expr {$pelt eq "PELT" && $kind eq "FILE" && $file ne {} ? [viewer::files why_unreadable $file] : {}}]
    if {$why ne {}} { set text $why }
    set failure [dict create title "[file tail $path] could not be loaded" text $text file $file \
        line [expr {[string is integer -strict $line] ? $line : 0}] source $source path $path]
}

# One line for standard error, in the form in which compilers tell theirs.
proc viewer::scene::failure_line {} {
    variable failure
    set place [file nativename [dict get $failure file]]
    if {[dict get $failure line] > 0} { append place : [dict get $failure line] }
    return "$place: [regsub -all {\s+} [dict get $failure text] { }]"
}

# ---- telling -------------------------------------------------------------------------------------------------------

# To be called after every change of what is in the scene, by whoever made it. Those who show it are told, with 1 when
# it is a new one, which begins with its first model selected.
proc viewer::scene::changed {{is_new 0}} {
    variable listeners
    foreach command $listeners { {*}$command $is_new }
}

# From now on this command is called, with 1 for a new scene, when what is in it was changed.
proc viewer::scene::listen {command} {
    variable listeners
    lappend listeners $command
}

# ---- asking --------------------------------------------------------------------------------------------------------

proc viewer::scene::models {} {
    variable models
    return $models
}

proc viewer::scene::list_file {} {
    variable list_file
    return $list_file
}

proc viewer::scene::size {} {
    variable size
    return $size
}

proc viewer::scene::failure {} {
    variable failure
    return $failure
}

# The model of the scene with that id; nothing for a child.
proc viewer::scene::model {id} {
    variable models
    foreach model $models {
        if {[dict get $model id] eq $id} { return $model }
    }
    return {}
}

# A model or a child by its id, wherever in the tree it stands.
proc viewer::scene::part {id {parts {}}} {
    variable models
    if {$parts eq {}} { set parts $models }
    foreach part $parts {
        if {[dict get $part id] eq $id} { return $part }
        if {[dict exists $part children] && [dict get $part children] ne {}} {
            set found [part $id [dict get $part children]]
            if {$found ne {}} { return $found }
        }
    }
    return {}
}

proc viewer::scene::layers {id} {
    set part [part $id]
    if {![dict exists $part layers]} { return {} }
    return [lmap layer [dict get $part layers] { dict get $layer name }]
}

# How many edits a load would lose.
proc viewer::scene::unsaved_changes {} {
    set changes 0
    foreach model [sorvel scene tree] { incr changes [dict get $model changes] }
    return $changes
}
