# What a call of the command costs, against one that serves the events and does nothing; and what a scene of 1,000
# models costs against one of few. Ratios within one run.
#   wish8.6 bench/commands.tcl libpelt.so libfloor.so
lassign $argv library floor
load $library Sorvel
load $floor Floor
proc tk_messageBox {args} { return ok }

frame .view -width 400 -height 300
pack .view
update
sorvel create window view .view

proc median {values} { lindex [lsort -real $values] [expr {[llength $values] / 2}] }
proc lowest {values} { lindex [lsort -real $values] 0 }

# Microseconds for each call of a script: the best round, which other load on the machine disturbs least.
proc cost {script count} {
    set rounds {}
    for {set i 0} {$i < 30} {incr i} { lappend rounds [lindex [time $script $count] 0] }
    return [lowest $rounds]
}

proc compare {name against script floor_script count goal} {
    # In turns, so that a busy moment strikes both.
    set ours {}
    set floors {}
    for {set i 0} {$i < 30} {incr i} {
        lappend ours [lindex [time $script $count] 0]
        lappend floors [lindex [time $floor_script $count] 0]
    }
    report $name $against [lowest $ours] [lowest $floors] $goal
}

proc report {work against ours floor goal} {
    puts [join [list row $work $against [format %.4g $ours] [format %.4g $floor] us $goal] \t]
}

compare "sorvel get zoom" "empty command that drains" {sorvel get zoom} {floor get zoom} 4000 1.3
compare "sorvel set pan 1 2" "empty command that drains" {sorvel set pan 1 2} {floor set pan 1 2} 4000 1.3

# One point of a model of 32,000, changed with and without a history that keeps what was.
set folder [exec mktemp -d]
set channel [open [file join $folder large.mod] w]
puts $channel points
for {set i 1} {$i <= 32000} {incr i} { puts $channel "$i [expr {$i % 200}] [expr {$i / 200}] 0" }
close $channel
sorvel file open [file join $folder large.mod]
sorvel select all
set edits {sorvel set vertex point 16000 1 2 3; sorvel set vertex point 16000 3 2 1}
set kept {}
set not_kept {}
for {set i 0} {$i < 30} {incr i} {
    sorvel scene history -limit 268435456
    lappend kept [lindex [time $edits 500] 0]
    sorvel scene history -limit 0
    lappend not_kept [lindex [time $edits 500] 0]
}
sorvel scene history -limit 268435456
report "edit one point of a model of 32,000, twice" "the same without history" [lowest $kept] [lowest $not_kept] 1.5
sorvel reset
file delete -force $folder

# A thousand small models, each of a name of its own.
set folder [exec mktemp -d]
set text "points\n"
for {set i 1} {$i <= 1000} {incr i} { append text "$i [expr {$i % 40}] [expr {$i / 40}] 0\n" }
append text "layer face 127 0 0 doublesided\ntriangles\n"
for {set i 1} {$i <= 500} {incr i} { append text "0 $i [expr {$i + 1}] [expr {$i + 41}]\n" }
for {set i 1} {$i <= 1000} {incr i} {
    set channel [open [file join $folder m$i.mod] w]
    puts -nonewline $channel $text
    close $channel
}

# Questions of the verb "scene", about a model that is there from the beginning: what else stands in the scene is not to
# cost anything.
set questions {layer {ID face} point {ID 500} points {ID -layer face} placement ID joints ID images ID clock {} view {}
    triangles {} problem {}}
proc ask_script {word arguments id} { return "sorvel scene $word [string map [list ID $id] $arguments]" }
# A reload takes long, so that few rounds do.
proc reload_cost {} {
    set rounds {}
    for {set i 0} {$i < 3} {incr i} { lappend rounds [lindex [time {sorvel scene reload}] 0] }
    return [lowest $rounds]
}
sorvel file open [file join $folder m1.mod]
set first_id [string trim [sorvel find model m1]]
foreach {word arguments} $questions { set alone($word) [cost [ask_script $word $arguments $first_id] 20] }
sorvel reset

for {set i 1} {$i <= 1000} {incr i} {
    lappend add([expr {($i - 1) / 50}]) [lindex [time {sorvel file add [file join $folder m$i.mod]}] 0].0
    if {$i == 100} {
        set select_few [cost {sorvel select all} 100]
        set find_few [cost {sorvel find model m100} 100]
        set tree_few [cost {sorvel scene tree} 2]
        set files_few [cost {sorvel scene files} 2]
        set reload_few [reload_cost]
    }
}
report "add the 1,000th model (median of fifty)" "the 10th" [median $add(19)] [median $add(0)] 1.5
report "select all in a scene of 1,000 models" "ten times the same in one of 100" \
    [cost {sorvel select all} 100] [expr {10 * $select_few}] 1.5
report "find model in a scene of 1,000 models" "ten times the same in one of 100" \
    [cost {sorvel find model m1000} 100] [expr {10 * $find_few}] 1.5
set last_id [string trim [sorvel find model m1000]]
foreach {word arguments} $questions {
    report "scene $word in a scene of 1,000 models" "in one of 1" [cost [ask_script $word $arguments $last_id] 20] \
        $alone($word) 1.5
}
report "scene tree of 1,000 models" "ten times that of 100" [cost {sorvel scene tree} 2] [expr {10 * $tree_few}] 1.5
report "scene files of 1,000 models" "ten times that of 100" [cost {sorvel scene files} 2] [expr {10 * $files_few}] 1.5
report "scene reload of 1,000 models" "ten times that of 100" [reload_cost] [expr {10 * $reload_few}] 1.5
report "scene points of 1,000 points" "get vertex list of the same" [cost [list sorvel scene points $last_id] 20] \
    [cost "sorvel select clear; sorvel select model $last_id; sorvel get vertex list" 20] 1.5
sorvel select clear
sorvel select model [string trim [sorvel find model m1]]
set first [cost {sorvel get vertex list} 200]
sorvel select clear
sorvel select model [string trim [sorvel find model m1000]]
report "get vertex list of the last of 1,000 models" "of the first" [cost {sorvel get vertex list} 200] $first 1.5
file delete -force $folder
exit 0
