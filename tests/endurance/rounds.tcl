# Many rounds of what a long day brings: open, animate, draw, resize, edit, save a picture, reload, close. At the end
# the process must be no larger than after the first rounds, and a frame no slower. An X error would end the process.
#
#   rounds.tcl -- ROUNDS LIBRARY MODELS
#
# What surprises: times are judged by the fastest quarter of the frames of each part, because other programs on the
# machine make frames slower, and never faster.

lassign [lrange $argv end-2 end] rounds library models
set models [file normalize $models]
set first_part [expr {$rounds >= 2000 ? 1000 : $rounds / 4}]
# A short run is not past the growth of the first rounds, and its few frames say nothing about time.
set memory_limit [expr {$rounds >= 2000 ? 1.02 : 1.10}]
set time_limit [expr {$rounds >= 2000 ? 1.10 : Inf}]

load $library Sorvel
proc tk_messageBox args {
    lappend ::boxes [dict get $args -message]
    return ok
}
proc bgerror message {
    puts "background error: $message"
    exit 1
}
set boxes {}
set statuses 0
proc note_status args {incr ::statuses}

frame .view -width 320 -height 240
pack .view -fill both -expand 1
wm geometry . 320x240
update
sorvel create window endurance .view
sorvel callback status note_status
update

set work [exec mktemp -d]
set clean_up [list file delete -force $work]
# A model that a round edits must not be one of the samples.
file copy {*}[glob -directory $models *] $work

set files {}
foreach name {duck mill lantern tree knot fence figure stars} {
    if {[file exists $work/$name.mod]} {lappend files $work/$name.mod}
}
set scene $work/walk.scene
# Its rows name directories from where the process stands.
cd $work

proc resident {} {
    set channel [open /proc/self/status]
    regexp {VmRSS:\s+(\d+)} [read $channel] -> kilobytes
    close $channel
    return $kilobytes
}

# Memory is judged by the least of the latest rounds, which leave more or less of it idle.
set recent_memory {}
proc note_memory {} {
    set ::recent_memory [lrange [concat $::recent_memory [resident]] end-19 end]
}
proc least_memory {} {
    return [lindex [lsort -integer $::recent_memory] 0]
}

# Draws and notes how long it took. The measured frame is always the same: one model, one size, one view.
proc measured_frame {} {
    set start [clock microseconds]
    sorvel draw
    lappend ::frame_times [expr {[clock microseconds] - $start}]
}

proc edit {} {
    sorvel select all
    sorvel add layer spare
    sorvel add vertex point 9001 1 2 3
    sorvel set vertex normal 9001 0 1 - 0
    sorvel select layer spare
    sorvel set layer sides 2
    sorvel set layer color 10 20 30
    sorvel set layer transparency 0.5
    sorvel select translate 1 2 3
    sorvel select rotate x10 0 z5
    sorvel draw
    sorvel get layer names
    sorvel delete layer spare
    sorvel select copy
    sorvel select clear
}

proc one_round {number} {
    global files scene work
    set file [lindex $files [expr {$number % [llength $files]}]]
    sorvel file open $file
    sorvel set view rotate [expr {$number % 360}] 20
    sorvel draw
    edit
    sorvel file add [lindex $files [expr {($number + 3) % [llength $files]}]]
    sorvel reload

    sorvel animate open $scene
    for {set step 0} {$step < 5} {incr step} {sorvel animate next}
    sorvel animate prev

    wm geometry . [expr {300 + $number % 7 * 10}]x[expr {220 + $number % 5 * 10}]
    update
    foreach option {wireframe points normals skeleton} {
        sorvel display $option on
        sorvel draw
        sorvel display $option off
    }
    if {$number % 10 == 0} {sorvel file savescreen $work/picture.tga}

    wm geometry . 320x240
    update
    sorvel file open [lindex $files 0]
    sorvel set view zoom 1
    sorvel draw
    measured_frame
    measured_frame
    sorvel reset
    sorvel draw
}

proc fast_quarter {times} {
    return [lindex [lsort -integer $times] [expr {[llength $times] / 4}]]
}

# No longer than what is judged, so that the lists of this script are no part of the growth.
set sample_limit [expr {2 * $first_part}]

set frame_times {}
set report [expr {max(1, $rounds / 10)}]
set begin [clock seconds]
for {set round 1} {$round <= $rounds} {incr round} {
    one_round $round
    note_memory
    if {[llength $frame_times] > $sample_limit} {set frame_times [lrange $frame_times 2 end]}
    if {$round == $first_part} {
        set first_memory [least_memory]
        set first_times $frame_times
    }
    if {$round % $report == 0} {
        puts [format "%6d rounds %7d kB %8.2f ms a frame %5d s" $round [least_memory] \
            [expr {[fast_quarter [lrange $frame_times end-199 end]] / 1000.0}] [expr {[clock seconds] - $begin}]]
        flush stdout
    }
}
set last_memory [least_memory]
set last_times [lrange $frame_times end-[expr {[llength $first_times] - 1}] end]

set memory_ratio [expr {double($last_memory) / $first_memory}]
set time_ratio [expr {double([fast_quarter $last_times]) / [fast_quarter $first_times]}]
puts [format "memory at the end by memory after %d rounds: %.4f (at most %.2f)" $first_part $memory_ratio $memory_limit]
puts [format "frame time at the end by frame time at first: %.4f (at most %.2f)" $time_ratio $time_limit]
puts "boxes: [llength $boxes], status texts: $statuses"
if {[llength $boxes] > 0} {puts "their texts: [lsort -unique $boxes]"}
if {$statuses == 0} {puts "no status text came"}
set failed [expr {$memory_ratio > $memory_limit || $time_ratio > $time_limit || [llength $boxes] > 0 || $statuses == 0}]
cd /
{*}$clean_up
exit $failed
