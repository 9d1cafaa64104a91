#!/usr/bin/env tclsh8.6
# Makes the sample models, textures, scene lists and clips into a folder (the one of this script when none is given):
#   tclsh8.6 models/make.tcl ?folder?
# Here stand the tools; what is made stands in the files beside this one.

set pi [expr {acos(-1.0)}]

# ---- textures ------------------------------------------------------------------------------------------------------

# Numbers from 0 to 1 that are the same at every run.
set seed 1
proc noise {} {
    global seed
    set seed [expr {($seed * 1103515245 + 12345) & 0x7fffffff}]
    expr {(($seed >> 8) & 0xffff) / 65535.0}
}

proc byte {value} {
    expr {$value < 0 ? 0 : $value > 255 ? 255 : int($value)}
}

# Writes a 24-bit TGA; the script is evaluated with x and y (from the lower left corner) and gives {red green blue}.
proc texture {file width height script} {
    upvar #0 folder folder
    set pixels {}
    for {set y 0} {$y < $height} {incr y} {
        for {set x 0} {$x < $width} {incr x} {
            lassign [apply [list {x y width height} $script] $x $y $width $height] red green blue
            append pixels [binary format ccc [byte $blue] [byte $green] [byte $red]]
        }
    }
    set channel [open [file join $folder $file] wb]
    puts -nonewline $channel [binary format cccc5sssscc 0 0 2 {0 0 0 0 0} 0 0 $width $height 24 0]$pixels
    close $channel
}

# ---- models --------------------------------------------------------------------------------------------------------

# A model under construction: its points (place, normal and colour make a point), and the text of its layers.
proc model_begin {} {
    global points layers children
    set points [dict create]
    set layers {}
    set children {}
}

# Id of the point with this place, normal and (optional) colour.
proc point {place normal {colour {}}} {
    global points
    set key [list]
    foreach value $place { lappend key [expr {round($value)}] }
    foreach value $normal { lappend key [format %.3f $value] }
    lappend key $colour
    if {![dict exists $points $key]} { dict set points $key [expr {[dict size $points] + 1}] }
    dict get $points $key
}

proc layer {header} {
    global layers uvees
    append layers "\nlayer $header\n"
    set uvees [dict create]
}

proc statement {line} {
    global layers
    append layers $line\n
}

# Corners run counter-clockwise, seen from outside. Files hold the order of the mirrored drawing, which is the other.
# The kind is that of the file: flat ones are 0 and 1, curved ones 3 and 4.
proc triangle {a b c {kind 0}} {
    statement [format {%d %5d %5d %5d} $kind $a $c $b]
}

proc quad {a b c d {kind 1}} {
    statement [format {%d %5d %5d %5d %5d} $kind $a $d $b $c]
}

# v grows upwards here; in a file it runs down from the upper edge of the image.
proc uvee {id u v} {
    global uvees
    dict set uvees $id [format {%5d %.4f %.4f} $id $u [expr {1.0 - $v}]]
}

proc uvees_end {} {
    global uvees
    statement uvees
    dict for {id line} $uvees { statement $line }
}

proc child {name x y z scale rotation} {
    global children
    append children "child $name $x $y $z [format %.2f $scale] [format %.2f $scale] [format %.2f $scale] $rotation\n"
}

proc model_end {file title} {
    global folder points layers children
    set channel [open [file join $folder $file] w]
    fconfigure $channel -translation lf -encoding ascii
    puts $channel "# $title"
    set has_colour 0
    puts $channel "points"
    dict for {key id} $points {
        puts $channel [format {%-4d %6d %6d %6d} $id [lindex $key 0] [lindex $key 1] [lindex $key 2]]
        if {[lindex $key 6] ne {}} { set has_colour 1 }
    }
    puts $channel "\nnormals"
    dict for {key id} $points {
        puts $channel [format {%-4d %7.3f %7.3f %7.3f} $id [lindex $key 3] [lindex $key 4] [lindex $key 5]]
    }
    if {$has_colour} {
        puts $channel "\ngouraud"
        dict for {key id} $points {
            lassign [lindex $key 6] red green blue
            puts $channel [format {%-4d %3d %3d %3d 0} $id [byte $red] [byte $green] [byte $blue]]
        }
    }
    puts -nonewline $channel $layers
    if {$children ne {}} { puts -nonewline $channel "\n$children" }
    close $channel
}

proc unit {x y z} {
    set length [expr {sqrt($x * $x + $y * $y + $z * $z)}]
    list [expr {$x / $length}] [expr {$y / $length}] [expr {$z / $length}]
}

# The wall of a round body between two heights, over an arc in degrees; smooth, with texture coordinates.
proc round_wall {radius_0 z_0 radius_1 z_1 from to steps turns courses {offset {0 0}}} {
    global pi
    lassign $offset cx cy
    set slope [expr {($radius_0 - $radius_1) / double($z_1 - $z_0)}]
    set ids {}
    for {set i 0} {$i <= $steps} {incr i} {
        set a [expr {($from + ($to - $from) * $i / double($steps)) * $pi / 180}]
        set normal [unit [expr {cos($a)}] [expr {sin($a)}] $slope]
        set u [expr {$turns * $i / double($steps)}]
        foreach {radius z v} [list $radius_0 $z_0 0 $radius_1 $z_1 $courses] {
            set id [point [list [expr {$cx + $radius * cos($a)}] [expr {$cy + $radius * sin($a)}] $z] $normal]
            uvee $id $u $v
            lappend ids $id
        }
    }
    for {set i 0} {$i < $steps} {incr i} {
        lassign [lrange $ids [expr {2 * $i}] [expr {2 * $i + 3}]] low high next_low next_high
        if {$radius_1 == 0} { triangle $low $next_low $high } else { quad $low $next_low $next_high $high }
    }
}

# A flat quad with its texture, corners counter-clockwise from the lower left; u runs on from u_0 by us.
proc panel {a b c d {us 1} {vs 1} {u_0 0}} {
    foreach {x y z} $a break
    set e [lmap p $b q $a {expr {$p - $q}}]
    set f [lmap p $d q $a {expr {$p - $q}}]
    lassign $e ex ey ez
    lassign $f fx fy fz
    set normal [unit [expr {$ey * $fz - $ez * $fy}] [expr {$ez * $fx - $ex * $fz}] [expr {$ex * $fy - $ey * $fx}]]
    set ids {}
    foreach corner [list $a $b $c $d] u [list $u_0 [expr {$u_0 + $us}] [expr {$u_0 + $us}] $u_0] v [list 0 0 $vs $vs] {
        set id [point $corner $normal]
        uvee $id $u $v
        lappend ids $id
    }
    quad {*}$ids
}

set folder [expr {$argc > 0 ? [lindex $argv 0] : [file dirname [file normalize [info script]]]}]
file mkdir $folder
foreach part {mill curves walk} {
    source [file join [file dirname [file normalize [info script]]] make_$part.tcl]
    set seed 1
    make_$part
}
