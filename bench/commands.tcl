# What a call of the command costs, against one that serves the events and does nothing; and what a scene of 1,000
# models costs against one of few. Ratios of medians in one run.
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

# Microseconds for each call of a script, as a median over rounds.
proc cost {script count} {
    set rounds {}
    for {set i 0} {$i < 15} {incr i} { lappend rounds [lindex [time $script $count] 0] }
    return [median $rounds]
}

proc compare {name script floor_script count goal} {
    # In turns, so that a busy moment strikes both.
    set ours {}
    set floors {}
    for {set i 0} {$i < 15} {incr i} {
        lappend ours [lindex [time $script $count] 0]
        lappend floors [lindex [time $floor_script $count] 0]
    }
    report $name [median $ours] [median $floors] $goal
}

proc report {name ours floor goal} {
    puts [format "%-58s %9.3f us / %9.3f us = %5.2f (goal at most %.1f)" $name $ours $floor [expr {$ours / $floor}] $goal]
}

compare "sorvel get zoom / empty command that drains" {sorvel get zoom} {floor get zoom} 20000 1.5
compare "sorvel set pan 1 2 / empty command that drains" {sorvel set pan 1 2} {floor set pan 1 2} 20000 1.5

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
# What a form costs beyond the serving of events, for each model of the scene.
proc cost_a_model {script models} {
    expr {([cost $script 100] - $::nothing) / $models}
}

set nothing [cost {floor select all} 20000]
for {set i 1} {$i <= 1000} {incr i} {
    lappend add([expr {($i - 1) / 50}]) [lindex [time {sorvel file add [file join $folder m$i.mod]}] 0].0
    if {$i == 100} {
        set select_few [cost_a_model {sorvel select all} 100]
        set find_few [cost_a_model {sorvel find model m100} 100]
    }
}
report "adding the 1,000th model / the 10th (medians of fifty)" [median $add(19)] [median $add(0)] 1.5
report "select all, for each of 1,000 models / of 100" [cost_a_model {sorvel select all} 1000] $select_few 1.5
report "find model, for each of 1,000 models / of 100" [cost_a_model {sorvel find model m1000} 1000] $find_few 1.5
sorvel select clear
sorvel select model [string trim [sorvel find model m1]]
set first [cost {sorvel get vertex list} 200]
sorvel select clear
sorvel select model [string trim [sorvel find model m1000]]
report "get vertex list of the last of 1,000 models / of the first" [cost {sorvel get vertex list} 200] $first 1.5
file delete -force $folder
exit 0
