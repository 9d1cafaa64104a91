# Reloading when a file of the scene changes on disk. It goes on after a load that failed, and waits until a file has
# stood still for one look, because programs write files in pieces.

namespace eval viewer {
    variable watched {}          ;# the mark of each file when it was loaded
    variable watch_seen {}       ;# the marks at the last look
    variable WATCH_INTERVAL 400  ;# milliseconds
    variable MOST_MARKED 50000000    ;# bytes of a file that are looked at
    variable YOUNG 3             ;# seconds: two changes in one second leave the same time
}

# What a file looks like from outside; of one changed just now its content too, because times are whole seconds.
proc viewer::mark_of_file {path} {
    variable YOUNG
    variable MOST_MARKED
    if {[catch { list [file mtime $path] [file size $path] } mark]} { return gone }
    if {[clock seconds] - [lindex $mark 0] <= $YOUNG} { catch { lappend mark [zlib crc32 [read_bytes $path $MOST_MARKED]] } }
    return $mark
}

# Takes the files of the scene as they are now as what is loaded. Files that failed are watched as well.
proc viewer::watch_scene {} {
    variable watches
    variable watched
    variable watch_seen
    set marks {}
    if {$watches} {
        set files [failed_files]
        foreach entry [sorvel scene files] { lappend files [dict get $entry path] }
        foreach file $files { dict set marks $file [mark_of_file $file] }
    }
    set watched $marks
    set watch_seen $marks
}

proc viewer::failed_files {} {
    variable failure
    if {$failure eq {}} { return {} }
    return [list [dict get $failure file] [dict get $failure path]]
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
    set changed {}
    foreach file [dict keys $watched] {
        set mark [mark_of_file $file]
        dict set now $file $mark
        if {![same_mark $mark [dict get $watched $file]]} { lappend changed $file }
    }
    set still [expr {$now eq $watch_seen}]
    set watch_seen $now
    if {[llength $changed] == 0 || !$still} return
    # A load that somebody does not want is asked about once.
    set watched $now
    foreach file [failed_files] {
        if {$file in $changed} {
            retry
            return
        }
    }
    reload_scene
}

# A file that grew old since the last look has lost the third part of its mark.
proc viewer::same_mark {a b} {
    if {[llength $a] != [llength $b]} { return [expr {[lrange $a 0 1] eq [lrange $b 0 1]}] }
    return [expr {$a eq $b}]
}
