# Reloading when a file of the scene changes on disk. It goes on after a load that failed, and waits until a file has
# stood still for one look, because programs write files in pieces.
#
# Owns: watched, last_look, listener
# Offers: start, take_marks, listen
# Calls: files, notices, scene, settings, status, view

namespace eval viewer::watch {
    namespace export start take_marks listen
    namespace ensemble create
    variable watched {}          ;# the mark of each file when it was loaded
    variable last_look {}        ;# the marks at the last look
    variable listener {}         ;# the command to call when files of the scene changed
    variable INTERVAL 400        ;# milliseconds
    variable MOST_MARKED 50000000    ;# bytes of a file that are looked at
    variable YOUNG 3             ;# seconds: two changes in one second leave the same time
    viewer::scene listen viewer::watch::scene_changed
    viewer::settings listen watch viewer::watch::switched
}

# From now on this command is called when files of the scene changed.
proc viewer::watch::listen {command} {
    variable listener
    set listener $command
}

proc viewer::watch::start {} {
    variable INTERVAL
    if {![viewer::view lives]} return
    if {[viewer::settings get watch]} look_at_files
    after $INTERVAL viewer::watch::start
}

proc viewer::watch::scene_changed {is_new} {
    take_marks
}

proc viewer::watch::switched {} {
    take_marks
    viewer::status say [expr {[viewer::settings get watch] ? "The scene follows its files"
        : "The scene no longer follows its files"}]
}

# Takes the files of the scene as they are now as what is loaded. Files that failed are watched as well.
proc viewer::watch::take_marks {} {
    variable watched
    variable last_look
    set marks {}
    if {[viewer::settings get watch]} {
        set files [failed_files]
        foreach entry [sorvel scene files] { lappend files [dict get $entry path] }
        foreach file $files { dict set marks $file [mark_of_file $file] }
    }
    set watched $marks
    set last_look $marks
}

# What a file looks like from outside; of one changed just now its content too, because times are whole seconds.
proc viewer::watch::mark_of_file {path} {
    variable YOUNG
    variable MOST_MARKED
    if {[catch { list [file mtime $path] [file size $path] } mark]} { return gone }
    if {[clock seconds] - [lindex $mark 0] <= $YOUNG} {
        catch { lappend mark [zlib crc32 [viewer::files read_bytes $path $MOST_MARKED]] }
    }
    return $mark
}

proc viewer::watch::failed_files {} {
    set failure [viewer::scene failure]
    if {$failure eq {}} { return {} }
    return [list [dict get $failure file] [dict get $failure path]]
}

proc viewer::watch::look_at_files {} {
    variable watched
    variable last_look
    variable listener
    set now {}
    set changed {}
    foreach file [dict keys $watched] {
        set mark [mark_of_file $file]
        dict set now $file $mark
        if {![same_mark $mark [dict get $watched $file]]} { lappend changed $file }
    }
    set still [expr {$now eq $last_look}]
    set last_look $now
    if {[llength $changed] == 0 || !$still} return
    # A load that somebody does not want is asked about once.
    set watched $now
    foreach file [failed_files] {
        if {$file in $changed} {
            viewer::notices retry
            return
        }
    }
    {*}$listener
}

# A file that grew old since the last look has lost the third part of its mark.
proc viewer::watch::same_mark {a b} {
    if {[llength $a] != [llength $b]} { return [expr {[lrange $a 0 1] eq [lrange $b 0 1]}] }
    return [expr {$a eq $b}]
}
