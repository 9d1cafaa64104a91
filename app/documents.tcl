# Files as a person opens, adds and reloads them: with a question before edits are lost, a notice when it fails, and a
# word of how it went.
#
# Owns: nothing
# Offers: open_files, open_file, reload, may_lose
# Calls: files, notices, playback, questions, scene, selection, settings, status, view, watch

namespace eval viewer::documents {
    namespace export open_files open_file reload may_lose
    namespace ensemble create
    viewer::watch listen viewer::documents::reload
}

# ---- opening -------------------------------------------------------------------------------------------------------

# The first file opens, the others are added.
proc viewer::documents::open_files {files} {
    set verb open
    foreach file $files {
        if {[open_file $verb $file]} { set verb add }
    }
    if {[llength $files] > 1 && $verb eq "add"} { viewer::view start }
}

# Opens ("open") or adds ("add") a model or a scene list, whichever the file is, and tells how it went. 1, or 0 with the
# scene as it was.
proc viewer::documents::open_file {verb path} {
    set path [viewer::files whole_path $path]
    if {$verb eq "open" && ![may_lose Open]} { return 0 }
    set loaded [viewer::scene bring $verb $path]
    if {$loaded eq {}} {
        tell_failure [list viewer::documents open_file $verb $path]
        return 0
    }
    viewer::notices hide
    viewer::settings remember_recent $path
    if {$verb eq "open"} {
        viewer::playback stop
        viewer::playback clear_range
        viewer::view start
    }
    say_loaded "[file tail $path] [expr {$verb eq "open" ? "opened" : "added"}]" $loaded
    viewer::scene changed [expr {$verb eq "open"}]
    return 1
}

# The files that failed are watched too.
proc viewer::documents::tell_failure {command} {
    viewer::notices tell_failure [viewer::scene failure] $command
    viewer::watch take_marks
}

# What a file names and could not be had is no failure, but worth a word.
proc viewer::documents::say_loaded {text loaded} {
    set problems [dict get $loaded problems]
    if {[llength $problems] > 0} {
        set first [lindex $problems 0]
        append text ", but for [llength $problems] lines: [dict get $first text] ([file tail [dict get $first file]]"
        if {[dict get $first line] > 0} { append text ", line [dict get $first line]" }
        append text )
    }
    viewer::status say $text
}

# Whether edits that a load would throw away may go. Asked only where there are any.
proc viewer::documents::may_lose {doing} {
    viewer::selection commit
    set changes [viewer::scene unsaved_changes]
    if {$changes == 0} { return 1 }
    set text "[expr {$changes == 1 ? "One change is" : "$changes changes are"}] not in the model's file"
    return [viewer::questions ask_yes "Unsaved changes" "$text and will be lost." "$doing anyway"]
}

# ---- reloading -----------------------------------------------------------------------------------------------------

# Reads every file of the scene again. What a person has made of it stays: view, places, selection, time.
proc viewer::documents::reload {} {
    if {[llength [viewer::scene models]] == 0 || ![may_lose Reload]} return
    set loaded [viewer::scene bring reload]
    if {$loaded eq {}} {
        tell_failure {viewer::documents reload}
        return
    }
    viewer::notices hide
    say_loaded "Loaded again" $loaded
    viewer::scene changed
}
