# What a picture costs from nothing, as a whole process: a model into a PNG of 800 x 600 pixels, in a tclsh without Tk
# and without a display. Against a viewer that people would use instead (f3d, on the display that is there), and
# against the shortest program that does the same. Medians of rounds in which all take turns; "cold" is without the
# shaders that Mesa keeps on the disk.
#   tclsh8.6 bench/pictures.tcl libpelt.so egl_floor png_floor          on a display
lassign $argv library egl_floor png_floor
set rounds 9
set many 100
set display $env(DISPLAY)
unset env(DISPLAY)

close [file tempfile work]
file delete $work
file mkdir $work

# A ball of 2 * columns * rings triangles, less those at its poles, as a model, as OBJ, and as plain floats.
proc write_ball {name columns rings} {
    set points {}
    for {set ring 0} {$ring <= $rings} {incr ring} {
        set upright [expr {acos(-1) * $ring / $rings}]
        for {set column 0} {$column <= $columns} {incr column} {
            set around [expr {2 * acos(-1) * $column / $columns}]
            lappend points [list [expr {sin($upright) * cos($around)}] [expr {cos($upright)}] [expr {sin($upright) * sin($around)}]]
        }
    }
    set faces {}
    for {set ring 0} {$ring < $rings} {incr ring} {
        for {set column 0} {$column < $columns} {incr column} {
            set a [expr {$ring * ($columns + 1) + $column}]
            set below [expr {$a + $columns + 1}]
            if {$ring > 0} { lappend faces [list $a [expr {$a + 1}] [expr {$below + 1}]] }
            if {$ring < $rings - 1} { lappend faces [list $a [expr {$below + 1}] $below] }
        }
    }
    set base [file join $::work $name]
    set model [open $base.mod w]
    set object [open $base.obj w]
    set plain [open $base.floats wb]
    set id 0
    puts $model points
    foreach point $points {
        puts $model "[incr id] $point"
        puts $object "v $point\nvn $point"
    }
    set id 0
    puts $model normals
    foreach point $points { puts $model "[incr id] $point" }
    puts $model "layer ball 90 110 127 doublesided\ntriangles"
    foreach face $faces {
        lassign [lmap corner $face { expr {$corner + 1} }] a b c
        puts $model "0 $a $b $c"
        puts $object "f $a//$a $c//$c $b//$b"
        foreach corner $face {
            set point [lindex $points $corner]
            puts -nonewline $plain [binary format f6 [concat $point $point]]
        }
    }
    foreach channel [list $model $object $plain] { close $channel }
    return [llength $faces]
}

proc write_script {name script} {
    set path [file join $::work $name]
    set channel [open $path w]
    puts $channel "load [list [file normalize $::library]] Sorvel"
    puts $channel $script
    close $channel
    return $path
}

# Milliseconds of one run of a program.
proc cost {args} {
    set start [clock microseconds]
    exec {*}$args </dev/null 2>/dev/null
    return [expr {([clock microseconds] - $start) / 1000.0}]
}

proc median {values} { lindex [lsort -real $values] [expr {[llength $values] / 2}] }

proc row {work against figure base goal} {
    puts [join [list row $work $against [format %.4g $figure] [format %.4g $base] ms $goal] \t]
    flush stdout
}

# The programs by turns; the medians of their times as a dictionary. f3d alone gets the display.
proc measure {programs} {
    set times {}
    for {set i 0} {$i <= $::rounds} {incr i} {
        dict for {name command} $programs {
            if {$name eq "f3d"} { set ::env(DISPLAY) $::display }
            set spent [cost {*}$command]
            unset -nocomplain ::env(DISPLAY)
            # The first round fills the caches.
            if {$i > 0} { dict lappend times $name $spent }
        }
    }
    return [dict map {name values} $times { median $values }]
}

write_ball large 181 181
write_ball small 32 17
foreach size {large small} {
    set $size [write_script $size.tcl "sorvel scene offscreen 800 600
        sorvel scene open [list [file join $work $size.mod]]
        sorvel scene picture [list [file join $work $size.png]]"]
}
set all [write_script many.tcl "sorvel scene offscreen 800 600
    for {set i 0} {\$i < $many} {incr i} {
        sorvel scene open [list [file join $work small.mod]]
        sorvel scene picture [list [file join $work small.png]] -later
    }
    sorvel scene written"]

set has_f3d [expr {[auto_execok f3d] ne {}}]
if {!$has_f3d} { puts stderr "bench/pictures.tcl: f3d is not installed, so that nothing is held against it" }
foreach {state large_goal small_goal} {warm 0.3 0.2 cold 0.5 0.35} {
    if {$state eq "cold"} { set env(MESA_SHADER_CACHE_DISABLE) true }
    foreach size {large small} words {"65,000 triangles" "1,000 triangles"} goal [list $large_goal $small_goal] {
        set programs [dict create ours [list tclsh8.6 [set $size]] \
            floor [list $egl_floor 800 600 [file join $work $size.floats] [file join $work floor.png]]]
        if {$has_f3d} {
            dict set programs f3d [list f3d --output=[file join $work f3d.png] --resolution=800,600 [file join $work $size.obj]]
        }
        set times [measure $programs]
        if {$has_f3d} { row "picture of $words, $state" "f3d --output" [dict get $times ours] [dict get $times f3d] $goal }
        row "picture of $words, $state" "a program of EGL alone" [dict get $times ours] [dict get $times floor] \
            [expr {$size eq "small" ? 1.25 : 0}]
        set single [dict get $times ours]
    }
    if {$state eq "warm"} {
        row "$many models of 1,000 triangles in one run" "$many times the single picture" [cost tclsh8.6 $all] \
            [expr {$many * $single}] 0.15
    }
}
unset env(MESA_SHADER_CACHE_DISABLE)

set models [file join [file dirname [file dirname [file normalize [info script]]]] models]
cost tclsh8.6 [write_script sample.tcl "sorvel scene offscreen 800 600
    sorvel scene open [list [file join $models mill.mod]]
    sorvel set view ortho 20 -70
    sorvel scene picture [list [file join $work sample.tga]] -size 1920x1080"]
catch { exec $png_floor [file join $work sample.tga] } rows options
puts $rows
file delete -force $work
