# Reloading when a file of the scene changes on disk. It goes on after a load that failed, and waits until a file has
# stood still for one look, because programs write files in pieces.

namespace eval viewer {
    variable watched {}          ;# the mark of each file when it was loaded
    variable watch_seen {}       ;# the marks at the last look
    variable WATCH_INTERVAL 400  ;# milliseconds
    variable YOUNG 3             ;# seconds: two changes in one second leave the same time
}

# What a file looks like from outside; of one changed just now its content too, because times are whole seconds.
proc viewer::mark_of_file {path} {
    variable YOUNG
    if {[catch { list [file mtime $path] [file size $path] } mark]} { return gone }
    if {[clock seconds] - [lindex $mark 0] <= $YOUNG && [lindex $mark 1] < 50000000 && [file isfile $path]} {
        catch {
            set channel [open [file normalize $path] rb]
            lappend mark [zlib crc32 [read $channel]]
            close $channel
        }
    }
    return $mark
}

# Takes the files of the scene as they are now as what is loaded. Files that failed are watched as well.
proc viewer::watch_scene {} {
    variable watches
    variable watched
    variable watch_seen
    variable wanted
    variable failure
    set marks {}
    if {$watches} {
        set files [files_of_scene]
        foreach entry $wanted { lappend files [dict get $entry path] }
        if {[dict exists $failure file]} { lappend files [dict get $failure file] }
        foreach file $files { dict set marks $file [mark_of_file $file] }
    }
    set watched $marks
    set watch_seen $marks
}

proc viewer::watch_tick {} {
    variable watches
    variable WATCH_INTERVAL
    if {![view_lives]} return
    if {$watches} look_at_files
    after $WATCH_INTERVAL viewer::watch_tick
}

proc viewer::look_at_files {} {
    variable watched
    variable watch_seen
    set now {}
    set changed 0
    foreach file [dict keys $watched] {
        set mark [mark_of_file $file]
        dict set now $file $mark
        if {![same_mark $mark [dict get $watched $file]]} { set changed 1 }
    }
    set still [expr {$now eq $watch_seen}]
    set watch_seen $now
    if {$changed && $still} reload_scene
}

# A file that grew old since the last look has lost the third part of its mark.
proc viewer::same_mark {a b} {
    if {[llength $a] != [llength $b]} { return [expr {[lrange $a 0 1] eq [lrange $b 0 1]}] }
    return [expr {$a eq $b}]
}
