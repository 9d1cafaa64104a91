# What all script tests share: the library, recorded message boxes, files made by the tests, pictures, the pointer.
#
# A test file sources this first and calls "finish" last. Each file runs in a wish of its own, so that each may create
# the one window of a process; those whose names begin with "plain_" run in a Tcl without Tk and without a display.

if {![info exists ::env(PELT_PLAIN)]} { package require Tk }
package require tcltest 2.3
namespace import ::tcltest::test
::tcltest::configure -verbose [expr {[info exists ::env(PELT_TEST_VERBOSE)] ? {start pass body error} : {body error}}]

::tcltest::testConstraint plain_library [expr {![info exists ::env(PELT_PRELOAD)]}]
::tcltest::testConstraint utf8_system [expr {[encoding system] eq "utf-8"}]

set library $::env(PELT_LIBRARY)

# As exec. Under wine a program now and then cannot be started, which leaves nothing behind: it is tried again.
proc exec_program {args} {
    for {set try 0} {$try < 5} {incr try} {
        if {[catch { exec {*}$args } result options] == 0} { return $result }
        if {[lrange [dict get $options -errorcode] 0 1] ne {POSIX EINVAL}} break
    }
    return -options $options $result
}

# A folder for the files of the tests; a child process shares that of its parent, which removes it.
set owns_work [expr {![info exists ::env(PELT_TEST_WORK)]}]
if {$owns_work} {set ::env(PELT_TEST_WORK) [exec_program mktemp -d]}
set work $::env(PELT_TEST_WORK)

# ---- message boxes ----------------------------------------------------------------------------------------------

set boxes {}        ;# the texts since the last "say" or "messages"
set box_options {}  ;# all options of the latest box
set on_box {}       ;# a script to run while a box is open

proc tk_messageBox {args} {
    lappend ::boxes [dict get $args -message]
    set ::box_options $args
    if {$::on_box ne {}} {
        set script $::on_box
        set ::on_box {}
        uplevel #0 $script
    }
    return ok
}

# Texts of the boxes since the last call.
proc messages {} {
    set texts $::boxes
    set ::boxes {}
    return $texts
}

# A call of the command: a list of its result and the texts of the boxes it showed.
proc say {args} {
    set ::boxes {}
    set result [sorvel {*}$args]
    return [list $result {*}[messages]]
}

set background_errors {}
proc bgerror {message} {
    lappend ::background_errors $message
    puts "background error: $message\n$::errorInfo"
}

proc load_library {} {
    load $::library Sorvel
}

# ---- status texts -----------------------------------------------------------------------------------------------

set statuses {}
proc record_status {args} {lappend ::statuses $args}

# The status texts that a script causes, each a list of words.
proc statuses_of {script} {
    set ::statuses {}
    sorvel callback status record_status
    uplevel 1 $script
    return $::statuses
}

# ---- files ------------------------------------------------------------------------------------------------------

# As the system writes it: where a backslash separates, a path with slashes has no directory for the library.
proc work_path {name} {
    return [file nativename [file join $::work $name]]
}

# A path as message boxes and status texts show it: as backslash substitution leaves it.
proc shown {path} {
    return [subst -nocommands -novariables $path]
}

proc write_file {name content} {
    set path [work_path $name]
    file mkdir [file dirname $path]
    set channel [open $path w]
    fconfigure $channel -translation lf -encoding utf-8
    puts -nonewline $channel $content
    close $channel
    return $path
}

# An uncompressed image. The pixels are a list of rows, the upper one first, of {red green blue}.
proc write_tga {name rows} {
    set height [llength $rows]
    set width [llength [lindex $rows 0]]
    set data [binary format ccccccccccccsscc 0 0 2 0 0 0 0 0 0 0 0 0 $width $height 24 0]
    foreach row [lreverse $rows] {
        foreach pixel $row {
            lassign $pixel red green blue
            append data [binary format ccc $blue $green $red]
        }
    }
    set path [work_path $name]
    file mkdir [file dirname $path]
    set channel [open $path wb]
    puts -nonewline $channel $data
    close $channel
    return $path
}

# A square of 2 * half a side in the plane z, its middle at x, y; ids begin at the given one. Points and normals.
proc square_points {first half {x 0} {y 0} {z 0}} {
    set points "points\n"
    set normals "normals\n"
    set id $first
    foreach {sx sy} {-1 -1 1 -1 -1 1 1 1} {
        append points "$id [expr {$x + $sx * $half}] [expr {$y + $sy * $half}] $z\n"
        append normals "$id 0 0 1\n"
        incr id
    }
    return $points$normals
}

# The quad that belongs to those points, in strip order.
proc square_quad {first} {
    return "triangles\n1 $first [expr {$first + 1}] [expr {$first + 2}] [expr {$first + 3}]\n"
}

# A model that is one square of the given colour.
proc write_square {name {colour {127 0 0}} {half 5}} {
    return [write_file $name "[square_points 1 $half]layer face $colour doublesided\n[square_quad 1]"]
}

# Opens a model and selects it; gives the id.
proc open_selected {path} {
    set id [sorvel file open $path]
    sorvel select clear
    sorvel select model $id
    return $id
}

# ---- the window and its pictures --------------------------------------------------------------------------------

# A window of that size, on the screen with its first frame.
proc make_window {{width 400} {height 300}} {
    wm geometry . {}
    wm geometry . +0+0
    frame .view -width $width -height $height
    pack .view
    update
    sorvel create window view .view
    update
}

proc read_picture {path} {
    set channel [open $path rb]
    set data [read $channel]
    close $channel
    binary scan $data cu1x1cu1x9su1su1cu1cu1 id type width height bits descriptor
    return [dict create id $id type $type width $width height $height bits $bits descriptor $descriptor \
        size [string length $data] pixels [string range $data [expr {18 + $id}] end]]
}

# Draws, saves and reads the picture.
proc take_picture {} {
    sorvel draw
    set path [work_path picture.tga]
    sorvel file savescreen $path
    return [read_picture $path]
}

# {red green blue} at a place counted from the lower left.
proc pixel {picture x y} {
    set at [expr {($y * [dict get $picture width] + $x) * 3}]
    binary scan [string range [dict get $picture pixels] $at $at+2] cu3 values
    lassign $values blue green red
    return [list $red $green $blue]
}

# The pixel at a fraction of the picture: 0.5 0.5 is the middle, 0 0 the lower left.
proc pixel_at {picture fx fy} {
    set x [expr {int($fx * ([dict get $picture width] - 1))}]
    set y [expr {int($fy * ([dict get $picture height] - 1))}]
    return [pixel $picture $x $y]
}

# ---- the pointer ------------------------------------------------------------------------------------------------

# Serves events for so many milliseconds.
proc serve {milliseconds} {
    set ::served 0
    after $milliseconds {set ::served 1}
    vwait ::served
}

# Serves events until the expression holds, at most five seconds. Gives its value.
proc serve_until {condition} {
    set end [expr {[clock milliseconds] + 5000}]
    while {![uplevel 1 [list expr $condition]] && [clock milliseconds] < $end} {
        update
        after 5
    }
    return [uplevel 1 [list expr $condition]]
}

proc xdotool {args} {
    exec_program {*}[child_environment] xdotool {*}$args
}

# Moves the pointer to a place in the frame .view.
proc point_at {x y} {
    xdotool mousemove [expr {[winfo rootx .view] + $x}] [expr {[winfo rooty .view] + $y}]
    serve 30
}

# ---- other processes --------------------------------------------------------------------------------------------

# How to start a program without what a sanitized library makes this process preload.
proc child_environment {} {
    return [list env -u LD_PRELOAD]
}

proc preloaded_environment {} {
    if {[info exists ::env(PELT_PRELOAD)]} {return [list env LD_PRELOAD=$::env(PELT_PRELOAD)]}
    return [list env]
}

# Runs a script in another program: a list of its exit status ("signal" when one ended it) and what it printed.
proc run_child {program script args} {
    set path [write_file child.tcl $script]
    set command [list {*}[preloaded_environment] {*}$args timeout 60 $program $path]
    set status 0
    if {[catch {exec_program {*}$command 2>@1} output options]} {
        set code [dict get $options -errorcode]
        set status [expr {[lindex $code 0] eq "CHILDSTATUS" ? [lindex $code 2] : "signal"}]
        set output [string map [list "\nchild process exited abnormally" {}] $output]
        if {$output eq "child process exited abnormally"} {set output {}}
    }
    return [list $status $output]
}

# A wish that has this file's helpers and the library.
proc child_wish {script args} {
    set preamble "source [list [file join $::env(PELT_TEST_DIR) support.tcl]]\nload_library\n"
    return [run_child $::env(PELT_WISH) "$preamble$script" {*}$args]
}

# ---- the end ----------------------------------------------------------------------------------------------------

proc finish {} {
    foreach name {Passed Skipped Failed} {set $name $::tcltest::numTests($name)}
    if {[llength $::background_errors] > 0} {
        puts "there were background errors: $::background_errors"
        incr Failed
    }
    puts "finished: $Passed passed, $Skipped skipped, $Failed failed"
    if {$::owns_work} {file delete -force $::work}
    exit [expr {$Failed > 0 || $Passed == 0}]
}
